#include "storage/configwidget.h"
#include "storage/devicepath.h"
#include "storage/recfilemanager.h"
#include "testdeviceroot.h"

#include <QRandomGenerator>
#include <QtTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString folder = QStringLiteral("/mnt/mmc/e_Recorder/");

// the bytes the pen expects for a list of paths
QByteArray listBytes(const QStringList &paths)
{
    QByteArray bytes("\xff\xfe", 2);
    for (const QString &p : paths) {
        for (const QChar c : p + QLatin1Char('\n'))
            bytes.append(char(c.unicode() & 0xff)).append(char(c.unicode() >> 8));
    }
    return bytes;
}

// the re-executed test binary: adds recordings one after the other and reports each one that
// flush() has written, until it is killed
int appendChild()
{
    RecFileManager manager;
    if (manager.init() != 0)
        return 1;
    for (int i = 0;; ++i) {
        const QString path =
            devicePath(folder + QStringLiteral("kill_%1_%2.mp3").arg(::getpid()).arg(i));
        QFile(path).open(QIODevice::WriteOnly);
        manager.addNewFileToList(path);
        const QByteArray line = QFileInfo(path).fileName().toUtf8() + '\n';
        if (::write(STDOUT_FILENO, line.constData(), line.size()) != line.size())
            return 1;
    }
}

// a child in its own process group, killed with its shell children and reaped in any case
struct Child
{
    pid_t pid = -1;
    int out = -1;
    ~Child()
    {
        if (pid > 0) {
            ::kill(-pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        if (out >= 0)
            ::close(out);
    }
};

} // namespace

class TstRecFileManager : public QObject
{
    Q_OBJECT

private:
    void addFiles(RecFileManager &m, const TestDeviceRoot &root, const QStringList &names)
    {
        for (const QString &name : names) {
            QVERIFY(root.writeFile(folder + name, "x"));
            m.addNewFileToList(root.path(folder + name));
        }
    }

private slots:
    void init() { ConfigWidget::instance()->setFileFormat(0); }

    void newFileName_data()
    {
        QTest::addColumn<QStringList>("listed");
        QTest::addColumn<QStringList>("onCard");
        QTest::addColumn<int>("format");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty-list") << QStringList() << QStringList() << 0 << "240131.mp3";
        QTest::newRow("newest-from-another-day")
            << QStringList{"240130_4.mp3"} << QStringList() << 0 << "240131.mp3";
        QTest::newRow("second-of-the-day")
            << QStringList{"240131.mp3"} << QStringList() << 0 << "240131_1.mp3";
        QTest::newRow("continues-from-newest")
            << QStringList{"240131_4.wav"} << QStringList() << 1 << "240131_5.wav";
        QTest::newRow("gap-skips-existing-files")
            << QStringList{"240131_4.wav"} << QStringList{"240131_5.wav"} << 1 << "240131_6.wav";
        QTest::newRow("first-of-day-exists-unlisted")
            << QStringList() << QStringList{"240131.mp3"} << 0 << "240131_1.mp3";
        QTest::newRow("any-nonzero-format-is-wav")
            << QStringList() << QStringList() << 7 << "240131.wav";
        QTest::newRow("only-newest-counts")
            << QStringList{"240131_9.mp3", "240131_2.mp3"} << QStringList() << 0 << "240131_3.mp3";
    }
    void newFileName()
    {
        QFETCH(QStringList, listed);
        QFETCH(QStringList, onCard);
        QFETCH(int, format);
        QFETCH(QString, expected);
        TestDeviceRoot root;
        ConfigWidget::instance()->setFileFormat(format);
        RecFileManager m;
        addFiles(m, root, listed); // the last one added is the newest
        for (const QString &name : onCard)
            QVERIFY(root.writeFile(folder + name, "x"));
        QCOMPARE(m.newFileName(QDate(2024, 1, 31)), root.path(folder + expected));
    }

    void limitAndCurrentIndex()
    {
        TestDeviceRoot root;
        QStringList names;
        for (int i = 0; i < 999; ++i)
            names << QStringLiteral("r%1.mp3").arg(i);
        QByteArray bytes("\xff\xfe", 2);
        QStringList paths;
        for (const QString &n : names) {
            QVERIFY(root.writeFile(folder + n, "x"));
            paths << folder + n;
        }
        QVERIFY(root.writeFile("/apps/config/reclist.ini", listBytes(paths)));
        RecFileManager m;
        QCOMPARE(m.init(), 0);
        QCOMPARE(m.getFileNum(), 999);
        QVERIFY(m.exceedMaxNum());
        addFiles(m, root, {"r999.mp3"});
        QVERIFY(!m.exceedMaxNum());

        m.setCurFileIndex(0);
        QCOMPARE(m.getCurFileIndex(), 999);
        m.setCurFileIndex(1000); // out of range: unchanged
        QCOMPARE(m.getCurFileIndex(), 999);
        m.setCurFileIndex(-1);
        QCOMPARE(m.getCurFileIndex(), 999);
        QFileInfo info;
        QVERIFY(m.getCurInfo(info));
        QCOMPARE(info.fileName(), QStringLiteral("r999.mp3"));
        QCOMPARE(m.getLatestFile(), QStringLiteral("r998.mp3"));
    }

    void removal()
    {
        TestDeviceRoot root;
        RecFileManager m;
        addFiles(m, root, {"a.mp3", "b.mp3", "c.mp3"}); // newest first: c, b, a
        QCOMPARE(m.removeAt(3), -1);
        QCOMPARE(m.removeAt(-1), -1);
        m.setCurFileIndex(2);
        QCOMPARE(m.removeAt(2), 0); // the current one: the index moves to the new last entry
        QVERIFY(!root.exists(folder + "a.mp3"));
        QCOMPARE(m.getFileNum(), 2);
        QCOMPARE(m.getCurFileIndex(), 0);
        QVERIFY(QFile::remove(root.path(folder + "b.mp3")));
        QCOMPARE(m.removeAt(1), -1); // delete fails: list unchanged
        QCOMPARE(m.getFileNum(), 2);
        QVERIFY(root.writeFile(folder + "b.mp3", "x"));
        QCOMPARE(m.removeAt(0), 0);
        m.setCurFileIndex(0);
        QCOMPARE(m.removeAt(0), 0);
        QFileInfo info;
        QCOMPARE(m.getFileNum(), 0);
        QVERIFY(!m.getCurInfo(info));
        QCOMPARE(m.getCurFileIndex(), 0); // 0 - (-1) - 1: the index is -1
        QVERIFY(!m.getLatestFile(info));
        QCOMPARE(root.readFile("/apps/config/reclist.ini"), QByteArray("\xff\xfe", 2));
    }

    void rename_data()
    {
        QTest::addColumn<QString>("existing");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("finalName");
        QTest::newRow("free-name") << ""
                                   << "Talk" << 0 << "Talk.mp3";
        QTest::newRow("lower-case-twin-exists") << "talk.mp3"
                                                << "TALK" << 2 << "240131.mp3";
        QTest::newRow("upper-case-file-exists") << "TALK.mp3"
                                                << "TALK" << 1 << "240131.mp3";
        QTest::newRow("separator-refused") << ""
                                           << "../escape" << 1 << "240131.mp3";
    }
    void rename()
    {
        QFETCH(QString, existing);
        QFETCH(QString, name);
        QFETCH(int, result);
        QFETCH(QString, finalName);
        TestDeviceRoot root;
        RecFileManager m;
        if (!existing.isEmpty())
            QVERIFY(root.writeFile(folder + existing, "other"));
        addFiles(m, root, {"240131.mp3"});
        QCOMPARE(m.renameRecFile(0, name), result);
        QFileInfo info;
        QVERIFY(m.getInfoByID(0, info));
        QCOMPARE(info.fileName(), finalName);
        QVERIFY(info.exists());
        QCOMPARE(root.readFile("/apps/config/reclist.ini"), listBytes({folder + finalName}));
    }

    void durationIsCached()
    {
        TestDeviceRoot root;
        QByteArray wav = QByteArray::fromHex("52494646000000005741564566"
                                             "6d7420100000000100020044ac0000"
                                             "10b1020004001000646174610000000000");
        wav.resize(44);
        wav.append(QByteArray(176400 * 10, '\0'));
        RecFileManager m;
        QVERIFY(root.writeFile(folder + "a.wav", wav));
        QVERIFY(root.writeFile(folder + "b.txt", "text"));
        m.addNewFileToList(root.path(folder + "a.wav"));
        m.addNewFileToList(root.path(folder + "b.txt"));
        QCOMPARE(m.getFileDuration(1), QStringLiteral("00:10"));
        QVERIFY(root.writeFile(folder + "a.wav", wav.left(44)));
        QCOMPARE(m.getFileDuration(1), QStringLiteral("00:10"));
        QCOMPARE(m.getFileDuration(0), QStringLiteral("null"));
        QCOMPARE(m.renameRecFile(1, "kept"), 0);
        QCOMPARE(m.getFileDuration(1), QStringLiteral("00:10"));
    }

    void listFile_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("result");
        QTest::addColumn<QStringList>("loaded");
        const QString odd =
            folder + QString::fromUtf8("\xe4\xb8\x8d\xe0\xa8\x8a.mp3"); // 0x0D, 0x0A bytes
        QTest::newRow("utf16-round-trip") << listBytes({folder + "a.mp3", odd}) << 0
                                          << QStringList{"a.mp3", odd.mid(folder.size())};
        QTest::newRow("plain-8-bit") << QByteArray("/mnt/mmc/e_Recorder/a.mp3\n\n"
                                                   "/mnt/mmc/e_Recorder/b.mp3\n")
                                     << 0 << QStringList{"a.mp3", "b.mp3"};
        QTest::newRow("vanished-file-dropped")
            << listBytes({folder + "gone.mp3", folder + "b.mp3"}) << 0 << QStringList{"b.mp3"};
        QTest::newRow("tab-stops-load")
            << listBytes({folder + "a.mp3", folder + "b.mp3\tx", folder + "b.mp3"}) << -1
            << QStringList{"a.mp3"};
    }
    void listFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, result);
        QFETCH(QStringList, loaded);
        TestDeviceRoot root;
        for (const QString &name : loaded)
            QVERIFY(root.writeFile(folder + name, "x"));
        QVERIFY(root.writeFile("/apps/config/reclist.ini", bytes));
        RecFileManager m;
        QCOMPARE(m.init(), result);
        QVector<QFileInfo> infos;
        m.getInfoList(infos);
        QStringList names;
        for (const QFileInfo &info : infos)
            names << info.fileName();
        QCOMPARE(names, loaded);
        QCOMPARE(m.flush(), 0);
        QStringList paths;
        for (const QString &name : loaded)
            paths << folder + name;
        QCOMPARE(root.readFile("/apps/config/reclist.ini"), listBytes(paths));
    }

    void killedWhileAdding()
    {
        TestDeviceRoot root;
        QVERIFY(QDir().mkpath(root.path(folder)));
        QStringList flushed;
        for (int round = 0; round < 20; ++round) {
            int fds[2];
            QVERIFY(::pipe(fds) == 0);
            Child child;
            child.out = fds[0];
            child.pid = ::fork();
            if (child.pid == 0) {
                ::setpgid(0, 0);
                ::dup2(fds[1], STDOUT_FILENO);
                ::execl(QCoreApplication::applicationFilePath().toLocal8Bit().constData(), "child",
                        "--append-child", static_cast<char *>(nullptr));
                ::_exit(127);
            }
            ::close(fds[1]);
            QByteArray seen;
            char buffer[4096];
            ssize_t n = ::read(child.out, buffer, sizeof buffer); // the first entry is written
            QVERIFY(n > 0);
            seen.append(buffer, int(n));
            ::usleep(QRandomGenerator::global()->bounded(30000));
            ::kill(-child.pid, SIGKILL);
            while ((n = ::read(child.out, buffer, sizeof buffer)) > 0)
                seen.append(buffer, int(n));
            for (const QByteArray &line : seen.split('\n'))
                if (!line.isEmpty())
                    flushed << QString::fromUtf8(line);
            RecFileManager m;
            QCOMPARE(m.init(), 0);
            QVector<QFileInfo> infos;
            m.getInfoList(infos);
            QSet<QString> listed;
            for (const QFileInfo &info : infos)
                listed.insert(info.fileName());
            for (const QString &name : qAsConst(flushed))
                QVERIFY2(listed.contains(name), qPrintable(name));
        }
        QVERIFY(flushed.size() >= 20);
    }
};

int main(int argc, char **argv)
{
    if (argc == 2 && qstrcmp(argv[1], "--append-child") == 0) {
        QCoreApplication app(argc, argv);
        return appendChild();
    }
    QCoreApplication app(argc, argv);
    TstRecFileManager test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_recfilemanager.moc"
