// The program started on a device root as it finds it: the card's folders, the settings file, the
// speakers' volume, the language chosen (each language's texts: tst_res), the music list, and the
// faults it must live with; and the QCop channel it talks to the shell over.
#include "app/qcopchannel.h"
#include "recorderprocess.h"
#include "shelllistener.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <algorithm>
#include <sched.h>
#include <unistd.h>

class TestApp : public QObject
{
    Q_OBJECT
private slots:
    // What travels between processes beyond this is shown by the recorder's own tests, which hear
    // the shell's channel through `qcop listen`.
    void qcopChannelsHearOnlyTheirOwn()
    {
        const ShellListener shell;
        QCopChannel recorder("recorderprocess");
        QSignalSpy heard(&recorder, &QCopChannel::received);
        QCopChannel::flush();
        // from another process, then from this one
        const QStringList send{"send", "recorderprocess", "execute(QString)", "stoponly"};
        QCOMPARE(QProcess::execute(QCOP_BIN, send), 0);
        QVERIFY(QCopChannel::send("mainprocess", "Show(QString)", "record"));
        QTRY_COMPARE(heard.count(), 1);
        // the data block is the bare bytes of the word: no length, no terminator
        QCOMPARE(heard.first(), (QVariantList{"execute(QString)", QByteArray("stoponly")}));
        QTRY_COMPARE(shell.heard(), QStringList("Show(QString) record"));
    }

    void startsFromRoot_data()
    {
        QTest::addColumn<bool>("empty");    // nothing at all in the root, not even its folders
        QTest::addColumn<bool>("folders");  // the card's folders there already, with a recording
        QTest::addColumn<int>("volume");    // the stored volume step; -1: no settings file
        QTest::addColumn<int>("lan");       // SystemSet/Lan; -1: no such key
        QTest::addColumn<bool>("readOnly"); // root and /apps/config, for a user who is not root
        QTest::addColumn<int>("shown");     // the language number then shown
        // without a bus the shell hears nothing, and the program runs all the same
        QTest::newRow("empty-root-without-bus-made-loudest")
            << true << false << -1 << -1 << false << 0;
        QTest::newRow("folders-left-alone-step-2-no-language-key")
            << false << true << 2 << -1 << false << 1;
        // nothing is written to the read-only folder, and the program runs all the same
        QTest::newRow("read-only-config-folder") << false << false << -1 << 1 << true << 101;
    }
    void startsFromRoot()
    {
        QFETCH(bool, empty);
        QFETCH(bool, folders);
        QFETCH(int, volume);
        QFETCH(int, lan);
        QFETCH(bool, readOnly);
        QFETCH(int, shown);
        TestDeviceRoot root;
        QVERIFY(empty ? QDir(root.root()).removeRecursively() && QDir().mkpath(root.root())
                      : root.installLanguageTable());
        QVERIFY(!folders || root.writeFile("/mnt/mmc/e_Recorder/kept.mp3", "x"));
        QVERIFY(!folders || QDir().mkpath(root.path("/mnt/mmc/e_Music")));
        QVERIFY(volume < 0 ||
                root.writeFile("/apps/config/recconfig.ini",
                               "[RecorderSet]\nPlayVolume=" + QByteArray::number(volume)));
        QVERIFY(lan < 0 || root.writeFile("/apps/config/config.ini",
                                          "[SystemSet]\nLan=" + QByteArray::number(lan)));
        const QStringList configFiles = QDir(root.path("/apps/config")).entryList(QDir::Files);
        QVERIFY(
            !readOnly ||
            (QFile::setPermissions(root.root(), QFileDevice::Permissions(0x7555)) &&
             QFile::setPermissions(root.path("/apps/config"), QFileDevice::Permissions(0x5555))));
        RecorderProcess recorder(root.root());
        if (empty)
            recorder.setEnv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/recorder-test-bus");
        // root writes into any folder: the recorder runs as a user who cannot
        if (readOnly && geteuid() == 0)
            recorder.setWrapper(
                {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--"});
        QVERIFY(recorder.start());
        QVERIFY(recorder.waitForError("in recorderWnd::showEvent"));
        QVERIFY(recorder.waitForError("show lan is " + QByteArray::number(shown) + "\n"));
        QVERIFY(recorder.isRunning());
        if (readOnly) {
            QCOMPARE(QDir(root.path("/apps/config")).entryList(QDir::Files), configFiles);
            return;
        }
        // missing folders are made; present ones are left as they are
        for (const char *folder : {"/mnt/mmc/e_Recorder", "/mnt/mmc/e_Music"})
            QVERIFY(QFileInfo(root.path(folder)).isDir());
        QCOMPARE(root.exists("/mnt/mmc/e_Recorder/kept.mp3"), folders);
        // the volume step in fifths
        const QString percent = QString::number((volume < 0 ? 5 : volume) * 20) + '%';
        QCOMPARE(root.amixerCalls(),
                 QStringList({"amixer set Speaker " + percent, "amixer set Headphone " + percent}));
    }

    void brokenLanguageTableEndsWithMinusOne()
    {
        TestDeviceRoot root;
        QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", "only\tthree\tcolumns\n"));
        RecorderProcess recorder(root.root());
        QVERIFY(recorder.start() && recorder.waitForExit());
        QCOMPARE(recorder.exitCode(), 255);
    }

    // The music list the recorder writes at start-up on a full card, against the list this test
    // knows from the songs it put there: every song's device path, in descending byte order.
    void fullCardMusicListSurvivesStopAfterShow()
    {
        TestDeviceRoot root;
        const QByteArray card = QFile::encodeName(root.path("/mnt/mmc/"));
        QVERIFY(root.writeFile("/mnt/mmc/e_Music/sub/deep.mp3", "x"));
        QVERIFY(QDir().mkpath(QFile::decodeName(card + "dir.mp3")));
        QByteArrayList expected{"/mnt/mmc/dir.mp3\n"};
        // song: the list must hold the name
        const auto add = [&](const QByteArray &folder, const QByteArray &name, bool song) {
            const QByteArray seed = card + "e_Music/sub/deep.mp3";
            QVERIFY2(::link(seed.constData(), (card + folder + name).constData()) == 0, name);
            if (song)
                expected << "/mnt/mmc/" + folder + name + '\n';
        };
        const char *const suffixes[] = {".mp3", ".MP3", ".Mp3", ".mp3x",
                                        ".mp2", ".wav", "_mp3", "."};
        for (int i = 0; i < 3000; ++i) {
            const int n = i * 7919 % 10007;
            add(i % 10 ? "e_Music/" : "",
                char('A' + n % 58) + QByteArray::number(n) + " song" + suffixes[i % 8], i % 8 < 4);
        }
        // bytes below the line feed, above ASCII, and names on either side of "e_Music/"
        for (const QByteArray &folder : {QByteArray(), QByteArray("e_Music/")})
            for (const char *name : {"a.mp3", "a.mp3\tb", "\xe4\xb8\xad.mp3", "\xc3\xa9.MP3",
                                     "e.mp3", "e_Music.mp3", "e_Musiz.mp3", "f.mp3", "mp3"})
                add(folder, name, qstrcmp(name, "mp3") != 0);
        std::sort(expected.begin(), expected.end(), std::greater<QByteArray>());

        const ShellListener shell;
        RecorderProcess recorder(root.root());
        // on one core, as on the pen: the scan then gets the core only once the window leaves it
        recorder.setWrapper({"taskset", "-c", QString::number(sched_getcpu())});
        QVERIFY(recorder.start());
        QTRY_COMPARE_WITH_TIMEOUT(shell.heard().value(0), QString("Show(QString) record"), 60000);
        // the shell may leave as soon as the window shows: the list must come out whole all the
        // same
        QVERIFY(QCopChannel::send("recorderprocess", "execute(QString)", "stop"));
        QVERIFY(recorder.waitForExit(60000));
        QCOMPARE(recorder.exitCode(), 0);
        QCOMPARE(root.readFile("/apps/config/musiclist.txt"), expected.join());
    }
};

QTEST_GUILESS_MAIN(TestApp)
#include "tst_app.moc"
