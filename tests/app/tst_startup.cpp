#include "recorderprocess.h"
#include "testdeviceroot.h"

#include <QDir>
#include <QSettings>
#include <QTest>

#include <unistd.h>

// The program started on a device root as it finds it: the card's folders, the settings file, the
// speakers' volume and the language chosen (each language's texts: tst_res), and the faults it
// must live with.
class TestStartup : public QObject
{
    Q_OBJECT
private slots:
    void startsFromRoot_data()
    {
        QTest::addColumn<bool>("empty");   // nothing at all in the root, not even its folders
        QTest::addColumn<bool>("folders"); // the card's folders there already, with a recording
        QTest::addColumn<int>("volume");   // the stored volume step; -1: no settings file
        QTest::addColumn<int>("lan");      // SystemSet/Lan; -1: no such key
        QTest::addColumn<int>("shown");    // the language number then shown
        // without a bus the shell hears nothing, and the program runs all the same
        QTest::newRow("empty-root-without-bus-made-loudest") << true << false << -1 << -1 << 0;
        QTest::newRow("folders-left-alone-step-2-no-language-key") << false << true << 2 << -1 << 1;
        QTest::newRow("silent-outside-the-table") << false << false << 0 << 42 << 0;
    }
    void startsFromRoot()
    {
        QFETCH(bool, empty);
        QFETCH(bool, folders);
        QFETCH(int, volume);
        QFETCH(int, lan);
        QFETCH(int, shown);
        TestDeviceRoot root;
        QVERIFY(empty ? QDir(root.root()).removeRecursively() && QDir().mkpath(root.root())
                      : root.installLanguageTable());
        QVERIFY(!folders || root.writeFile("/mnt/mmc/e_Recorder/kept.mp3", "x"));
        QVERIFY(!folders || QDir().mkpath(root.path("/mnt/mmc/e_Music")));
        QVERIFY(volume < 0 ||
                root.writeFile("/apps/config/recconfig.ini",
                               "[RecorderSet]\nPlayVolume=" + QByteArray::number(volume) + "\n"));
        QVERIFY(lan < 0 || root.writeFile("/apps/config/config.ini",
                                          "[SystemSet]\nLan=" + QByteArray::number(lan) + "\n"));
        RecorderProcess recorder(root.root());
        if (empty)
            recorder.setEnv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/recorder-test-bus");
        QVERIFY(recorder.start());
        QVERIFY(recorder.waitForError("in recorderWnd::showEvent"));
        const QByteArray err = recorder.standardError();
        QVERIFY(recorder.isRunning());
        QVERIFY2(err.contains("show lan is " + QByteArray::number(shown) + "\n"), err.constData());
        // missing folders are made, and said so; present ones are left as they are
        QCOMPARE(err.count("recorder is null"), folders ? 0 : 2);
        QCOMPARE(err.count("recorder dir exit") + err.count("music dir exit"), folders ? 0 : 2);
        for (const char *folder : {"/mnt/mmc/e_Recorder", "/mnt/mmc/e_Music"})
            QVERIFY(QFileInfo(root.path(folder)).isDir());
        QCOMPARE(root.exists("/mnt/mmc/e_Recorder/kept.mp3"), folders);
        // the settings file holds every key afterwards, the volume step in fifths
        QSettings file(root.path("/apps/config/recconfig.ini"), QSettings::IniFormat);
        file.beginGroup(QStringLiteral("RecorderSet"));
        QCOMPARE(file.childKeys().size(), 5);
        const QString percent = QString::number((volume < 0 ? 5 : volume) * 20) + '%';
        QCOMPARE(root.amixerCalls(),
                 QStringList({"amixer set Speaker " + percent, "amixer set Headphone " + percent}));
    }

    void brokenLanguageTableEndsWithMinusOne()
    {
        TestDeviceRoot root;
        QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", "only\tthree\tcolumns\n"));
        RecorderProcess recorder(root.root());
        QVERIFY(recorder.start());
        QVERIFY(recorder.waitForExit());
        QCOMPARE(recorder.exitStatus(), QProcess::NormalExit);
        QCOMPARE(recorder.exitCode(), 255);
        QVERIFY(recorder.standardError().contains("Initlanguage failed."));
    }

    void readOnlyConfigFolder()
    {
        TestDeviceRoot root;
        QVERIFY(root.installLanguageTable());
        QVERIFY(root.writeFile("/apps/config/config.ini", "[SystemSet]\nLan=1\n"));
        const QStringList before = QDir(root.path("/apps/config")).entryList(QDir::Files);
        QVERIFY(QFile::setPermissions(root.root(), QFileDevice::Permissions(0x7555)) &&
                QFile::setPermissions(root.path("/apps/config"), QFileDevice::Permissions(0x5555)));
        RecorderProcess recorder(root.root());
        // root writes into any folder: the recorder runs as a user who cannot
        if (geteuid() == 0)
            recorder.setWrapper(
                {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--"});
        QVERIFY(recorder.start());
        QVERIFY(recorder.waitForError("in recorderWnd::showEvent"));
        QVERIFY(recorder.standardError().contains("show lan is 101"));
        QVERIFY(recorder.isRunning());
        QCOMPARE(QDir(root.path("/apps/config")).entryList(QDir::Files), before);
    }
};

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
