#include "storage/volume.h"
#include "testdeviceroot.h"

#include <QDir>
#include <QTest>

class TestVolume : public QObject
{
    Q_OBJECT
private slots:
    void setVolumeCommandLines_data();
    void setVolumeCommandLines();
    void recordRoundTrip();
    void readFailures_data();
    void readFailures();
    void writeFailsWhenFileCannotBeMade();
};

void TestVolume::setVolumeCommandLines_data()
{
    QTest::addColumn<long>("percent");
    QTest::newRow("mute") << 0L;
    QTest::newRow("step-3") << 60L;
    QTest::newRow("full") << 100L;
    QTest::newRow("beyond-range-passed-on") << 140L;
}

void TestVolume::setVolumeCommandLines()
{
    QFETCH(long, percent);
    TestDeviceRoot root;
    QCOMPARE(set_volume(percent), 0L);
    QCOMPARE(root.amixerCalls(),
             QStringList({QStringLiteral("amixer set Speaker %1%").arg(percent),
                          QStringLiteral("amixer set Headphone %1%").arg(percent)}));
}

void TestVolume::recordRoundTrip()
{
    TestDeviceRoot root;
    vol_strcut out;
    out.speaker_volume = 17;
    out.mic_volume = -3;
    QCOMPARE(writeCfg(&out), 0);
    QCOMPARE(root.readFile("/apps/config/sndcfg.ini").size(), 8);
    vol_strcut in;
    in.speaker_volume = 0;
    in.mic_volume = 0;
    QCOMPARE(readCfg(&in), 0);
    QCOMPARE(in.speaker_volume, 17);
    QCOMPARE(in.mic_volume, -3);
}

void TestVolume::readFailures_data()
{
    QTest::addColumn<bool>("present");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("speaker");
    QTest::newRow("missing-file-gives-defaults") << false << QByteArray() << 60;
    QTest::newRow("empty-file") << true << QByteArray() << 60;
    QTest::newRow("truncated-after-speaker") << true << QByteArray("\x05\x00\x00\x00", 4) << 5;
}

void TestVolume::readFailures()
{
    QFETCH(bool, present);
    QFETCH(QByteArray, bytes);
    QFETCH(int, speaker);
    TestDeviceRoot root;
    if (present)
        QVERIFY(root.writeFile("/apps/config/sndcfg.ini", bytes));
    vol_strcut cfg;
    cfg.speaker_volume = cfg.mic_volume = 1;
    QCOMPARE(readCfg(&cfg), -1);
    QCOMPARE(cfg.speaker_volume, speaker);
    QCOMPARE(cfg.mic_volume, 60);
}

void TestVolume::writeFailsWhenFileCannotBeMade()
{
    TestDeviceRoot root;
    // a folder where the record should be cannot be opened for writing
    QVERIFY(QDir().mkpath(root.path("/apps/config/sndcfg.ini")));
    vol_strcut cfg;
    QCOMPARE(writeCfg(&cfg), -1);
}

QTEST_GUILESS_MAIN(TestVolume)
#include "tst_volume.moc"
