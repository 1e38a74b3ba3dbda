#include "storage/languagemanager.h"
#include "testdeviceroot.h"

#include <QtTest>

namespace {

const QString table = QStringLiteral("/apps/config/scanlanguage.cfg");

// init() of a fresh process-wide table on content (null: no file)
int load(const TestDeviceRoot &root, const QByteArray &content)
{
    LanguageManager::quitFun();
    if (!content.isNull() && !root.writeFile(table, content))
        return -99;
    return LanguageManager::Instance()->init();
}

} // namespace

class TestLanguageManager : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { LanguageManager::quitFun(); }

    void loading_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("result");
        QTest::addColumn<int>("rows"); // as many recognition as display rows here
        const QByteArray a("zh\t1\tChinese\t1\t1\t1\t1\n"), b("en\t101\tEnglish\t1\t1\t1\t0\n");
        QTest::newRow("crlf-line-ends") << QByteArray(a + b).replace("\n", "\r\n") << 0 << 2;
        QTest::newRow("blank-line-stops-keeping-rows-above") << a + "\n" + b << -1 << 1;
        QTest::newRow("six-columns") << a + "x\t1\tX\t1\t1\t1\n" + b << -1 << 1;
        QTest::newRow("eight-columns-trailing-tab") << a + b.chopped(1) + "\t\n" << -1 << 1;
        QTest::newRow("binary-garbage")
            << QByteArray("\0\1\xff\xfe\x80\t\t\x90\n\x7f", 10) << -1 << 0;
        QTest::newRow("empty-file") << QByteArray("") << 0 << 0;
        QTest::newRow("missing-file-created-empty") << QByteArray() << 0 << 0;
    }
    void loading()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, result);
        QFETCH(int, rows);
        TestDeviceRoot root;
        QCOMPARE(load(root, content), result);
        LanguageManager *manager = LanguageManager::manager;
        QCOMPARE(manager->getLanguageSize(), rows);
        QCOMPARE(manager->getShowLanSize(), rows);
        QVERIFY(root.exists(table));
        QCOMPARE(root.readFile(table), content);
        // an unknown number gives the position after the last row; an id past the end gives 0
        QCOMPARE(manager->getIDByLanINT(5), rows);
        QCOMPARE(manager->getIntByID(rows), 0);
    }

    void uncreatableFileFails()
    {
        TestDeviceRoot root;
        QVERIFY(QDir(root.path("/apps/config")).removeRecursively());
        QCOMPARE(load(root, QByteArray()), -1);
    }

    void lookupsAndSecondInit()
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
        QCOMPARE(manager->getLanIntByID(3), 1);
    }

    void sampleTableOfTheSimulation()
    {
        TestDeviceRoot root;
        QFile sample(QStringLiteral(DEVSIM_SOURCE_DIR "/scanlanguage.cfg"));
        QVERIFY(sample.open(QIODevice::ReadOnly));
        QCOMPARE(load(root, sample.readAll()), 0);
        QList<int> shown;
        for (int id = 0; id < LanguageManager::manager->getShowLanSize(); ++id)
            shown << LanguageManager::manager->getLanIntByID(id);
        QCOMPARE(shown, (QList<int>{1, 101, 104, 103, 106, 151, 2, 105}));
    }
};

QTEST_GUILESS_MAIN(TestLanguageManager)
#include "tst_languagemanager.moc"
