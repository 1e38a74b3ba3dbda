#include "storage/configwidget.h"
#include "storage/languagemanager.h"
#include "storage/volume.h"
#include "testdeviceroot.h"

#include <QtTest>

namespace {

const QString table = QStringLiteral("/apps/config/scanlanguage.cfg");

// init() of a fresh process-wide language table on content (null: the file as it is)
int load(const TestDeviceRoot &root, const QByteArray &content)
{
    LanguageManager::quitFun();
    if (!content.isNull() && !root.writeFile(table, content))
        return -99;
    return LanguageManager::Instance()->init();
}

} // namespace

// The device's configuration files: the recorder's settings store, the sound configuration
// record and the language table.
class TestConfig : public QObject
{
    Q_OBJECT
private slots:
    void settingsStore_data()
    {
        QTest::addColumn<QByteArray>("ini");      // null: no file
        QTest::addColumn<QList<int>>("expected"); // format, mode, quality, loop, volume
        QTest::addColumn<bool>("rewritten");
        // Qt writes the keys in alphabetical order: a file in another order shows a rewrite
        const QByteArray complete(
            "[RecorderSet]\nPlayVolume=3\nQuality=2\nMode=0\nLoopMode=1\nFormat=1\n");
        const QList<int> completeValues{1, 0, 2, 1, 3};
        QTest::newRow("no-file-defaults-written")
            << QByteArray() << QList<int>{0, 0, 1, 0, 5} << true;
        QTest::newRow("non-numeric-format-reads-0")
            << QByteArray("[RecorderSet]\nFormat=wav\nQuality=2\n") << QList<int>{0, 0, 2, 0, 5}
            << true;
        QTest::newRow("any-non-zero-format-kept")
            << QByteArray("[RecorderSet]\nFormat=-1\nPlayVolume=9\n") << QList<int>{-1, 0, 1, 0, 9}
            << true;
        QTest::newRow("complete-left-as-written") << complete << completeValues << false;
        QTest::newRow("key-missing-rewritten")
            << QByteArray(complete).replace("\nMode=0\n", "\n") << completeValues << true;
        QTest::newRow("number-spelt-otherwise-rewritten")
            << QByteArray(complete).replace("Quality=2", "Quality=02") << completeValues << true;
    }
    // whatever was read is what the file holds afterwards, as plain numbers
    void settingsStore()
    {
        QFETCH(QByteArray, ini);
        QFETCH(QList<int>, expected);
        TestDeviceRoot root;
        const QString path = QStringLiteral("/apps/config/recconfig.ini");
        QVERIFY(ini.isNull() || root.writeFile(path, ini));
        {
            const ConfigWidget store;
            QCOMPARE(
                (QList<int>{store.getFileFormat(), store.getModeOption(), store.getFileQuality(),
                            store.getLoopMode(), store.getPlayVolume()}),
                expected);
        }
        QTEST(root.readFile(path) != ini, "rewritten");
        QSettings file(root.path(path), QSettings::IniFormat);
        QStringList stored, numbers;
        for (const char *key : {"Format", "Mode", "Quality", "LoopMode", "PlayVolume"}) {
            stored << file.value(QStringLiteral("RecorderSet/") + key).toString();
            numbers << QString::number(expected.at(numbers.size()));
        }
        QCOMPARE(stored, numbers);
    }

    void volume()
    {
        TestDeviceRoot root;
        QCOMPARE(set_volume(60), 0L);
        QCOMPARE(root.amixerCalls(),
                 QStringList({"amixer set Speaker 60%", "amixer set Headphone 60%"}));
        const QString record = QStringLiteral("/apps/config/sndcfg.ini");
        vol_strcut cfg{1, 1};
        QCOMPARE(readCfg(&cfg), -1); // no record yet: the defaults
        QCOMPARE(QPoint(cfg.speaker_volume, cfg.mic_volume), QPoint(60, 60));
        cfg = {17, -3};
        QCOMPARE(writeCfg(&cfg), 0);
        QCOMPARE(root.readFile(record).size(), 8);
        vol_strcut back{0, 0};
        QCOMPARE(readCfg(&back), 0);
        QCOMPARE(QPoint(back.speaker_volume, back.mic_volume), QPoint(17, -3));
        QVERIFY(root.writeFile(record, root.readFile(record).left(4))); // truncated
        QCOMPARE(readCfg(&back), -1);
        // a folder in its place cannot be written
        QVERIFY(QFile::remove(root.path(record)) && QDir().mkpath(root.path(record)));
        QCOMPARE(writeCfg(&cfg), -1);
    }

    void languageTable_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("rows"); // as many recognition as display rows here
        const QByteArray a("zh\t1\tChinese\t1\t1\t1\t1\n"), b("en\t101\tEnglish\t1\t1\t1\t0\n");
        QTest::newRow("crlf-line-ends") << QByteArray(a + b).replace("\n", "\r\n") << 0 << 2;
        QTest::newRow("blank-line-stops-keeping-rows-above") << a + "\n" + b << -1 << 1;
        QTest::newRow("six-columns") << a + "x\t1\tX\t1\t1\t1\n" + b << -1 << 1;
        QTest::newRow("eight-columns-trailing-tab") << a + b.chopped(1) + "\t\n" << -1 << 1;
        QTest::newRow("empty-file") << QByteArray("") << 0 << 0;
        QTest::newRow("missing-file-created-empty") << QByteArray() << 0 << 0;
    }
    void languageTable()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, result);
        QFETCH(int, rows);
        TestDeviceRoot root;
        QCOMPARE(load(root, content), result);
        QCOMPARE(LanguageManager::manager->getLanguageSize(), rows);
        QCOMPARE(LanguageManager::manager->getShowLanSize(), rows);
        QVERIFY(root.exists(table));
        QCOMPARE(root.readFile(table), content);
        // an unknown number gives the position after the last row; an id past the end gives 0
        QCOMPARE(LanguageManager::manager->getIDByLanINT(5), rows);
        QCOMPARE(LanguageManager::manager->getIntByID(rows), 0);
    }

    void languageLookupsAndReloads()
    {
        TestDeviceRoot root;
        // "x" is display-only; "en" is the third row but the second recognition row
        QCOMPARE(load(root, "zh\t1\tChinese\t1\t1\t1\t0\nx\t5\tName\t0\t0\t1\t0\n"
                            "en\t101\tEnglish\t1\t0\t0\t1\nde\t05\tGerman\t1\t1\t1\t0\n"),
                 0);
        LanguageManager *manager = LanguageManager::manager;
        QCOMPARE(manager->getShowLanByID(1), QStringLiteral("Name"));
        QCOMPARE(manager->getIntByID(1), 101);
        QCOMPARE(manager->getIDByLanINT(5), 1); // the first match, not "05"
        languageInfo info;
        QVERIFY(manager->getInfoByID(1, info));
        QCOMPARE(info.fileIndex, 1);
        QCOMPARE(manager->init(), 0);
        QCOMPARE(manager->getLanguageSize(), 3);
        QCOMPARE(manager->getShowLanSize(), 6);
        // without its folder the table can be neither read nor made (each language's position
        // in the sample table: tst_res)
        QVERIFY(QDir(root.path("/apps/config")).removeRecursively());
        QCOMPARE(load(root, QByteArray()), -1);
    }
};

QTEST_GUILESS_MAIN(TestConfig)
#include "tst_config.moc"
