#include "capturedoutput.h"
#include "storage/audioinfo.h"
#include "storage/devicepath.h"
#include "storage/logsink.h"
#include "storage/musicscan.h"
#include "storage/storagespace.h"
#include "storage/timetext.h"
#include "storage/tracelog.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

// the three trace levels on consecutive lines; notes the kernel thread id, returns the first line
int emitLines(long *tid)
{
    *tid = syscall(SYS_gettid);
    const int first = __LINE__ + 1;
    LOGD("value %d of %s", 42, "x");
    LOGI("value %d of %s", 42, "x");
    LOGW("value %d of %s", 42, "x");
    return first;
}

Mp3FrameScan frames(const QByteArray &b)
{
    return scanMp3Frames(reinterpret_cast<const uchar *>(b.constData()), size_t(b.size()));
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
        long tids[2] = {};
        const QList<QByteArray> lines = captured(STDERR_FILENO, [&] {
                                            first = emitLines(&tids[0]);
                                            std::thread(emitLines, &tids[1]).join();
                                        }).split('\n');
        QCOMPARE(lines.size(), 7);
        QVERIFY(tids[1] != tids[0]);
        const char *const colours[] = {"32", "36", "33"};
        for (int i = 0; i < 6; ++i) {
            // the clock, then the rest exactly
            QVERIFY(QTime::fromString(lines[i].mid(6, 8), "hh:mm:ss").isValid());
            QCOMPARE(lines[i].left(6) + lines[i].mid(14),
                     QString::asprintf("\033[%sm[ PID:%d TID:%ld %c/LOG]  [tst_utilities.cpp: %d : "
                                       "(emitLines)]  value 42 of x\033[0m",
                                       colours[i % 3], getpid(), tids[i / 3], "DIW"[i % 3],
                                       first + i % 3)
                         .toLatin1());
        }
    }

    void devicePaths_data()
    {
        QTest::addColumn<QByteArray>("root");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no-root") << QByteArray() << "/mnt/mmc";
        QTest::newRow("root-in-front") << QByteArray("/tmp/dev") << "/tmp/dev/mnt/mmc";
        QTest::newRow("trailing-slash") << QByteArray("/tmp/dev//") << "/tmp/dev/mnt/mmc";
        QTest::newRow("quote-blank-dollar")
            << QByteArray("/t/it's $HOME") << "/t/it's $HOME/mnt/mmc";
    }
    void devicePaths()
    {
        QFETCH(QByteArray, root);
        QFETCH(QString, expected);
        const QByteArray saved = qgetenv("RECORDER_ROOT");
        root.isEmpty() ? qunsetenv("RECORDER_ROOT") : qputenv("RECORDER_ROOT", root);
        const QString mapped = devicePath(QStringLiteral("/mnt/mmc"));
        // mapped twice stays put, and the pen's own path comes back from it
        const QString twice = devicePath(mapped);
        const QString onPen = penPath(mapped);
        qputenv("RECORDER_ROOT", saved);
        QCOMPARE(mapped, expected);
        QCOMPARE(twice, expected);
        QCOMPARE(onPen, QStringLiteral("/mnt/mmc"));
        // quoted for system(), the shell hands the path back byte for byte
        QProcess shell;
        shell.start("sh", {"-c", "printf '%s' " + QString::fromUtf8(shellQuoted(mapped))});
        QVERIFY(shell.waitForFinished(60000));
        QCOMPARE(QString::fromUtf8(shell.readAllStandardOutput()), mapped);
    }

    void clockText()
    {
        // the edges: negative, below a minute, below an hour, an hour, over, a hundred hours
        const QList<QPair<long, QString>> edges{{-5, "00:00"},      {59, "00:59"},
                                                {3599, "59:59"},    {3600, "01:00:00"},
                                                {3661, "01:01:01"}, {360000, "100:00:00"}};
        char out[32];
        for (const auto &edge : edges)
            QCOMPARE(QString::fromLatin1(sec2string(edge.first, out)), edge.second);
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
        const QByteArray said = captured(STDOUT_FILENO, [&] {
            getWaveDuration(QFile::encodeName(root.path("/mnt/mmc/a.wav")), out);
        });
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

    // which songs are listed, and in what order: tst_startupmusiclist
    void musicListWithoutCard()
    {
        TestDeviceRoot root;
        QVERIFY(root.writeFile("/apps/config/musiclist.txt", "/mnt/mmc/gone.mp3\n"));
        // without a card the list is emptied
        QVERIFY(QDir(root.path("/mnt/mmc")).removeRecursively());
        scanmusic();
        QVERIFY(root.exists("/apps/config/musiclist.txt"));
        QCOMPARE(root.readFile("/apps/config/musiclist.txt"), QByteArray());
    }

    void encodedLengths()
    {
        TestDeviceRoot root;
        const QString wav = root.path("/mnt/mmc/a.wav"), mp3 = root.path("/mnt/mmc/a.mp3");
        const QString sweep = QStringLiteral("-n -r %1 -c %2 -b 16 %3 synth %4 sine 200-3000");
        // shine, constant rate: MPEG-2 Layer III at 24 kHz, 576 samples (24 ms) in 72 * 64000 /
        // 24000 bytes, unpadded
        QCOMPARE(QProcess::execute("sox", sweep.arg(24000).arg(1).arg(wav).arg(1).split(' ')), 0);
        QCOMPARE(QProcess::execute("shineenc", {"-q", "-m", "-b", "64", wav, mp3}), 0);
        const QByteArray bytes = root.readFile("/mnt/mmc/a.mp3");
        QCOMPARE(frames(bytes).milliseconds, bytes.size() / 192 * 24LL);
        QCOMPARE(frames(bytes.chopped(1)).frames, bytes.size() / 192 - 1L);

        // lame, variable rate, 61 s: with its Xing frame and a tag, and with neither
        QCOMPARE(QProcess::execute("sox", sweep.arg(44100).arg(2).arg(wav).arg(61).split(' ')), 0);
        QCOMPARE(QProcess::execute("lame", {"--quiet", "-V2", "--id3v2-only", "--tt", "  A Title  ",
                                            "--ta", "Somebody With A Long Artist Name", wav, mp3}),
                 0);
        QCOMPARE(QProcess::execute("lame", {"--quiet", "-V2", "-t", wav, mp3 + "-bare"}), 0);
        QByteArray audio = root.readFile("/mnt/mmc/a.mp3");
        audio = audio.mid(audio.indexOf("Xing") - 36); // MPEG-1 stereo: from its frame on, no tag
        QVERIFY(audio.startsWith("\xff\xfb") && (audio[43] & 1));
        const long stated = qFromBigEndian<quint32>(audio.constData() + 44);
        audioinfo out;
        QCOMPARE(getaudioinfo(QFile::encodeName(mp3).constData(), &out), 0);
        QCOMPARE(out.seconds, int(stated * 1152 / 44100));
        QCOMPARE(QByteArray(out.name), QByteArray("A Title"));
        QCOMPARE(QByteArray(out.Artist), QByteArray("Somebody With A Long Artist N"));
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
        const QByteArray frame = QByteArray::fromHex("fffb9000") + QByteArray(413, '\0');
        QTest::newRow("empty") << "a.mp3" << QByteArray("") << -1;
        QTest::newRow("shorter-than-128") << "a.mp3" << QByteArray(127, '\xff') << -1;
        QTest::newRow("truncated-mid-frame") << "a.mp3" << frame.repeated(10).chopped(200) << 0;
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
        const QByteArray name = QFile::encodeName(root.path("/mnt/mmc/" + path));
        QCOMPARE(getaudioinfo(path.isNull() ? nullptr : name.constData(), &out), result);
    }
};

QTEST_GUILESS_MAIN(TstUtilities)
#include "tst_utilities.moc"
