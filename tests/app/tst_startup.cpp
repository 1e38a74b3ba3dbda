#include "recorderprocess.h"
#include "testdeviceroot.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace {

QByteArray sampleLanguageTable()
{
    QFile sample(QStringLiteral(DEVSIM_SOURCE_DIR "/scanlanguage.cfg"));
    return sample.open(QIODevice::ReadOnly) ? sample.readAll() : QByteArray();
}

bool fileHoldsRecorderKeys(const QString &path)
{
    QSettings file(path, QSettings::IniFormat);
    file.beginGroup(QStringLiteral("RecorderSet"));
    QStringList keys = file.childKeys();
    keys.sort();
    return keys == QStringList({"Format", "LoopMode", "Mode", "PlayVolume", "Quality"});
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT
private slots:
    void emptyDeviceRootWithoutSessionBus();
    void presentFoldersAreLeftAlone();
    void playVolumeStepBecomesPercent_data();
    void playVolumeStepBecomesPercent();
    void languageChoosesTranslation_data();
    void languageChoosesTranslation();
    void brokenLanguageTableEndsWithMinusOne();
    void readOnlyConfigFolder();
};

void TestStartup::emptyDeviceRootWithoutSessionBus()
{
    QTemporaryDir empty;
    RecorderProcess recorder(empty.path());
    // without a bus the shell hears nothing, and the program runs all the same
    recorder.setEnv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/recorder-test-bus");
    QVERIFY(recorder.start());
    QVERIFY(recorder.waitForError("music dir exit"));
    QVERIFY(recorder.waitForError("show lan is"));
    QVERIFY(fileHoldsRecorderKeys(empty.path() + "/apps/config/recconfig.ini"));
    QVERIFY(QFileInfo(empty.path() + "/mnt/mmc/e_Recorder").isDir());
    QVERIFY(QFileInfo(empty.path() + "/mnt/mmc/e_Music").isDir());
    QFile log(empty.path() + "/amixer.log");
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(log.readAll(), QByteArray("amixer set Speaker 100%\namixer set Headphone 100%\n"));
    const QByteArray err = recorder.standardError();
    QCOMPARE(err.count("recorder is null"), 2);
    QVERIFY(err.contains("recorder dir exit"));
    QVERIFY(recorder.isRunning());
}

void TestStartup::presentFoldersAreLeftAlone()
{
    TestDeviceRoot root;
    QVERIFY(QDir().mkpath(root.path("/mnt/mmc/e_Recorder")));
    QVERIFY(QDir().mkpath(root.path("/mnt/mmc/e_Music")));
    QVERIFY(root.writeFile("/mnt/mmc/e_Recorder/kept.mp3", "x"));
    RecorderProcess recorder(root.root());
    QVERIFY(recorder.start());
    QVERIFY(recorder.waitForError("show lan is"));
    const QByteArray err = recorder.standardError();
    QVERIFY(!err.contains("recorder is null"));
    QVERIFY(!err.contains("dir exit"));
    QVERIFY(root.exists("/mnt/mmc/e_Recorder/kept.mp3"));
}

void TestStartup::playVolumeStepBecomesPercent_data()
{
    QTest::addColumn<int>("step");
    QTest::newRow("silent") << 0;
    QTest::newRow("step-2") << 2; // the loudest, 5, is the default of an empty root
}

void TestStartup::playVolumeStepBecomesPercent()
{
    QFETCH(int, step);
    TestDeviceRoot root;
    QVERIFY(root.writeFile("/apps/config/recconfig.ini",
                           "[RecorderSet]\nPlayVolume=" + QByteArray::number(step) + "\n"));
    RecorderProcess recorder(root.root());
    QVERIFY(recorder.start());
    QVERIFY(recorder.waitForError("show lan is"));
    const QString percent = QString::number(step * 20);
    QCOMPARE(root.amixerCalls(), QStringList({"amixer set Speaker " + percent + "%",
                                              "amixer set Headphone " + percent + "%"}));
}

void TestStartup::languageChoosesTranslation_data()
{
    QTest::addColumn<int>("lan");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("number");
    // positions of the simulation's sample table; every language's translation and line are
    // checked by the resource tests
    QTest::newRow("chinese") << 0 << QByteArray("lan is chinese") << 1;
    QTest::newRow("german") << 2 << QByteArray("lan is KO_LANG_GREMAN") << 104;
    QTest::newRow("outside-table-english-texts") << 42 << QByteArray() << 0;
    QTest::newRow("key-missing") << -1 << QByteArray("lan is chinese") << 1;
}

void TestStartup::languageChoosesTranslation()
{
    QFETCH(int, lan);
    QFETCH(QByteArray, line);
    QFETCH(int, number);
    TestDeviceRoot root;
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", sampleLanguageTable()));
    if (lan >= 0)
        QVERIFY(root.writeFile("/apps/config/config.ini",
                               "[SystemSet]\nLan=" + QByteArray::number(lan) + "\n"));
    RecorderProcess recorder(root.root());
    QVERIFY(recorder.start());
    QVERIFY(recorder.waitForError("show lan is " + QByteArray::number(number) + "\n"));
    QVERIFY(recorder.waitForError("lanInfo: " + QByteArray::number(qMax(lan, 0))));
    const QByteArray err = recorder.standardError();
    if (line.isEmpty()) {
        QVERIFY(!err.contains("\nlan is "));
    } else {
        QVERIFY2(err.contains("\n" + line + "\n"), err.constData());
        QCOMPARE(err.count("\nlan is "), 1);
    }
    // only the Chinese row says how its load went; no .qm is installed in this root. The window
    // shows after the translation step, so by then that line has been written.
    QVERIFY(recorder.waitForError("in recorderWnd::showEvent"));
    QCOMPARE(recorder.standardOutput().contains("qm load error"), number == 1);
}

void TestStartup::brokenLanguageTableEndsWithMinusOne()
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

void TestStartup::readOnlyConfigFolder()
{
    TestDeviceRoot root;
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", sampleLanguageTable()));
    QVERIFY(root.writeFile("/apps/config/config.ini", "[SystemSet]\nLan=1\n"));
    const QStringList before = QDir(root.path("/apps/config")).entryList(QDir::Files);
    QVERIFY(QFile::setPermissions(root.root(), QFileDevice::Permissions(0x7555)) &&
            QFile::setPermissions(root.path("/apps/config"), QFileDevice::Permissions(0x5555)));
    RecorderProcess recorder(root.root());
    // root writes into any folder: the recorder runs as a user who cannot
    if (geteuid() == 0)
        recorder.setWrapper({"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--"});
    QVERIFY(recorder.start());
    QVERIFY(recorder.waitForError("in recorderWnd::showEvent"));
    QVERIFY(recorder.standardError().contains("show lan is 101"));
    QVERIFY(recorder.isRunning());
    QCOMPARE(QDir(root.path("/apps/config")).entryList(QDir::Files), before);
}

QTEST_GUILESS_MAIN(TestStartup)
#include "tst_startup.moc"
