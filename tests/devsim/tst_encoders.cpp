#include <QtTest>

#include <signal.h>

namespace {

QString output(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromLocal8Bit(process.readAll());
}

quint32 littleEndianAt(const QByteArray &bytes, int at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

} // namespace

class TestEncoders : public QObject
{
    Q_OBJECT

private slots:
    void killedRecordingStaysValid_data();
    void killedRecordingStaysValid();
    void mkrootMakesDeviceRoot();
};

void TestEncoders::killedRecordingStaysValid_data()
{
    QTest::addColumn<QString>("encoder");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("rate");
    QTest::addColumn<bool>("stopped"); // a second under SIGSTOP between two of recording
    QTest::newRow("wav-low-quality-stopped-a-second")
        << "record2wav" << QStringList{"FILE", "11025"} << 11025 << true;
    QTest::newRow("mp3-mpeg2-64-kbps")
        << "shine" << QStringList{"-b", "64", "-s", "24000", "FILE"} << 24000 << false;
}

void TestEncoders::killedRecordingStaysValid()
{
    QFETCH(QString, encoder);
    QFETCH(QStringList, arguments);
    QFETCH(int, rate);
    QFETCH(bool, stopped);
    QTemporaryDir dir;
    const QString file = dir.filePath(encoder == "shine" ? "a.mp3" : "a.wav");
    qputenv("DEVSIM_SIGNAL", "generated");
    QProcess process;
    process.start(QStringLiteral(DEVSIM_BIN_DIR "/") + encoder,
                  arguments.replaceInStrings("FILE", file));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(file), 10000);
    // real time is under test: two seconds of recording, the stopped one adds nothing
    QTest::qWait(1000);
    if (stopped) {
        ::kill(pid_t(process.processId()), SIGSTOP);
        QTest::qWait(1000);
        ::kill(pid_t(process.processId()), SIGCONT);
    }
    QTest::qWait(1000);
    process.kill();
    QVERIFY(process.waitForFinished() && process.exitStatus() == QProcess::CrashExit);

    QFile recorded(file);
    QVERIFY(recorded.open(QIODevice::ReadOnly));
    const QByteArray bytes = recorded.readAll();
    QVERIFY(bytes.size() >= 400);
    if (encoder == "record2wav") {
        QCOMPARE(bytes.left(4) + bytes.mid(8, 8) + bytes.mid(36, 4),
                 QByteArray("RIFFWAVEfmt data"));
        const quint32 dataSize = littleEndianAt(bytes, 40);
        QCOMPARE(littleEndianAt(bytes, 4), dataSize + 36);
        // the sizes lag the file by at most a second of audio
        const qint64 unaccounted = bytes.size() - 44 - qint64(dataSize);
        QVERIFY2(unaccounted >= 0 && unaccounted <= 2 * rate,
                 qPrintable(QString::number(unaccounted)));
    } else {
        // MPEG-2 Layer III, mono: 72 * 64000 / 24000 = 192 bytes a frame
        QCOMPARE(bytes.left(2).toHex(), QByteArray("fff3"));
        QCOMPARE(quint8(bytes[3]) >> 6, 3);
        QCOMPARE(bytes.mid(192, 2).toHex(), QByteArray("fff3"));
    }
    QCOMPARE(output("soxi", {"-r", file}).trimmed(), QString::number(rate));
    // what sox makes of the file after decoding all of it
    const QRegularExpressionMatch length = QRegularExpression("Length \\(seconds\\):\\s*([0-9.]+)")
                                               .match(output("sox", {file, "-n", "stat"}));
    QVERIFY(length.hasMatch());
    const double seconds = length.captured(1).toDouble();
    QVERIFY2(seconds > 1.5 && seconds < 2.6, qPrintable(QString::number(seconds)));
}

void TestEncoders::mkrootMakesDeviceRoot()
{
    QTemporaryDir dir;
    QCOMPARE(QProcess::execute(QStringLiteral(MKROOT), {dir.path(), QStringLiteral(BUILD_DIR)}), 0);
    const QSettings config(dir.filePath("apps/config/config.ini"), QSettings::IniFormat);
    QCOMPARE(config.value("SystemSet/Lan").toInt(), 1);
    // folders and programs alike are executable
    for (const char *path : {"mnt/mmc/e_Recorder", "mnt/mmc/e_Music", "mnt/mtdblock3",
                             "apps/res/pics", "usr/sbin/shine", "usr/sbin/record2wav",
                             "apps/bin/recorder", "apps/bin/musicplayer", "usr/bin/mplayer"})
        QVERIFY2(QFileInfo(dir.filePath(path)).isExecutable(), path);
    // the program and its resources as cmake --install lays them out
    for (const char *path :
         {"apps/config/scanlanguage.cfg", "apps/res/sandglass.gif", "apps/res/pause.bmp",
          "apps/res/play.bmp", "apps/res/pics/settings2.png"})
        QVERIFY2(QFileInfo(dir.filePath(path)).size() > 0, path);
    QCOMPARE(QDir(dir.filePath("apps/res")).entryList({"recorder_*.qm"}, QDir::Files).size(), 8);
    // the player is the device simulation's stand-in, a file of the root's own
    const QFileInfo player(dir.filePath("usr/bin/mplayer"));
    QVERIFY(!player.isSymLink());
    QFile stored(player.filePath()), source(QStringLiteral(DEVSIM_SOURCE_DIR "/mplayer"));
    QVERIFY(stored.open(QIODevice::ReadOnly) && source.open(QIODevice::ReadOnly));
    QCOMPARE(stored.readAll(), source.readAll());
}

QTEST_GUILESS_MAIN(TestEncoders)
#include "tst_encoders.moc"
