// The storage layer: the recording list, the configuration files (settings store, sound record,
// language table) and the free-standing facilities (device paths, length texts, audio
// information, free space, the music list).
#include "storage/audioinfo.h"
#include "storage/configwidget.h"
#include "storage/devicepath.h"
#include "storage/languagemanager.h"
#include "storage/musicscan.h"
#include "storage/recfilemanager.h"
#include "storage/storagespace.h"
#include "storage/volume.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/wait.h>
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

Mp3FrameScan frames(const QByteArray &b)
{
    return scanMp3Frames(reinterpret_cast<const uchar *>(b.constData()), size_t(b.size()));
}

} // namespace

class TestStorage : public QObject
{
    Q_OBJECT
private slots:
    // one list: the play lengths, renames, the next name and removals
    void recordingList()
    {
        TestDeviceRoot root("device"); // "/.." leads into the temporary folder
        RecFileManager m;
        addFiles(m, root, {"b.txt", "float.wav", "short.wav", "hours.wav", "240131.wav"});
        QVERIFY(root.writeFile(folder + "240131.wav", wav + QByteArray(176400 * 10, '\0')));
        // a byte a second
        QVERIFY(root.writeFile(folder + "hours.wav",
                               QByteArray(wav).replace(28, 4, QByteArray::fromHex("01000000")) +
                                   QByteArray(3661, '\0')));
        QVERIFY(root.writeFile(folder + "short.wav", wav)); // the header alone
        QVERIFY(root.writeFile(folder + "float.wav",
                               QByteArray(wav).replace(20, 1, "\3") + QByteArray(352800, '\0')));
        QStringList lengths;
        for (int i = 0; i < 5; ++i)
            lengths << m.getFileDuration(i);
        QCOMPARE(lengths, QStringList({"00:10", "01:01:01", " ", " ", "null"}));
        QCOMPARE(m.renameRecFile(0, "SHORT"), 2); // its lower-case twin exists
        QCOMPARE(m.renameRecFile(0, "../escape"), 1);
        QCOMPARE(m.renameRecFile(0, QStringLiteral("cut") + QChar(0) + "short"), 1);
        QCOMPARE(m.renameRecFile(0, "Memo"), 0);
        QVERIFY(root.exists(folder + "Memo.wav") && !root.exists(folder + "240131.wav"));
        QVERIFY(!root.exists(folder + "cut.wav") && !root.exists("/mnt/mmc/escape.wav"));
        QCOMPARE(root.recordingList().mid(0, 2),
                 QStringList({folder + "Memo.wav", folder + "hours.wav"}));

        // the next name goes on from the newest recording's number of the day, past files on the
        // card
        QVERIFY(root.writeFile(folder + "240131_5.mp3", "x")); // on the card, not in the list
        const QList<QPair<QStringList, QString>> steps{
            {{"240131_9.mp3", "240130_4.mp3"}, "240131.mp3"}, // only the newest one counts
            {{"240131.mp3"}, "240131_1.mp3"},
            {{"240131_4.mp3"}, "240131_6.mp3"},
            {{"240131_2147483647.mp3"}, "240131_2147483648.mp3"}}; // the largest int counts on
        for (const auto &[added, expected] : steps) {
            addFiles(m, root, added);
            QCOMPARE(QFileInfo(m.newFileName(QDate(2024, 1, 31))).fileName(), expected);
        }

        // a recording whose file is already gone leaves the list
        RecFileManager one;
        addFiles(one, root, {"gone.mp3"});
        QVERIFY(QFile::remove(root.path(folder + "gone.mp3")));
        QCOMPARE(one.removeAt(0), 0);
        QCOMPARE(one.getFileNum(), 0);

        // never a file outside the recordings folder
        const QStringList outside{"/apps/config/config.ini", "/mnt/mmc/e_Recorder/../x.txt",
                                  "/../outside.txt", "/mnt/mmc/e_Recorder2/y.mp3"};
        for (const QString &path : outside)
            QVERIFY(root.writeFile(path, "keep"));
        QVERIFY(root.writeFile(listPath, outside.join('\n').toUtf8()));
        QCOMPARE(m.init(), 0);
        QCOMPARE(m.getFileNum(), outside.size());
        for (int i = 0; i < outside.size(); ++i) {
            QCOMPARE(m.removeAt(i), -1);
            QCOMPARE(root.readFile(outside.at(i)), QByteArray("keep"));
        }
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
        QCOMPARE(m.flush(), 0); // one backup, and it stays the original
        QCOMPARE(root.readFile(listPath), listBytes(loaded));
        QCOMPARE(root.readFile(listPath + ".bak"), backedUp ? bytes : QByteArray());
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

    // what was read is what the file holds afterwards, as plain numbers in Qt's key order; a
    // complete file is left byte for byte
    void settingsStore()
    {
        TestDeviceRoot root;
        const QString path = QStringLiteral("/apps/config/recconfig.ini");
        const auto read = [] {
            const ConfigWidget store;
            return Ints{store.getFileFormat(), store.getLoopMode(), store.getModeOption(),
                        store.getPlayVolume(), store.getFileQuality()};
        };
        QCOMPARE(read(), (Ints{0, 0, 0, 5, 1})); // no file: the defaults
        QCOMPARE(
            root.readFile(path),
            QByteArray("[RecorderSet]\nFormat=0\nLoopMode=0\nMode=0\nPlayVolume=5\nQuality=1\n"));
        // longer than the defaults: QSettings keeps what it read of a file whose size and time
        // (to the millisecond) stay the same; any format but 0 is kept as it is
        const QByteArray all(
            "[RecorderSet]\nPlayVolume=3\nQuality=2\nMode=0\nLoopMode=1\nFormat=-1\n");
        QVERIFY(root.writeFile(path, all));
        QCOMPARE(read(), (Ints{-1, 1, 0, 3, 2}));
        QCOMPARE(root.readFile(path), all);
    }

    // init()'s result and the counts of recognition and display rows; the table stays as it was
    void languageTable()
    {
        TestDeviceRoot root;
        const auto load = [&root](const QByteArray &content) {
            LanguageManager::quitFun();
            if (!content.isNull())
                root.writeFile(tablePath, content);
            const int result = LanguageManager::Instance()->init();
            const LanguageManager *m = LanguageManager::manager;
            return root.readFile(tablePath) == content
                       ? Ints{result, m->getLanguageSize(), m->getShowLanSize()}
                       : Ints{};
        };
        const QByteArray a("zh\t1\tChinese\t1\t1\t1\t1\n"), b("en\t101\tEnglish\t1\t1\t1\t0\n");
        QCOMPARE(load(QByteArray(a + b).replace("\n", "\r\n")), (Ints{0, 2, 2}));
        QCOMPARE(load(a + "\n" + b), (Ints{-1, 1, 1})); // the rows above a bad line stay
        QCOMPARE(load(a + b.chopped(1) + "\t\n"), (Ints{-1, 1, 1})); // eight: a trailing tab
        QVERIFY(QFile::remove(root.path(tablePath)));
        QCOMPARE(load(QByteArray()), (Ints{0, 0, 0})); // a missing file is made empty
        QVERIFY(root.exists(tablePath));

        // "x" is display-only, "en" recognition-only: the second row of each kind; past the end, 0
        QCOMPARE(load("zh\t1\tChinese\t1\t1\t1\t0\nx\t5\tName\t0\t0\t1\t0\n"
                      "en\t101\tEnglish\t1\t0\t0\t1\nde\t05\tGerman\t1\t1\t1\t0\n"),
                 (Ints{0, 3, 3}));
        const LanguageManager *m = LanguageManager::manager;
        QCOMPARE(
            (Ints{m->getLanIntByID(1), m->getIntByID(1), m->getLanIntByID(3), m->getIntByID(3)}),
            (Ints{5, 101, 0, 0}));
        // without its folder the table can be neither read nor made
        QVERIFY(QDir(root.path("/apps/config")).removeRecursively());
        QCOMPARE(load(QByteArray()), (Ints{-1, 0, 0}));
    }

    // mapped twice a path stays put, the pen's own path comes back from it, and quoted for
    // system() the shell hands it back byte for byte
    void devicePaths()
    {
        const TestDeviceRoot restores; // puts RECORDER_ROOT back afterwards
        const QList<QPair<QByteArray, QString>> roots{{"", "/mnt/mmc"},
                                                      {"/t/it's $HOME//", "/t/it's $HOME/mnt/mmc"}};
        for (const auto &[root, expected] : roots) {
            root.isEmpty() ? qunsetenv("RECORDER_ROOT") : qputenv("RECORDER_ROOT", root);
            const QString mapped = devicePath(QStringLiteral("/mnt/mmc"));
            QCOMPARE(QStringList({mapped, devicePath(mapped), penPath(mapped)}),
                     QStringList({expected, expected, "/mnt/mmc"}));
            const QString test = "test \"$0\" = " + QString::fromUtf8(shellQuoted(mapped));
            QCOMPARE(QProcess::execute("sh", {"-c", test, mapped}), 0);
        }
    }

    // the sound record, the space record, free space, and the music list without a card (which
    // songs are listed, and in what order, is the start-up test's)
    void deviceFiles()
    {
        TestDeviceRoot root;
        vol_strcut cfg{1, 1};
        QCOMPARE(readCfg(&cfg), -1); // no record yet: the defaults
        QCOMPARE(QPoint(cfg.speaker_volume, cfg.mic_volume), QPoint(60, 60));
        cfg = {17, -3};
        QCOMPARE(writeCfg(&cfg), 0); // two ints, as the pen's own programs keep them
        QCOMPARE(root.readFile("/apps/config/sndcfg.ini"), QByteArray::fromHex("11000000fdffffff"));
        writeSpaceToFile(-12);
        QCOMPARE(root.readFile("/apps/config/space.ini"), QByteArray("-12").leftJustified(16, 0));
        QVERIFY(root.writeFile("/apps/config/musiclist.txt", "/mnt/mmc/gone.mp3\n"));
        QVERIFY(QDir(root.path("/mnt/mmc")).removeRecursively());
        scanmusic();
        QVERIFY(root.exists("/apps/config/musiclist.txt") &&
                root.readFile("/apps/config/musiclist.txt").isEmpty());

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
        setStatfsSource(nullptr);
    }

    void audioInfo()
    {
        TestDeviceRoot root;
        const QString wav = root.path("/mnt/mmc/a.wav"), mp3 = root.path("/mnt/mmc/a.mp3");
        // lame, variable rate, 61 s: with its Xing frame and a tag, and with neither
        const QString sweep = QStringLiteral("-n -r 44100 -c 2 -b 16 %1 synth 61 sine 200-3000");
        QCOMPARE(QProcess::execute("sox", sweep.arg(wav).split(' ')), 0);
        QCOMPARE(QProcess::execute("lame", {"--quiet", "-V2", "--id3v2-only", "--tt", "  A Title  ",
                                            "--ta", "Somebody With A Long Artist Name", wav, mp3}),
                 0);
        QCOMPARE(QProcess::execute("lame", {"--quiet", "-V2", "-t", wav, mp3 + "-bare"}), 0);
        QByteArray audio = root.readFile("/mnt/mmc/a.mp3");
        audio = audio.mid(audio.indexOf("Xing") - 36); // MPEG-1 stereo: from its frame on, no tag
        const long stated = qFromBigEndian<quint32>(audio.constData() + 44);
        audioinfo out;
        const QByteArray path = QFile::encodeName(mp3);
        QCOMPARE(getaudioinfo(path, &out), 0);
        QCOMPARE(out.seconds, int(stated * 1152 / 44100));
        QCOMPARE(QByteArray(out.name), QByteArray("A Title"));
        QCOMPARE(QByteArray(out.Artist), QByteArray("Somebody With A Long Artist N"));
        audio[43] = 0; // no count: the info frame is walked over, never counted as audio
        QCOMPARE(frames(audio).milliseconds, stated * 1152 * 1000 / 44100);
        QCOMPARE(frames(root.readFile("/mnt/mmc/a.mp3-bare")).frames, stated);

        // no audio: an empty file, none, a folder named like a song
        QVERIFY(root.writeFile("/mnt/mmc/a.mp3", ""));
        Ints results{getaudioinfo(path, &out)};
        QVERIFY(QFile::remove(mp3));
        results << getaudioinfo(path, &out)
                << getaudioinfo(QFile::encodeName(root.path("/mnt/mmc")), &out);
        QCOMPARE(results, (Ints{-1, -3, -1}));
    }
};

QTEST_GUILESS_MAIN(TestStorage)
#include "tst_storage.moc"
