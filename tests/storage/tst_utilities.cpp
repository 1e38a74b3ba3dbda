#include "storage/audioinfo.h"
#include "storage/devicepath.h"
#include "storage/logsink.h"
#include "storage/musicscan.h"
#include "storage/storagespace.h"
#include "storage/timetext.h"
#include "storage/tracelog.h"
#include "testdeviceroot.h"

#include <QtEndian>
#include <QtTest>

#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

// what fn writes to the descriptor fd
template<typename Fn> QByteArray captured(int fd, Fn fn)
{
    QTemporaryFile file;
    if (!file.open())
        return "no temporary file";
    const int saved = dup(fd);
    dup2(file.handle(), fd);
    fn();
    std::fflush(nullptr);
    dup2(saved, fd);
    close(saved);
    file.seek(0);
    return file.readAll();
}

// the three trace levels on consecutive lines; returns the line of the first
int emitLines()
{
    const int first = __LINE__ + 1;
    LOGD("value %d of %s", 42, "x");
    LOGI("value %d of %s", 42, "x");
    LOGW("value %d of %s", 42, "x");
    return first;
}

Mp3FrameScan frames(const QByteArray &bytes)
{
    return scanMp3Frames(reinterpret_cast<const unsigned char *>(bytes.constData()),
                         size_t(bytes.size()));
}

int info(const QString &path, audioinfo *out)
{
    return path.isNull() ? getaudioinfo(nullptr, out)
                         : getaudioinfo(QFile::encodeName(path).constData(), out);
}

// a frequency sweep as 16-bit WAV file; sox's exit code
int tone(const QString &wav, int rate, int channels, int seconds)
{
    return QProcess::execute("sox", {"-n", "-r", QString::number(rate), "-c",
                                     QString::number(channels), "-b", "16", wav, "synth",
                                     QString::number(seconds), "sine", "200-3000"});
}

} // namespace

// The free-standing facilities: trace lines and device paths, length texts, audio information,
// the log sink, free space and the music list.
class TstUtilities : public QObject
{
    Q_OBJECT
private slots:
    void traceLines()
    {
        int first = 0;
        long workerTid = 0;
        const QList<QByteArray> lines = captured(STDERR_FILENO, [&] {
                                            first = emitLines();
                                            std::thread worker([&] {
                                                workerTid = syscall(SYS_gettid);
                                                emitLines();
                                            });
                                            worker.join();
                                        }).split('\n');
        QCOMPARE(lines.size(), 7);
        QVERIFY(workerTid != getpid());
        const char *const colours[] = {"32", "36", "33"};
        for (int i = 0; i < 6; ++i) {
            // the clock, then the rest exactly; the main thread's kernel id is the pid
            QVERIFY(
                QTime::fromString(QString::fromLatin1(lines[i].mid(6, 8)), "hh:mm:ss").isValid());
            QCOMPARE(lines[i].left(6) + lines[i].mid(14),
                     QString::asprintf("\033[%sm[ PID:%d TID:%ld %c/LOG]  [tst_utilities.cpp: %d : "
                                       "(emitLines)]  value 42 of x\033[0m",
                                       colours[i % 3], getpid(), i < 3 ? long(getpid()) : workerTid,
                                       "DIW"[i % 3], first + i % 3)
                         .toLatin1());
        }
    }

    void devicePathMapping_data()
    {
        QTest::addColumn<QByteArray>("root");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no-root") << QByteArray() << "/mnt/mmc/e_Recorder";
        QTest::newRow("root-in-front") << QByteArray("/tmp/dev") << "/tmp/dev/mnt/mmc/e_Recorder";
        QTest::newRow("trailing-slash")
            << QByteArray("/tmp/dev//") << "/tmp/dev/mnt/mmc/e_Recorder";
    }
    void devicePathMapping()
    {
        QFETCH(QByteArray, root);
        QFETCH(QString, expected);
        const QByteArray saved = qgetenv("RECORDER_ROOT");
        root.isEmpty() ? qunsetenv("RECORDER_ROOT") : qputenv("RECORDER_ROOT", root);
        const QString mapped = devicePath(QStringLiteral("/mnt/mmc/e_Recorder"));
        qputenv("RECORDER_ROOT", saved);
        QCOMPARE(mapped, expected);
    }

    void shellQuoting()
    {
        // the shell must hand the path back byte for byte
        const QString path = QStringLiteral("/tmp/it's my $HOME;rm -rf x");
        QProcess shell;
        shell.start("sh", {"-c", "printf '%s' " + QString::fromUtf8(shellQuoted(path))});
        QVERIFY(shell.waitForFinished(60000));
        QCOMPARE(QString::fromUtf8(shell.readAllStandardOutput()), path);
    }

    void clockText_data()
    {
        QTest::addColumn<long>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("negative") << -5L << "00:00";
        QTest::newRow("under-a-minute") << 59L << "00:59";
        QTest::newRow("last-before-hours") << 3599L << "59:59";
        QTest::newRow("one-hour") << 3600L << "01:00:00";
        QTest::newRow("hours-minutes-seconds") << 3661L << "01:01:01";
        QTest::newRow("hundred-hours") << 360000L << "100:00:00";
    }
    void clockText()
    {
        QFETCH(long, seconds);
        QFETCH(QString, text);
        char out[32];
        QCOMPARE(QString::fromLatin1(sec2string(seconds, out)), text);
    }

    void waveLength_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("printed");
        // 44-byte PCM header: 2 channels, 44100 Hz, 16 bits, 176400 bytes a second
        const QByteArray pcm =
            QByteArray::fromHex("524946460000000057415645666d74201000000001"
                                "00020044ac000010b10200040010006461746100000000");
        QByteArray floats = pcm + QByteArray(352800, '\0');
        floats[20] = 3;
        QTest::newRow("ten-seconds") << pcm + QByteArray(1764000, '\0') << "00:10" << QByteArray();
        QTest::newRow("header-only") << pcm << " " << QByteArray();
        QTest::newRow("float-samples") << floats << " " << QByteArray("not wav file\n");
    }
    void waveLength()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QFETCH(QByteArray, printed);
        TestDeviceRoot root;
        QVERIFY(root.writeFile("/mnt/mmc/a.wav", bytes));
        char out[32] = "untouched";
        int result = -99;
        const QByteArray said = captured(STDOUT_FILENO, [&] {
            result = getWaveDuration(QFile::encodeName(root.path("/mnt/mmc/a.wav")), out);
        });
        QCOMPARE(result, 0);
        QCOMPARE(QString::fromLatin1(out), text);
        QCOMPARE(said, printed);
    }

    void logLines()
    {
        TestDeviceRoot root;
        QVERIFY(root.writeFile("/mnt/mmc/recorderlog.txt", "old line\n"));
        const QMessageLogContext context;
        customMessageHandler(QtDebugMsg, context, "one");
        customMessageHandler(QtWarningMsg, context, "two %1");
        customMessageHandler(QtCriticalMsg, context, "three");
        customMessageHandler(QtFatalMsg, context, "four"); // returns: the program goes on
        QCOMPARE(
            root.readFile("/mnt/mmc/recorderlog.txt"),
            QByteArray("old line\nDebug: one\nWarning: two %1\nCritical: three\nFatal: four\n"));
    }

    void freeSpace()
    {
        static unsigned long freeBlocks = 255;
        setStatfsSource([](const char *, struct statfs *out) {
            *out = {};
            out->f_bsize = 4096;
            out->f_bfree = freeBlocks; // the superuser's blocks count too
            return 0;
        });
        QCOMPARE(getFreeSpace(), 0LL);
        freeBlocks = 256;
        QCOMPARE(getFreeSpace(), 1LL);
        setStatvfsSource([](const char *, struct statvfs *out) {
            *out = {};
            out->f_frsize = 1024;
            out->f_bavail = 0x600000; // 6 GiB of 1 KiB fragments: wraps to 2 GiB
            return 0;
        });
        QCOMPARE(get_free("/x", nullptr, nullptr, 0, 0), 0x80000000u);
        setStatfsSource(nullptr);
        setStatvfsSource(nullptr);
        TestDeviceRoot root;
        writeSpaceToFile(-12);
        QCOMPARE(root.readFile("/apps/config/space.ini"),
                 QByteArray("-12\0\0\0\0\0\0\0\0\0\0\0\0\0", 16));
    }

    void musicList()
    {
        TestDeviceRoot root;
        for (const char *name :
             {"/mnt/mmc/b.mp3", "/mnt/mmc/song.MP3", "/mnt/mmc/song.mp3x", "/mnt/mmc/song.mp2",
              "/mnt/mmc/mp3", "/mnt/mmc/song.", "/mnt/mmc/z.mp3", "/mnt/mmc/e_Music/x.Mp3",
              "/mnt/mmc/e_Music/sub/deep.mp3"})
            QVERIFY(root.writeFile(name, "x"));
        scanmusic();
        QCOMPARE(root.readFile("/apps/config/musiclist.txt"),
                 QByteArray("/mnt/mmc/z.mp3\n/mnt/mmc/song.mp3x\n/mnt/mmc/song.MP3\n"
                            "/mnt/mmc/e_Music/x.Mp3\n/mnt/mmc/b.mp3\n"));
        // without a card the list is emptied
        QVERIFY(QDir(root.path("/mnt/mmc")).removeRecursively());
        scanmusic();
        QVERIFY(root.exists("/apps/config/musiclist.txt"));
        QCOMPARE(root.readFile("/apps/config/musiclist.txt"), QByteArray());
    }

    void constantRate()
    {
        TestDeviceRoot root;
        const QString wav = root.path("/mnt/mmc/a.wav"), mp3 = root.path("/mnt/mmc/a.mp3");
        QCOMPARE(tone(wav, 24000, 1, 1), 0);
        QCOMPARE(QProcess::execute("shineenc", {"-q", "-m", "-b", "64", wav, mp3}), 0);
        // MPEG-2 Layer III at 24 kHz: 576 samples (24 ms) in 72 * 64000 / 24000 bytes, unpadded
        const QByteArray bytes = root.readFile("/mnt/mmc/a.mp3");
        QCOMPARE(bytes.size() % 192, 0);
        QCOMPARE(frames(bytes).milliseconds, bytes.size() / 192 * 24LL);
        QCOMPARE(frames(bytes.chopped(1)).frames, bytes.size() / 192 - 1L);
        audioinfo out;
        QCOMPARE(info(mp3, &out), 0);
        QCOMPARE(out.seconds, 1);
        QCOMPARE(out.bitrate, 64000);
    }

    void variableRate()
    {
        TestDeviceRoot root;
        const QString wav = root.path("/mnt/mmc/a.wav"), mp3 = root.path("/mnt/mmc/a.mp3");
        QCOMPARE(tone(wav, 44100, 2, 61), 0);
        QCOMPARE(QProcess::execute("lame", {"--quiet", "-V2", "--id3v2-only", "--tt", "  A Title  ",
                                            "--ta", "Somebody With A Long Artist Name", wav, mp3}),
                 0);
        // the same frames without the Xing frame and the tag
        QCOMPARE(QProcess::execute("lame", {"--quiet", "-V2", "-t", wav, mp3 + "-bare"}), 0);
        QByteArray audio = root.readFile("/mnt/mmc/a.mp3");
        audio = audio.mid(audio.indexOf("Xing") - 36); // MPEG-1 stereo: from its frame on, no tag
        QVERIFY(audio.startsWith("\xff\xfb") && (audio[43] & 1));
        const long stated = qFromBigEndian<quint32>(audio.constData() + 44);
        audioinfo out;
        QCOMPARE(info(mp3, &out), 0);
        QCOMPARE(out.seconds, int(stated * 1152 / 44100));
        QVERIFY(out.isid3tag);
        QCOMPARE(QByteArray(out.name), QByteArray("A Title"));
        QCOMPARE(QByteArray(out.Artist), QByteArray("Somebody With A Long Artist N"));
        QVERIFY(frames(audio).fromXingCount);
        QCOMPARE(frames(audio).frames, stated);
        audio[43] = 0; // no count: the info frame is walked over, never counted as audio
        QCOMPARE(frames(audio).milliseconds, stated * 1152 * 1000 / 44100);
        QCOMPARE(frames(root.readFile("/mnt/mmc/a.mp3-bare")).frames, stated);
    }

    void brokenInputs_data()
    {
        QTest::addColumn<QString>("path");     // null: no path at all
        QTest::addColumn<QByteArray>("bytes"); // written to a.mp3 unless null
        QTest::addColumn<int>("result");
        QVector<quint32> words(5000);
        QRandomGenerator(7).fillRange(words.data(), words.size());
        const QByteArray noise(reinterpret_cast<const char *>(words.constData()), 20000);
        // silent MPEG-1 Layer III frames, 128 kbit/s at 44.1 kHz: 417 bytes each
        const QByteArray frame = QByteArray::fromHex("fffb9000") + QByteArray(413, '\0');
        QTest::newRow("empty") << "a.mp3" << QByteArray("") << -1;
        QTest::newRow("shorter-than-128") << "a.mp3" << QByteArray(127, '\xff') << -1;
        QTest::newRow("truncated-mid-frame") << "a.mp3" << frame.repeated(10).chopped(200) << 0;
        QTest::newRow("random-bytes") << "a.mp3" << noise << 0;
        QTest::newRow("wav-renamed")
            << "a.mp3" << QByteArray("RIFF\0\0\0\0WAVEfmt ", 16) + noise << 0;
        QTest::newRow("missing") << "a.mp3" << QByteArray() << -3;
        QTest::newRow("folder") << "" << QByteArray() << -1;
        QTest::newRow("null-path") << QString() << QByteArray() << -5;
    }
    void brokenInputs()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, bytes);
        QFETCH(int, result);
        TestDeviceRoot root;
        QVERIFY(bytes.isNull() || root.writeFile("/mnt/mmc/a.mp3", bytes));
        audioinfo out{};
        QCOMPARE(info(path.isNull() ? path : root.path("/mnt/mmc/" + path), &out), result);
    }
};

QTEST_GUILESS_MAIN(TstUtilities)
#include "tst_utilities.moc"
