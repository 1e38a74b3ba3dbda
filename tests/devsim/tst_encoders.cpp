// The device simulation's encoders, killed as the recorder kills them, and mkroot's device root.
#include "testdeviceroot.h"

#include <QtTest>

#include <signal.h>

static QString output(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAll());
}

class TestEncoders : public QObject
{
    Q_OBJECT

private slots:
    void killedRecordingStaysValid_data()
    {
        QTest::addColumn<QStringList>("command"); // FILE: the recording
        QTest::addColumn<int>("rate");
        QTest::newRow("wav-low-quality-stopped-a-second")
            << QStringList{"record2wav", "FILE", "11025"} << 11025;
        QTest::newRow("mp3-mpeg2-64-kbps")
            << QStringList{"shine", "-b", "64", "-s", "24000", "FILE"} << 24000;
    }
    void killedRecordingStaysValid()
    {
        QFETCH(QStringList, command);
        QFETCH(int, rate);
        const TestDeviceRoot root;
        const bool wav = command.first() == "record2wav";
        const QString file = root.path(wav ? "/a.wav" : "/a.mp3");
        qputenv("DEVSIM_SIGNAL", "generated");
        QProcess process;
        process.start(DEVSIM_BIN_DIR "/" + command.first(),
                      command.mid(1).replaceInStrings("FILE", file));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(file), 10000);
        // real time is under test: two seconds of recording; the WAV encoder spends a second under
        // SIGSTOP between them, which adds nothing
        QTest::qWait(1000);
        if (wav) {
            ::kill(pid_t(process.processId()), SIGSTOP);
            QTest::qWait(1000);
            ::kill(pid_t(process.processId()), SIGCONT);
        }
        QTest::qWait(1000);
        process.kill();
        QVERIFY(process.waitForFinished() && process.exitStatus() == QProcess::CrashExit);
        QCOMPARE(output("soxi", {"-r", file}).trimmed(), QString::number(rate));
        // what sox makes of the file after decoding all of it
        const QString stat = output("sox", {file, "-n", "stat"});
        const double seconds = stat.section("Length (seconds):", 1).section('\n', 0, 0).toDouble();
        QVERIFY2(seconds > 1.5 && seconds < 2.6, qPrintable(stat));

        const QByteArray bytes = root.readFile(wav ? "/a.wav" : "/a.mp3");
        if (wav) {
            const quint32 dataSize = qFromLittleEndian<quint32>(bytes.constData() + 40);
            QCOMPARE(qFromLittleEndian<quint32>(bytes.constData() + 4), dataSize + 36);
            // the sizes lag the file by at most a second of audio
            const qint64 unaccounted = bytes.size() - 44 - qint64(dataSize);
            QVERIFY2(unaccounted >= 0 && unaccounted <= 2 * rate,
                     qPrintable(QString::number(unaccounted)));
        } else {
            // MPEG-2 Layer III: 72 * 64000 / 24000 = 192 bytes a frame
            QCOMPARE(bytes.left(2).toHex() + bytes.mid(192, 2).toHex(), QByteArray("fff3fff3"));
        }
    }

    // what the end-to-end and language tests do not take from mkroot's root: the language set,
    // the programs they do not run, the resources they do not show
    void mkrootMakesDeviceRoot()
    {
        QTemporaryDir dir;
        // a user's own choice is kept, what is missing gets a pen's defaults
        QVERIFY(QDir(dir.path()).mkpath("apps/config"));
        QFile user(dir.filePath("apps/config/config.ini"));
        QVERIFY(user.open(QIODevice::WriteOnly) && user.write("[InfoListen]\nVolum=5\n") > 0);
        user.close();
        QCOMPARE(QProcess::execute(MKROOT, {dir.path(), BUILD_DIR}), 0);
        const QSettings config(dir.filePath("apps/config/config.ini"), QSettings::IniFormat);
        QStringList settings;
        for (const QString &key : config.allKeys())
            settings << key + '=' + config.value(key).toString();
        settings.sort();
        QCOMPARE(settings, QStringList({"InfoListen/Lan=1", "InfoListen/ReadControl=0",
                                        "InfoListen/ReadSpeed=1", "InfoListen/Volum=5",
                                        "SystemSet/Lan=1", "SystemSet/Speed=50"}));
        for (const char *path : {"apps/bin/recorder", "apps/bin/musicplayer", "usr/bin/mplayer"})
            QVERIFY2(QFileInfo(dir.filePath(path)).isExecutable(), path);
        for (const char *path : {"apps/res/sandglass.gif", "apps/res/pause.bmp",
                                 "apps/res/play.bmp", "apps/res/pics/settings2.png"})
            QVERIFY2(QFileInfo(dir.filePath(path)).size() > 0, path);
        // the player is the device simulation's stand-in, a file of the root's own
        QFile stored(dir.filePath("usr/bin/mplayer")), source(DEVSIM_SOURCE_DIR "/mplayer");
        QVERIFY(!QFileInfo(stored).isSymLink());
        QVERIFY(stored.open(QIODevice::ReadOnly) && source.open(QIODevice::ReadOnly));
        QCOMPARE(stored.readAll(), source.readAll());
    }
};

QTEST_GUILESS_MAIN(TestEncoders)
#include "tst_encoders.moc"
