#include "storage/languagemanager.h"
#include "storage/recfilemanager.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString folder = QStringLiteral("/mnt/mmc/e_Recorder/");
const QString listPath = QStringLiteral("/apps/config/reclist.ini");

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

// fn's result as the exit code of a child process whose files may not grow beyond maxFileSize,
// run as an unprivileged user when asked (root passes every permission check)
int inChild(bool unprivileged, rlim_t maxFileSize, const std::function<int()> &fn)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        std::signal(SIGXFSZ, SIG_IGN); // a full card: writes fail instead
        const rlimit limit{maxFileSize, maxFileSize};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0 ||
            (unprivileged && geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)))
            _exit(99);
        _exit(fn());
    }
    int status = 0;
    return pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) ? WEXITSTATUS(status)
                                                                           : -1;
}

} // namespace

class TstRecFileManager : public QObject
{
    Q_OBJECT
private slots:
    void namesLimitAndIndex()
    {
        TestDeviceRoot root;
        RecFileManager m;
        const QDate today(2024, 1, 31);
        addFiles(m, root, {"240131_9.mp3", "240130_4.mp3"}); // only the newest one counts
        QCOMPARE(m.newFileName(today), root.path(folder + "240131.mp3"));
        addFiles(m, root, {"240131.mp3"});
        QCOMPARE(m.newFileName(today), root.path(folder + "240131_1.mp3"));
        addFiles(m, root, {"240131_4.mp3"});
        QCOMPARE(m.newFileName(today), root.path(folder + "240131_5.mp3"));
        QVERIFY(root.writeFile(folder + "240131_5.mp3", "x")); // a gap in the list
        QCOMPARE(m.newFileName(today), root.path(folder + "240131_6.mp3"));
        addFiles(m, root, {"240131_2147483647.mp3"}); // the largest int counts on
        QCOMPARE(m.newFileName(today), root.path(folder + "240131_2147483648.mp3"));

        // the limit, and the current index counted from the oldest end
        QStringList names;
        for (int i = 0; i < 999; ++i) {
            names << QStringLiteral("r%1.mp3").arg(i);
            QVERIFY(root.writeFile(folder + names.last(), "x"));
        }
        QVERIFY(root.writeFile(listPath, listBytes(names)));
        QCOMPARE(m.init(), 0);
        QCOMPARE(m.getFileNum(), 999);
        QVERIFY(m.exceedMaxNum());
        addFiles(m, root, {"r999.mp3"});
        QVERIFY(!m.exceedMaxNum());
        m.setCurFileIndex(0);
        QCOMPARE(m.getCurFileIndex(), 999);
        RecFileManager one;
        addFiles(one, root, {"last.mp3"});
        QCOMPARE(one.removeAt(0), 0);
        QCOMPARE(one.getFileNum(), 0);
        QCOMPARE(one.getCurFileIndex(), 0); // 0 - (-1) - 1: nothing is selected
    }

    void renameAndDuration()
    {
        TestDeviceRoot root;
        // 44-byte PCM header: 2 channels, 44100 Hz, 16 bits, 176400 bytes a second
        const QByteArray wav(
            "RIFF\0\0\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x44\xac\0\0\x10\xb1\2\0\4\0\x10\0data\0\0\0\0",
            44);
        RecFileManager m;
        QVERIFY(root.writeFile(folder + "talk.wav", "other"));
        addFiles(m, root, {"b.txt", "240131.wav"});
        QVERIFY(root.writeFile(folder + "240131.wav", wav + QByteArray(176400 * 10, '\0')));
        QCOMPARE(m.getFileDuration(0), QStringLiteral("00:10"));
        QCOMPARE(m.getFileDuration(1), QStringLiteral("null"));
        QCOMPARE(m.renameRecFile(0, "TALK"), 2); // its lower-case twin exists
        QCOMPARE(m.renameRecFile(0, "../escape"), 1);
        QCOMPARE(m.renameRecFile(0, QStringLiteral("cut") + QChar(0) + "short"), 1);
        QVERIFY(!root.exists(folder + "cut.wav"));
        QCOMPARE(m.renameRecFile(0, "Memo"), 0);
        QVERIFY(root.exists(folder + "Memo.wav") && !root.exists(folder + "240131.wav"));
        QCOMPARE(root.readFile(listPath), listBytes({"Memo.wav", "b.txt"}));
        QVERIFY(root.writeFile(folder + "Memo.wav", wav)); // computed once: the length stays
        QCOMPARE(m.getFileDuration(0), QStringLiteral("00:10"));
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
        QFETCH(int, result);
        QFETCH(QStringList, loaded);
        QFETCH(bool, backedUp);
        TestDeviceRoot root;
        for (const QString &name : loaded + QStringList{"a.mp3", "b.mp3"})
            QVERIFY(root.writeFile(folder + name, "x"));
        QVERIFY(root.writeFile(listPath, bytes));
        RecFileManager m;
        QCOMPARE(m.init(), result);
        if (backedUp)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("reclist.ini.bak\"$"));
        QCOMPARE(m.flush(), 0); // writes back what was loaded
        QCOMPARE(root.readFile(listPath), listBytes(loaded));
        QCOMPARE(root.readFile(listPath + ".bak"), backedUp ? bytes : QByteArray());
        QCOMPARE(m.flush(), 0); // one backup only
        QVERIFY(!root.exists(listPath + ".bak1"));
    }

    void removesOnlyRecordings()
    {
        TestDeviceRoot root("device"); // "/.." leads into the temporary folder
        QVERIFY(QDir().mkpath(root.path(folder)));
        const QStringList outside{"/apps/config/config.ini", "/mnt/mmc/e_Recorder/../x.txt",
                                  "/../outside.txt", "/mnt/mmc/e_Recorder2/y.mp3"};
        for (const QString &path : outside)
            QVERIFY(root.writeFile(path, "keep"));
        QVERIFY(root.writeFile(listPath, outside.join('\n').toUtf8()));
        RecFileManager m;
        QCOMPARE(m.init(), 0);
        QCOMPARE(m.getFileNum(), outside.size());
        for (int i = 0; i < outside.size(); ++i)
            QCOMPARE(m.removeAt(i), -1);
        for (const QString &path : outside)
            QCOMPARE(root.readFile(path), QByteArray("keep"));
        QCOMPARE(m.getFileNum(), outside.size());

        // a recording whose file is already gone leaves the list
        addFiles(m, root, {"gone.mp3"});
        QVERIFY(QFile::remove(root.path(folder + "gone.mp3")));
        QCOMPARE(m.removeAt(0), 0);
        QCOMPARE(m.getFileNum(), outside.size());
    }

    void failedWritesLoseNothing_data()
    {
        QTest::addColumn<QString>("action"); // what the child does
        // made read-only (write-only for a file) for an unprivileged child; none: a full card,
        // where no file may grow beyond the old list's size
        QTest::addColumn<QString>("readOnly");
        QTest::newRow("no-space-for-the-new-list") << "add" << QString();
        QTest::newRow("read-only-config-folder") << "add"
                                                 << "/apps/config";
        QTest::newRow("unreadable-list-not-truncated") << "load" << listPath;
        QTest::newRow("unreadable-language-table-not-truncated") << "language"
                                                                 << "/apps/config/scanlanguage.cfg";
    }
    void failedWritesLoseNothing()
    {
        QFETCH(QString, action);
        QFETCH(QString, readOnly);
        TestDeviceRoot root;
        RecFileManager before;
        addFiles(before, root, {"a.mp3", "b.mp3"});
        QVERIFY(root.writeFile(folder + "c.mp3", "x"));
        QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", "en\t101\tEnglish\t1\t1\t1\t1\n"));
        const QByteArray list = root.readFile(listPath);
        const QByteArray table = root.readFile("/apps/config/scanlanguage.cfg");
        QCOMPARE(list, listBytes({"b.mp3", "a.mp3"}));
        QVERIFY(::chmod(QFile::encodeName(root.root()), 0755) == 0);
        if (!readOnly.isEmpty())
            QVERIFY(::chmod(QFile::encodeName(root.path(readOnly)),
                            QFileInfo(root.path(readOnly)).isDir() ? 0555 : 0222) == 0);

        const bool full = readOnly.isEmpty();
        const int failed = inChild(!full, full ? rlim_t(list.size()) : RLIM_INFINITY, [&] {
            if (action == "language")
                return LanguageManager::Instance()->init() == -1 ? 0 : 1;
            RecFileManager m;
            const int loaded = m.init();
            if (action == "load")
                return loaded == -1 ? 0 : 1;
            m.addNewFileToList(root.path(folder + "c.mp3"));
            // nothing is lost in memory, and the failure is reported
            return loaded == 0 && m.getFileNum() == 3 && m.flush() == -1 ? 0 : 1;
        });
        QCOMPARE(failed, 0);
        QCOMPARE(root.readFile(listPath), list);
        QCOMPARE(root.readFile("/apps/config/scanlanguage.cfg"), table);
    }

    void killedWhileAdding()
    {
        TestDeviceRoot root;
        const QString journal = root.path("/journal");
        for (int round = 0; round < 10; ++round) {
            const qint64 noted = QFileInfo(journal).size();
            const pid_t pid = ::fork();
            if (pid == 0) {
                // adds recordings until killed, noting each one once it has been flushed
                ::setpgid(0, 0);
                RecFileManager m;
                m.init();
                QFile done(journal);
                done.open(QIODevice::Append | QIODevice::Unbuffered);
                for (int i = 0;; ++i) {
                    const QString name = QStringLiteral("k%1_%2.mp3").arg(round).arg(i);
                    addFiles(m, root, {name});
                    done.write(name.toUtf8() + '\n');
                }
            }
            QVERIFY(pid > 0);
            ::setpgid(pid, pid);
            {
                // the child and the shells it runs die together, and are reaped in any case
                const auto reap = qScopeGuard([pid] {
                    ::kill(-pid, SIGKILL);
                    ::waitpid(pid, nullptr, 0);
                });
                QTRY_VERIFY(QFileInfo(journal).size() > noted);
                ::usleep(QRandomGenerator::global()->bounded(30000));
            }
            RecFileManager m;
            QCOMPARE(m.init(), 0);
            QCOMPARE(m.flush(), 0);
            const QByteArray list = root.readFile(listPath);
            for (const QByteArray &name : root.readFile("/journal").trimmed().split('\n'))
                QVERIFY2(list.contains(listBytes({QString::fromUtf8(name)}).mid(2)), name.data());
        }
    }
};

QTEST_GUILESS_MAIN(TstRecFileManager)
#include "tst_recfilemanager.moc"
