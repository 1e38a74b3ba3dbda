// The storage layer: the recording list, the configuration files (settings store, sound record,
// language table) and the free-standing facilities (trace lines, device paths, length texts,
// audio information, the log sink, free space, the music list).
#include "capturedoutput.h"
#include "storage/audioinfo.h"
#include "storage/configwidget.h"
#include "storage/devicepath.h"
#include "storage/languagemanager.h"
#include "storage/logsink.h"
#include "storage/musicscan.h"
#include "storage/recfilemanager.h"
#include "storage/storagespace.h"
#include "storage/timetext.h"
#include "storage/tracelog.h"
#include "storage/volume.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Ints = QList<int>;
const QString folder = QStringLiteral("/mnt/mmc/e_Recorder/");
const QString listPath = QStringLiteral("/apps/config/reclist.ini");
const QString tablePath = QStringLiteral("/apps/config/scanlanguage.cfg");
// 44-byte PCM header: 2 channels, 44100 Hz, 16 bits, 176400 bytes a second
const QByteArray wav = QByteArray::fromHex("524946460000000057415645666d74201000000001"
                                           "00020044ac000010b10200040010006461746100000000");

// the list file's bytes for these names in the recordings folder (UTF-16LE on this machine)
QByteArray listBytes(const QStringList &names)
{
    const QString text = names.isEmpty() ? QString() : folder + names.join('\n' + folder) + '\n';
    return "\xff\xfe" + QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
}

void addFiles(RecFileManager &m, const TestDeviceRoot &root, const QStringList &names)
{
    for (const QString &name : names) {
        root.writeFile(folder + name, "x");
        m.addNewFileToList(root.path(folder + name));
    }
}

// the three trace levels on consecutive lines; notes the kernel thread id, returns the first line
int emitLines(long *tid)
{
    *tid = gettid();
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

class TestStorage : public QObject
{
    Q_OBJECT
private slots:
    // one list: the play lengths, renames, the next name, the current index and removals
    void recordingList()
    {
        TestDeviceRoot root("device"); // "/.." leads into the temporary folder
        RecFileManager m;
        addFiles(m, root, {"b.txt", "float.wav", "short.wav", "240131.wav"});
        QVERIFY(root.writeFile(folder + "240131.wav", wav + QByteArray(176400 * 10, '\0')));
        QVERIFY(root.writeFile(folder + "short.wav", wav)); // the header alone
        QVERIFY(root.writeFile(folder + "float.wav",
                               QByteArray(wav).replace(20, 1, "\3") + QByteArray(352800, '\0')));
        QStringList lengths;
        const QByteArray said = captured(STDOUT_FILENO, [&] {
            for (int i = 0; i < 4; ++i)
                lengths << m.getFileDuration(i);
        });
        QCOMPARE(lengths, QStringList({"00:10", " ", " ", "null"}));
        QCOMPARE(said, QByteArray("not wav file\n"));
        for (const char *name : {"short.wav", "float.wav"}) {
            char text[16] = "untouched"; // a length that cannot be measured is written all the same
            getWaveDuration(QFile::encodeName(root.path(folder + name)), text);
            QCOMPARE(QString::fromLatin1(text), QStringLiteral(" "));
        }
        QCOMPARE(m.renameRecFile(0, "SHORT"), 2); // its lower-case twin exists
        QCOMPARE(m.renameRecFile(0, "../escape"), 1);
        QCOMPARE(m.renameRecFile(0, QStringLiteral("cut") + QChar(0) + "short"), 1);
        QCOMPARE(m.renameRecFile(0, "Memo"), 0);
        QVERIFY(root.exists(folder + "Memo.wav") && !root.exists(folder + "240131.wav"));
        QVERIFY(!root.exists(folder + "cut.wav") && !root.exists("/mnt/mmc/escape.wav"));
        QCOMPARE(root.recordingList().mid(0, 2),
                 QStringList({folder + "Memo.wav", folder + "short.wav"}));
        QVERIFY(root.writeFile(folder + "Memo.wav", wav)); // computed once: the length stays
        QCOMPARE(m.getFileDuration(0), QStringLiteral("00:10"));

        // the next name goes on from the newest recording's number of the day, past files on the
        // card
        const auto next = [&m] { return QFileInfo(m.newFileName(QDate(2024, 1, 31))).fileName(); };
        addFiles(m, root, {"240131_9.mp3", "240130_4.mp3"}); // only the newest one counts
        QCOMPARE(next(), "240131.mp3");
        addFiles(m, root, {"240131.mp3"});
        QCOMPARE(next(), "240131_1.mp3");
        addFiles(m, root, {"240131_4.mp3"});
        QCOMPARE(next(), "240131_5.mp3");
        QVERIFY(root.writeFile(folder + "240131_5.mp3", "x")); // a gap in the list
        QCOMPARE(next(), "240131_6.mp3");
        addFiles(m, root, {"240131_2147483647.mp3"}); // the largest int counts on
        QCOMPARE(next(), "240131_2147483648.mp3");
        m.setCurFileIndex(0); // the current index is counted from the oldest end
        QCOMPARE(m.getCurFileIndex(), 8);

        // a recording whose file is already gone leaves the list; nothing is selected then
        RecFileManager one;
        addFiles(one, root, {"gone.mp3"});
        QVERIFY(QFile::remove(root.path(folder + "gone.mp3")));
        QCOMPARE(one.removeAt(0), 0);
        QCOMPARE(one.getFileNum(), 0);
        QCOMPARE(one.getCurFileIndex(), 0); // 0 - (-1) - 1

        // never a file outside the recordings folder
        const QStringList outside{"/apps/config/config.ini", "/mnt/mmc/e_Recorder/../x.txt",
                                  "/../outside.txt", "/mnt/mmc/e_Recorder2/y.mp3"};
        for (const QString &path : outside)
            QVERIFY(root.writeFile(path, "keep"));
        QVERIFY(root.writeFile(listPath, outside.join('\n').toUtf8()));
        QCOMPARE(m.init(), 0);
        QCOMPARE(m.getFileNum(), outside.size());
        for (int i = 0; i < outside.size(); ++i)
            QCOMPARE(m.removeAt(i), -1);
        for (const QString &path : outside)
            QCOMPARE(root.readFile(path), QByteArray("keep"));
    }

    void listFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("result");
        QTest::addColumn<QStringList>("loaded");
        QTest::addColumn<bool>("backedUp"); // not loaded whole: the original is kept beside it
        // U+4E0D and U+0A0A: UTF-16 bytes 0x0D and 0x0A inside a name
        const QString odd = QString::fromUtf8("\xe4\xb8\x8d\xe0\xa8\x8a.mp3");
        QTest::newRow("utf16-round-trip")
            << listBytes({"a.mp3", odd}) << 0 << QStringList{"a.mp3", odd} << false;
        QTest::newRow("plain-8-bit")
            << QByteArray("/mnt/mmc/e_Recorder/a.mp3\n\n/mnt/mmc/e_Recorder/b.mp3\n") << 0
            << QStringList{"a.mp3", "b.mp3"} << false;
        QTest::newRow("tab-stops-keeping-rows-above")
            << listBytes({"a.mp3", "b.mp3\tx", "b.mp3"}) << -1 << QStringList{"a.mp3"} << true;
        QTest::newRow("utf16-without-byte-order-mark")
            << listBytes({"a.mp3", "b.mp3"}).mid(2) << 0 << QStringList{} << true;
    }
    void listFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, loaded);
        QFETCH(bool, backedUp);
        TestDeviceRoot root;
        for (const QString &name : loaded + QStringList{"a.mp3", "b.mp3"})
            QVERIFY(root.writeFile(folder + name, "x"));
        QVERIFY(root.writeFile(listPath, bytes));
        RecFileManager m;
        QTEST(m.init(), "result");
        if (backedUp)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("reclist.ini.bak\"$"));
        QCOMPARE(m.flush(), 0); // writes back what was loaded
        QCOMPARE(root.readFile(listPath), listBytes(loaded));
        QCOMPARE(root.readFile(listPath + ".bak"), backedUp ? bytes : QByteArray());
        QCOMPARE(m.flush(), 0); // one backup only
        QVERIFY(!root.exists(listPath + ".bak1"));
    }

    void failedWritesLoseNothing_data()
    {
        // made read-only (write-only for a file) for an unprivileged child that adds a recording
        // (only loads the list and the language table when those are the files); none: a full
        // card, where no file may grow beyond the old list's size
        QTest::addColumn<QStringList>("readOnly");
        QTest::newRow("no-space-for-the-new-list") << QStringList();
        QTest::newRow("read-only-config-folder") << QStringList{"/apps/config"};
        QTest::newRow("unreadable-list-and-table-not-truncated")
            << QStringList{listPath, tablePath};
    }
    void failedWritesLoseNothing()
    {
        QFETCH(QStringList, readOnly);
        TestDeviceRoot root;
        const QByteArray list = listBytes({"b.mp3", "a.mp3"}),
                         table("en\t101\tEnglish\t1\t1\t1\t1\n");
        for (const char *name : {"a.mp3", "b.mp3", "c.mp3"})
            QVERIFY(root.writeFile(folder + name, "x"));
        QVERIFY(root.writeFile(listPath, list) && root.writeFile(tablePath, table));
        QVERIFY(::chmod(QFile::encodeName(root.root()), 0755) == 0);
        const bool full = readOnly.isEmpty();
        for (const QString &path : readOnly)
            QVERIFY(::chmod(QFile::encodeName(root.path(path)),
                            QFileInfo(root.path(path)).isDir() ? 0555 : 0222) == 0);
        const pid_t pid = ::fork();
        if (pid == 0) {
            std::signal(SIGXFSZ, SIG_IGN); // a full card: writes fail instead
            const rlimit limit{full ? rlim_t(list.size()) : RLIM_INFINITY, RLIM_INFINITY};
            // root passes every permission check
            if (setrlimit(RLIMIT_FSIZE, &limit) != 0 ||
                (!full && geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)))
                _exit(99);
            if (readOnly.contains(listPath))
                _exit(RecFileManager().init() != -1 || LanguageManager::Instance()->init() != -1);
            RecFileManager m;
            const int loaded = m.init();
            m.addNewFileToList(root.path(folder + "c.mp3"));
            // nothing is lost in memory, and the failure is reported
            _exit(loaded != 0 || m.getFileNum() != 3 || m.flush() != -1);
        }
        int status = -1;
        QCOMPARE(::waitpid(pid, &status, 0), pid);
        QCOMPARE(status, 0); // the child's checks held: it exited with 0
        QCOMPARE(root.readFile(listPath), list);
        QCOMPARE(root.readFile(tablePath), table);
    }

    void settingsStore_data()
    {
        QTest::addColumn<QByteArray>("ini"); // below [RecorderSet]; null: no file
        QTest::addColumn<Ints>("values");    // Format, LoopMode, Mode, PlayVolume, Quality
        QTest::addColumn<bool>("rewritten"); // else left byte for byte
        const QByteArray all("PlayVolume=3\nQuality=2\nMode=0\nLoopMode=1\nFormat=1\n");
        QTest::newRow("no-file-defaults-written") << QByteArray() << Ints{0, 0, 0, 5, 1} << true;
        QTest::newRow("non-numeric-format-reads-0")
            << QByteArray("Format=wav\nQuality=2\n") << Ints{0, 0, 0, 5, 2} << true;
        QTest::newRow("any-non-zero-format-kept")
            << QByteArray("Format=-1\nPlayVolume=9\n") << Ints{-1, 0, 0, 9, 1} << true;
        QTest::newRow("complete-left-as-written") << all << Ints{1, 1, 0, 3, 2} << false;
        QTest::newRow("key-missing-rewritten")
            << QByteArray(all).replace("\nMode=0\n", "\n") << Ints{1, 1, 0, 3, 2} << true;
        QTest::newRow("number-spelt-otherwise-rewritten")
            << QByteArray(all).replace("Quality=2", "Quality=02") << Ints{1, 1, 0, 3, 2} << true;
    }
    // whatever was read is what the file holds afterwards, as plain numbers in Qt's key order
    void settingsStore()
    {
        QFETCH(QByteArray, ini);
        QFETCH(Ints, values);
        QFETCH(bool, rewritten);
        TestDeviceRoot root;
        const QString path = QStringLiteral("/apps/config/recconfig.ini");
        QVERIFY(ini.isNull() || root.writeFile(path, "[RecorderSet]\n" + ini));
        const ConfigWidget store;
        QCOMPARE((Ints{store.getFileFormat(), store.getLoopMode(), store.getModeOption(),
                       store.getPlayVolume(), store.getFileQuality()}),
                 values);
        QByteArray written;
        for (const char *key : {"Format", "LoopMode", "Mode", "PlayVolume", "Quality"})
            written += key + ('=' + QByteArray::number(values.takeFirst())) + '\n';
        QCOMPARE(root.readFile(path), "[RecorderSet]\n" + (rewritten ? written : ini));
    }

    // init()'s result and the recognition and display rows; an unknown number gives the position
    // after the last display row, an id past the end gives 0; the table stays as it was
    void languageTable()
    {
        TestDeviceRoot root;
        const auto load = [&root](const QByteArray &content) {
            LanguageManager::quitFun();
            if (!content.isNull())
                root.writeFile(tablePath, content);
            const int result = LanguageManager::Instance()->init();
            const LanguageManager *m = LanguageManager::manager;
            const int rows = m->getShowLanSize();
            return root.readFile(tablePath) == content && m->getIntByID(rows) == 0
                       ? Ints{result, m->getLanguageSize(), rows, m->getIDByLanINT(5)}
                       : Ints{};
        };
        const QByteArray a("zh\t1\tChinese\t1\t1\t1\t1\n"), b("en\t101\tEnglish\t1\t1\t1\t0\n");
        QCOMPARE(load(QByteArray(a + b).replace("\n", "\r\n")), (Ints{0, 2, 2, 2}));
        QCOMPARE(load(a + "\n" + b), (Ints{-1, 1, 1, 1})); // the rows above a bad line stay
        QCOMPARE(load(a + "x\t1\tX\t1\t1\t1\n" + b), (Ints{-1, 1, 1, 1})); // six columns
        QCOMPARE(load(a + b.chopped(1) + "\t\n"), (Ints{-1, 1, 1, 1}));    // eight: a trailing tab
        QCOMPARE(load(""), (Ints{0, 0, 0, 0}));
        QVERIFY(QFile::remove(root.path(tablePath)));
        QCOMPARE(load(QByteArray()), (Ints{0, 0, 0, 0})); // a missing file is made empty
        QVERIFY(root.exists(tablePath));

        // "x" is display-only; "en" is the third row but the second recognition row
        QCOMPARE(load("zh\t1\tChinese\t1\t1\t1\t0\nx\t5\tName\t0\t0\t1\t0\n"
                      "en\t101\tEnglish\t1\t0\t0\t1\nde\t05\tGerman\t1\t1\t1\t0\n"),
                 (Ints{0, 3, 3, 1})); // the first match for 5, not "05"
        LanguageManager *m = LanguageManager::manager;
        languageInfo info;
        QVERIFY(m->getInfoByID(1, info));
        QCOMPARE(m->getShowLanByID(1), QStringLiteral("Name"));
        QCOMPARE((Ints{m->getIntByID(1), info.fileIndex}), (Ints{101, 1}));
        QCOMPARE(m->init(), 0); // a reload adds the display rows again
        QCOMPARE(QPoint(m->getLanguageSize(), m->getShowLanSize()), QPoint(3, 6));
        // without its folder the table can be neither read nor made
        QVERIFY(QDir(root.path("/apps/config")).removeRecursively());
        QCOMPARE(load(QByteArray()), (Ints{-1, 0, 0, 0}));
    }

    void traceLines()
    {
        int first = 0;
        long tids[2] = {};
        QString text = QString::fromLatin1(captured(STDERR_FILENO, [&] {
            first = emitLines(&tids[0]);
            std::thread(emitLines, &tids[1]).join();
        }));
        text.replace(QRegularExpression("\\[[0-2]\\d:[0-5]\\d:[0-5]\\d "), "[hh:mm:ss ");
        QString expected;
        for (int i = 0; i < 6; ++i)
            expected +=
                QString::asprintf("\033[3%cm[hh:mm:ss PID:%d TID:%ld %c/LOG]  [tst_storage.cpp: "
                                  "%d : (emitLines)]  value 42 of x\033[0m\n",
                                  "263"[i % 3], getpid(), tids[i / 3], "DIW"[i % 3], first + i % 3);
        QCOMPARE(text, expected);
    }

    // mapped twice a path stays put, the pen's own path comes back from it, and quoted for
    // system() the shell hands it back byte for byte
    void devicePaths()
    {
        const TestDeviceRoot restores; // puts RECORDER_ROOT back afterwards
        const QList<QPair<QByteArray, QString>> roots{{"", "/mnt/mmc"},
                                                      {"/tmp/dev", "/tmp/dev/mnt/mmc"},
                                                      {"/tmp/dev//", "/tmp/dev/mnt/mmc"},
                                                      {"/t/it's $HOME", "/t/it's $HOME/mnt/mmc"}};
        for (const auto &[root, expected] : roots) {
            root.isEmpty() ? qunsetenv("RECORDER_ROOT") : qputenv("RECORDER_ROOT", root);
            const QString mapped = devicePath(QStringLiteral("/mnt/mmc"));
            QCOMPARE(QStringList({mapped, devicePath(mapped), penPath(mapped)}),
                     QStringList({expected, expected, "/mnt/mmc"}));
            QProcess shell;
            shell.start("sh", {"-c", "printf '%s' " + QString::fromUtf8(shellQuoted(mapped))});
            QVERIFY(shell.waitForFinished(60000));
            QCOMPARE(QString::fromUtf8(shell.readAllStandardOutput()), mapped);
        }
    }

    void clockText()
    {
        // the edges: negative, below a minute, below an hour, an hour, over, a hundred hours
        char out[32];
        QStringList texts;
        for (long seconds : {-5L, 59L, 3599L, 3600L, 3661L, 360000L})
            texts << sec2string(seconds, out);
        QCOMPARE(texts,
                 QStringList({"00:00", "00:59", "59:59", "01:00:00", "01:01:01", "100:00:00"}));
    }

    // the sound record, the log sink, the space record, and the music list without a card (which
    // songs are listed, and in what order, is the start-up test's)
    void deviceFiles()
    {
        TestDeviceRoot root;
        const QString record = QStringLiteral("/apps/config/sndcfg.ini");
        vol_strcut cfg{1, 1};
        QCOMPARE(readCfg(&cfg), -1); // no record yet: the defaults
        QCOMPARE(QPoint(cfg.speaker_volume, cfg.mic_volume), QPoint(60, 60));
        cfg = {17, -3};
        QCOMPARE(writeCfg(&cfg), 0);
        QCOMPARE(root.readFile(record).size(), 8);
        cfg = {0, 0};
        QCOMPARE(readCfg(&cfg), 0);
        QCOMPARE(QPoint(cfg.speaker_volume, cfg.mic_volume), QPoint(17, -3));
        QVERIFY(root.writeFile(record, root.readFile(record).left(4))); // truncated
        QCOMPARE(readCfg(&cfg), -1);
        // a folder in its place cannot be written
        QVERIFY(QFile::remove(root.path(record)) && QDir().mkpath(root.path(record)));
        QCOMPARE(writeCfg(&cfg), -1);
        QVERIFY(root.writeFile("/mnt/mmc/recorderlog.txt", "old line\n"));
        const QMessageLogContext context;
        customMessageHandler(QtDebugMsg, context, "one");
        customMessageHandler(QtWarningMsg, context, "two %1");
        customMessageHandler(QtCriticalMsg, context, "three");
        customMessageHandler(QtFatalMsg, context, "four"); // returns: the program goes on
        QCOMPARE(
            root.readFile("/mnt/mmc/recorderlog.txt"),
            QByteArray("old line\nDebug: one\nWarning: two %1\nCritical: three\nFatal: four\n"));
        writeSpaceToFile(-12);
        QCOMPARE(root.readFile("/apps/config/space.ini"), QByteArray("-12").leftJustified(16, 0));
        QVERIFY(root.writeFile("/apps/config/musiclist.txt", "/mnt/mmc/gone.mp3\n"));
        QVERIFY(QDir(root.path("/mnt/mmc")).removeRecursively());
        scanmusic();
        QVERIFY(root.exists("/apps/config/musiclist.txt"));
        QCOMPARE(root.readFile("/apps/config/musiclist.txt"), QByteArray());
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
    }

    void audioInfo()
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
        const QByteArray path = QFile::encodeName(mp3);
        QCOMPARE(getaudioinfo(path, &out), 0);
        QCOMPARE(out.seconds, int(stated * 1152 / 44100));
        QCOMPARE(QByteArray(out.name), QByteArray("A Title"));
        QCOMPARE(QByteArray(out.Artist), QByteArray("Somebody With A Long Artist N"));
        QCOMPARE(frames(audio).frames, stated);
        audio[43] = 0; // no count: the info frame is walked over, never counted as audio
        QCOMPARE(frames(audio).milliseconds, stated * 1152 * 1000 / 44100);
        QCOMPARE(frames(root.readFile("/mnt/mmc/a.mp3-bare")).frames, stated);

        // broken files: empty, shorter than 128 bytes, cut mid-frame; none, a folder, no path
        const QByteArray frame = QByteArray::fromHex("fffb9000") + QByteArray(413, '\0');
        Ints results;
        for (const QByteArray &broken :
             {QByteArray(""), QByteArray(127, '\xff'), frame.repeated(10).chopped(200)}) {
            QVERIFY(root.writeFile("/mnt/mmc/a.mp3", broken));
            results << getaudioinfo(path, &out);
        }
        QVERIFY(QFile::remove(mp3));
        results << getaudioinfo(path, &out)
                << getaudioinfo(QFile::encodeName(root.path("/mnt/mmc")), &out)
                << getaudioinfo(nullptr, &out);
        QCOMPARE(results, (Ints{-1, -1, 0, -3, -1, -5}));
    }
};

QTEST_GUILESS_MAIN(TestStorage)
#include "tst_storage.moc"
