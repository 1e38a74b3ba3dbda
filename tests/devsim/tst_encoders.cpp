#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <signal.h>

namespace {

// One encoder of the device simulation, started on the generated test signal.
class Encoder
{
public:
    Encoder(const QString &name, const QStringList &arguments, const QString &file) : m_file(file)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DEVSIM_SIGNAL"), QStringLiteral("generated"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.start(QStringLiteral(DEVSIM_BIN_DIR "/") + name, arguments);
    }
    ~Encoder()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    // waits for the file to appear; the recording runs from then on
    bool started()
    {
        QElapsedTimer waited;
        waited.start();
        while (!QFileInfo::exists(m_file)) {
            if (waited.elapsed() > 10000 || m_process.state() == QProcess::NotRunning)
                return false;
            QTest::qWait(5);
        }
        return true;
    }

    void signal(int number) { ::kill(pid_t(m_process.processId()), number); }

    bool kill()
    {
        m_process.kill();
        return m_process.waitForFinished() && m_process.exitStatus() == QProcess::CrashExit;
    }

private:
    QString m_file;
    QProcess m_process;
};

quint32 littleEndianAt(const QByteArray &bytes, int at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

// what sox makes of a file after decoding it completely
double decodedSeconds(const QString &file)
{
    QProcess sox;
    sox.start(QStringLiteral("sox"), {file, QStringLiteral("-n"), QStringLiteral("stat")});
    if (!sox.waitForFinished() || sox.exitCode() != 0)
        return -1;
    const QRegularExpressionMatch length =
        QRegularExpression(QStringLiteral("Length \\(seconds\\):\\s*([0-9.]+)"))
            .match(QString::fromLatin1(sox.readAllStandardError()));
    return length.hasMatch() ? length.captured(1).toDouble() : -1;
}

QString soxi(const QString &option, const QString &file)
{
    QProcess info;
    info.start(QStringLiteral("soxi"), {option, file});
    info.waitForFinished();
    return QString::fromLatin1(info.readAllStandardOutput()).trimmed();
}

int loudestSample(const QByteArray &wav)
{
    int loudest = 0;
    const auto *samples = reinterpret_cast<const qint16 *>(wav.constData() + 44);
    for (int i = 0; i < (wav.size() - 44) / 2; ++i)
        loudest = qMax(loudest, qAbs(int(samples[i])));
    return loudest;
}

} // namespace

class TestEncoders : public QObject
{
    Q_OBJECT

private slots:
    void wavKilledStaysValid_data();
    void wavKilledStaysValid();
    void wavPauseRecordsNothing();
    void mp3KilledStillDecodes_data();
    void mp3KilledStillDecodes();
    void mkrootMakesDeviceRoot();
};

void TestEncoders::wavKilledStaysValid_data()
{
    QTest::addColumn<int>("rate");
    QTest::newRow("low-quality-11025-hz") << 11025;
    QTest::newRow("high-quality-44100-hz") << 44100;
}

void TestEncoders::wavKilledStaysValid()
{
    QFETCH(int, rate);
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("a.wav"));
    Encoder encoder(QStringLiteral("record2wav"), {file, QString::number(rate)}, file);
    QVERIFY(encoder.started());
    QTest::qWait(2000); // the length of the recording is under test
    QVERIFY(encoder.kill());

    QFile wav(file);
    QVERIFY(wav.open(QIODevice::ReadOnly));
    const QByteArray bytes = wav.readAll();
    QVERIFY(bytes.size() >= 44);
    QCOMPARE(bytes.left(4) + bytes.mid(8, 8) + bytes.mid(36, 4), QByteArray("RIFFWAVEfmt data"));
    QCOMPARE(littleEndianAt(bytes, 20), 0x00010001u); // PCM, mono
    QCOMPARE(littleEndianAt(bytes, 24), quint32(rate));
    QCOMPARE(littleEndianAt(bytes, 32), 0x00100002u); // two bytes a frame, 16 bits
    const quint32 dataSize = littleEndianAt(bytes, 40);
    QCOMPARE(littleEndianAt(bytes, 4), dataSize + 36);
    // the sizes lag the file by at most a second of audio
    const qint64 unaccounted = bytes.size() - 44 - qint64(dataSize);
    QVERIFY2(unaccounted >= 0 && unaccounted <= 2 * rate, qPrintable(QString::number(unaccounted)));
    const double seconds = double(dataSize) / (2 * rate);
    QVERIFY2(seconds > 1.5 && seconds < 2.6, qPrintable(QString::number(seconds)));
    QCOMPARE(soxi(QStringLiteral("-r"), file), QString::number(rate));
    QVERIFY(loudestSample(bytes) > 3000);
}

void TestEncoders::wavPauseRecordsNothing()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("a.wav"));
    Encoder encoder(QStringLiteral("record2wav"), {file, QStringLiteral("22050")}, file);
    QVERIFY(encoder.started());
    // real time is under test: 1 s recording, 1 s stopped, 1 s recording
    QTest::qWait(1000);
    encoder.signal(SIGSTOP);
    QTest::qWait(1000);
    encoder.signal(SIGCONT);
    QTest::qWait(1000);
    QVERIFY(encoder.kill());
    QFile wav(file);
    QVERIFY(wav.open(QIODevice::ReadOnly) && wav.size() >= 44);
    const double seconds = double(littleEndianAt(wav.read(44), 40)) / (2 * 22050);
    QVERIFY2(seconds > 1.5 && seconds < 2.6, qPrintable(QString::number(seconds)));
}

void TestEncoders::mp3KilledStillDecodes_data()
{
    QTest::addColumn<int>("kbps");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("version"); // version bits of the frame header: 2 MPEG-2, 3 MPEG-1
    QTest::newRow("low-quality-mpeg2") << 64 << 24000 << 2;
    QTest::newRow("high-quality-mpeg2") << 128 << 24000 << 2;
    QTest::newRow("mpeg1-44100-hz") << 128 << 44100 << 3;
}

void TestEncoders::mp3KilledStillDecodes()
{
    QFETCH(int, kbps);
    QFETCH(int, rate);
    QFETCH(int, version);
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("a.mp3"));
    Encoder encoder(QStringLiteral("shine"),
                    {QStringLiteral("-b"), QString::number(kbps), QStringLiteral("-s"),
                     QString::number(rate), file},
                    file);
    QVERIFY(encoder.started());
    QTest::qWait(2000); // the length of the recording is under test
    QVERIFY(encoder.kill());

    QFile mp3(file);
    QVERIFY(mp3.open(QIODevice::ReadOnly));
    const QByteArray head = mp3.read(4);
    QCOMPARE(head.size(), 4);
    QCOMPARE(quint8(head[0]), quint8(0xff));
    QCOMPARE((quint8(head[1]) >> 3) & 3, version);
    QCOMPARE((quint8(head[1]) >> 1) & 3, 1); // layer III
    QCOMPARE(quint8(head[3]) >> 6, 3);       // mono
    QCOMPARE(soxi(QStringLiteral("-r"), file), QString::number(rate));
    QCOMPARE(soxi(QStringLiteral("-c"), file), QStringLiteral("1"));
    const double seconds = decodedSeconds(file);
    QVERIFY2(seconds > 1.5 && seconds < 2.6, qPrintable(QString::number(seconds)));
}

void TestEncoders::mkrootMakesDeviceRoot()
{
    QTemporaryDir dir;
    const QString root = dir.filePath(QStringLiteral("root"));
    for (int run = 0; run < 2; ++run) {
        QProcess mkroot;
        mkroot.setProcessChannelMode(QProcess::ForwardedChannels);
        mkroot.start(QStringLiteral(MKROOT), {root, QStringLiteral(BUILD_DIR)});
        QVERIFY(mkroot.waitForFinished(60000));
        QCOMPARE(mkroot.exitCode(), 0);
        if (run == 0) {
            // the user's own language choice survives a second run
            QSettings config(root + QStringLiteral("/apps/config/config.ini"),
                             QSettings::IniFormat);
            QCOMPARE(config.value(QStringLiteral("SystemSet/Lan")).toInt(), 1);
            config.setValue(QStringLiteral("SystemSet/Lan"), 3);
        }
    }
    QSettings config(root + QStringLiteral("/apps/config/config.ini"), QSettings::IniFormat);
    QCOMPARE(config.value(QStringLiteral("SystemSet/Lan")).toInt(), 3);
    for (const char *folder : {"/mnt/mmc/e_Recorder", "/mnt/mmc/e_Music", "/mnt/mtdblock3",
                               "/apps/res/pics", "/apps/bin"})
        QVERIFY2(QFileInfo(root + QLatin1String(folder)).isDir(), folder);
    for (const char *program : {"/usr/sbin/shine", "/usr/sbin/record2wav", "/apps/bin/recorder"})
        QVERIFY2(QFileInfo(root + QLatin1String(program)).isExecutable(), program);
    QFile table(root + QStringLiteral("/apps/config/scanlanguage.cfg"));
    QFile sample(QStringLiteral(DEVSIM_SOURCE_DIR "/scanlanguage.cfg"));
    QVERIFY(table.open(QIODevice::ReadOnly) && sample.open(QIODevice::ReadOnly));
    QCOMPARE(table.readAll(), sample.readAll());
    const QFileInfo player(root + QStringLiteral("/usr/bin/mplayer"));
    QVERIFY(player.isSymLink());
    QCOMPARE(player.symLinkTarget(), QStandardPaths::findExecutable(QStringLiteral("mplayer")));
}

QTEST_GUILESS_MAIN(TestEncoders)
#include "tst_encoders.moc"
