#include "storage/languagemanager.h"
#include "testdeviceroot.h"

#include <QDir>
#include <QFile>
#include <QTest>

namespace {

QByteArray row(const char *name, const char *lanInt, const char *chn, int file, int tts, int show,
               int def)
{
    return QByteArray(name) + '\t' + lanInt + '\t' + chn + '\t' + QByteArray::number(file) + '\t' +
           QByteArray::number(tts) + '\t' + QByteArray::number(show) + '\t' +
           QByteArray::number(def) + '\n';
}

// A fresh table for every test: the process-wide one is torn down first.
LanguageManager *freshTable()
{
    LanguageManager::quitFun();
    return LanguageManager::Instance();
}

} // namespace

class TestLanguageManager : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { LanguageManager::quitFun(); }
    void load_data();
    void load();
    void missingFileIsCreatedEmpty();
    void uncreatableFileFails();
    void emptyTableLookups();
    void lookups();
    void firstMatchWins();
    void secondInitDoublesDisplayRows();
    void sampleTableOfTheSimulation();
};

void TestLanguageManager::load_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("fileRows");
    QTest::addColumn<int>("showRows");

    const QByteArray a = row("zh", "1", "Chinese", 1, 1, 1, 1);
    const QByteArray b = row("en", "101", "English", 1, 1, 1, 0);
    const QByteArray c = row("de", "104", "German", 1, 0, 1, 0);
    QTest::newRow("three-rows") << a + b + c << 0 << 3 << 3;
    QTest::newRow("last-line-without-break") << a + b + c.chopped(1) << 0 << 3 << 3;
    QTest::newRow("crlf-line-ends") << QByteArray(a + b).replace("\n", "\r\n") << 0 << 2 << 2;
    QTest::newRow("blank-line-stops-keeping-rows-above") << a + "\n" + b << -1 << 1 << 1;
    QTest::newRow("six-columns") << a + "x\t1\tX\t1\t1\t1\n" + b << -1 << 1 << 1;
    QTest::newRow("eight-columns-trailing-tab") << a + b.chopped(1) + "\t\n" << -1 << 1 << 1;
    QTest::newRow("empty-columns-count") << QByteArray("\t\t\t1\t0\t1\t0\n") << 0 << 1 << 1;
    QTest::newRow("neither-flag-dropped") << row("xx", "7", "X", 0, 1, 0, 0) + a << 0 << 1 << 1;
    QTest::newRow("non-numeric-flags-count-as-0")
        << row("xx", "7", "X", 0, 0, 0, 0).replace("\t0\t0\t0\t0", "\tyes\t1\tno\t") << 0 << 0 << 0;
    QTest::newRow("binary-garbage")
        << QByteArray("\x00\x01\xff\xfe\x80\t\t\x90\n\x7f", 10) << -1 << 0 << 0;
}

void TestLanguageManager::load()
{
    QFETCH(QByteArray, content);
    QFETCH(int, result);
    QFETCH(int, fileRows);
    QFETCH(int, showRows);
    TestDeviceRoot root;
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", content));
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), result);
    QCOMPARE(table->getLanguageSize(), fileRows);
    QCOMPARE(table->getShowLanSize(), showRows);
}

void TestLanguageManager::missingFileIsCreatedEmpty()
{
    TestDeviceRoot root;
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), 0);
    QVERIFY(root.exists("/apps/config/scanlanguage.cfg"));
    QCOMPARE(root.readFile("/apps/config/scanlanguage.cfg"), QByteArray());
    QCOMPARE(languageInit(), 0);
}

void TestLanguageManager::uncreatableFileFails()
{
    TestDeviceRoot root;
    QVERIFY(QDir(root.path("/apps/config")).removeRecursively());
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), -1);
    QCOMPARE(table->getShowLanSize(), 0);
}

void TestLanguageManager::emptyTableLookups()
{
    TestDeviceRoot root;
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", QByteArray()));
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), 0);
    QCOMPARE(table->getIDByLanINT(5), 0);
    QCOMPARE(table->getIntByID(0), 0);
    QCOMPARE(table->getLanIntByID(0), 0);
    QCOMPARE(table->getDefaultShowLan(), 0);
    QCOMPARE(table->getShowLanByID(0), QString());
    QCOMPARE(table->getChnByID(0), QString());
    QCOMPARE(table->getTTSFlagByID(0), 0);
}

void TestLanguageManager::lookups()
{
    TestDeviceRoot root;
    // row 2 is display-only: it takes the fileInfos count at its time as fileIndex
    const QByteArray content =
        row("zh", "1", "Chinese", 1, 1, 1, 0) + row("en", "101", "English", 1, 0, 0, 1) +
        row("x", "12", "Name", 0, 0, 1, 0) + row("de", "104", "German", 1, 1, 1, 1);
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", content));
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), 0);
    QCOMPARE(table->getLanguageSize(), 3);
    QCOMPARE(table->getShowLanSize(), 3);

    QCOMPARE(table->getLanIntByID(1), 12);
    QCOMPARE(table->getLanIntByID(2), 104);
    QCOMPARE(table->getLanIntByID(3), 0);
    QCOMPARE(table->getLanIntByID(-1), 0);
    QCOMPARE(table->getIntByID(1), 101);
    QCOMPARE(table->getIntByID(3), 0);
    QCOMPARE(table->getShowLanByID(1), QStringLiteral("Name"));
    QCOMPARE(table->getChnByID(1), QStringLiteral("English"));
    QCOMPARE(table->getTTSFlagByID(0), 1);
    QCOMPARE(table->getTTSFlagByID(1), 0);
    QCOMPARE(table->getIDByLanINT(104), 2);
    QCOMPARE(table->getIDByLanINT(999), 3);
    QCOMPARE(table->getDefaultShowLan(), 101);

    languageInfo info;
    info.lanName = QStringLiteral("untouched");
    QVERIFY(!table->getInfoByID(3, info));
    QCOMPARE(info.lanName, QStringLiteral("untouched"));
    QVERIFY(table->getInfoByID(2, info));
    QCOMPARE(info.lanName, QStringLiteral("de"));
    QCOMPARE(info.chnName, QStringLiteral("German"));
    QCOMPARE(info.fileIndex, 2);
    QCOMPARE(info.defaultFlag, 1);
}

void TestLanguageManager::firstMatchWins()
{
    TestDeviceRoot root;
    const QByteArray content = row("a", "7", "A", 0, 0, 1, 0) + row("b", "5", "B", 0, 0, 1, 0) +
                               row("c", "05", "C", 0, 0, 1, 0);
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", content));
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), 0);
    QCOMPARE(table->getIDByLanINT(5), 1);
}

void TestLanguageManager::secondInitDoublesDisplayRows()
{
    TestDeviceRoot root;
    const QByteArray content =
        row("zh", "1", "Chinese", 1, 1, 1, 1) + row("en", "101", "English", 1, 1, 1, 0);
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", content));
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), 0);
    QCOMPARE(table->init(), 0);
    QCOMPARE(table->getLanguageSize(), 2);
    QCOMPARE(table->getShowLanSize(), 4);
    QCOMPARE(table->getLanIntByID(3), 101);
}

void TestLanguageManager::sampleTableOfTheSimulation()
{
    TestDeviceRoot root;
    QFile sample(QStringLiteral(DEVSIM_SOURCE_DIR "/scanlanguage.cfg"));
    QVERIFY(sample.open(QIODevice::ReadOnly));
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", sample.readAll()));
    LanguageManager *table = freshTable();
    QCOMPARE(table->init(), 0);
    // the eight languages of the translation table, by display position
    const QList<int> numbers{1, 101, 104, 103, 106, 151, 2, 105};
    QCOMPARE(table->getShowLanSize(), numbers.size());
    for (int id = 0; id < numbers.size(); ++id)
        QCOMPARE(table->getLanIntByID(id), numbers.at(id));
    QCOMPARE(table->getDefaultShowLan(), 1);
}

QTEST_GUILESS_MAIN(TestLanguageManager)
#include "tst_languagemanager.moc"
