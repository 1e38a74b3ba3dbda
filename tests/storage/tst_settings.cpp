#include "storage/configwidget.h"
#include "storage/volume.h"
#include "testdeviceroot.h"

#include <QtTest>

// The recorder's settings store and the sound configuration record.
class TestSettings : public QObject
{
    Q_OBJECT
private slots:
    void storeLoads_data()
    {
        QTest::addColumn<QByteArray>("ini");      // null: no file
        QTest::addColumn<QList<int>>("expected"); // format, mode, quality, loop, volume
        QTest::newRow("no-file-defaults-written-back") << QByteArray() << QList<int>{0, 0, 1, 0, 5};
        QTest::newRow("non-numeric-format-reads-0")
            << QByteArray("[RecorderSet]\nFormat=wav\nQuality=2\n") << QList<int>{0, 0, 2, 0, 5};
        QTest::newRow("any-non-zero-format-kept")
            << QByteArray("[RecorderSet]\nFormat=-1\nPlayVolume=9\n") << QList<int>{-1, 0, 1, 0, 9};
    }
    void storeLoads()
    {
        QFETCH(QByteArray, ini);
        QFETCH(QList<int>, expected);
        TestDeviceRoot root;
        QVERIFY(ini.isNull() || root.writeFile("/apps/config/recconfig.ini", ini));
        ConfigWidget store;
        QCOMPARE((QList<int>{store.getFileFormat(), store.getModeOption(), store.getFileQuality(),
                             store.getLoopMode(), store.getPlayVolume()}),
                 expected);
        // whatever was read is what the file holds afterwards, as plain numbers; a setter writes
        // through at once, while the store is still alive
        store.setLoopMode(3);
        expected[3] = 3;
        QSettings file(root.path("/apps/config/recconfig.ini"), QSettings::IniFormat);
        QList<int> stored;
        for (const char *key : {"Format", "Mode", "Quality", "LoopMode", "PlayVolume"})
            stored << file.value(QStringLiteral("RecorderSet/") + key, -99).toInt();
        QCOMPARE(stored, expected);
    }

    void setVolumeCommandLines()
    {
        TestDeviceRoot root;
        QCOMPARE(set_volume(60), 0L);
        QCOMPARE(set_volume(0), 0L);
        QCOMPARE(root.amixerCalls(),
                 QStringList({"amixer set Speaker 60%", "amixer set Headphone 60%",
                              "amixer set Speaker 0%", "amixer set Headphone 0%"}));
    }

    void volumeRecord()
    {
        TestDeviceRoot root;
        const QString record = QStringLiteral("/apps/config/sndcfg.ini");
        vol_strcut cfg;
        cfg.speaker_volume = cfg.mic_volume = 1;
        QCOMPARE(readCfg(&cfg), -1); // no record yet: the defaults
        QCOMPARE(cfg.speaker_volume, 60);
        QCOMPARE(cfg.mic_volume, 60);
        cfg.speaker_volume = 17;
        cfg.mic_volume = -3;
        QCOMPARE(writeCfg(&cfg), 0);
        QCOMPARE(root.readFile(record).size(), 8);
        vol_strcut back;
        QCOMPARE(readCfg(&back), 0);
        QCOMPARE(back.speaker_volume, 17);
        QCOMPARE(back.mic_volume, -3);
        QVERIFY(root.writeFile(record, root.readFile(record).left(4))); // truncated
        QCOMPARE(readCfg(&back), -1);
        // a folder in its place cannot be written
        QVERIFY(QFile::remove(root.path(record)) && QDir().mkpath(root.path(record)));
        QCOMPARE(writeCfg(&cfg), -1);
    }
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
