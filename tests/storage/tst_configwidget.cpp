#include "storage/configwidget.h"
#include "testdeviceroot.h"

#include <QSettings>
#include <QTest>

class TestConfigWidget : public QObject
{
    Q_OBJECT
private slots:
    void defaultsAreWrittenBack();
    void storedValuesAreLoaded_data();
    void storedValuesAreLoaded();
    void setterReachesTheFileAtOnce_data();
    void setterReachesTheFileAtOnce();
    void sharedInstance();
};

namespace {
const char *const keys[] = {"Format", "Mode", "Quality", "LoopMode", "PlayVolume"};

QVariant fileValue(const TestDeviceRoot &root, const char *key)
{
    QSettings file(root.path("/apps/config/recconfig.ini"), QSettings::IniFormat);
    return file.value(QStringLiteral("RecorderSet/") + QLatin1String(key));
}
} // namespace

void TestConfigWidget::defaultsAreWrittenBack()
{
    TestDeviceRoot root;
    QVERIFY(!root.exists("/apps/config/recconfig.ini"));
    ConfigWidget store;
    QCOMPARE(store.getFileFormat(), 0);
    QCOMPARE(store.getModeOption(), 0);
    QCOMPARE(store.getFileQuality(), 1);
    QCOMPARE(store.getLoopMode(), 0);
    QCOMPARE(store.getPlayVolume(), 5);
    const int defaults[] = {0, 0, 1, 0, 5};
    for (int i = 0; i < 5; ++i) {
        const QVariant value = fileValue(root, keys[i]);
        QVERIFY2(value.isValid(), keys[i]);
        QCOMPARE(value.toInt(), defaults[i]);
    }
}

void TestConfigWidget::storedValuesAreLoaded_data()
{
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<QList<int>>("expected"); // format, mode, quality, loop, volume
    QTest::newRow("all-set") << QByteArray("[RecorderSet]\nFormat=1\nMode=2\nQuality=2\n"
                                           "LoopMode=3\nPlayVolume=0\n")
                             << QList<int>{1, 2, 2, 3, 0};
    QTest::newRow("non-numeric-format-reads-as-mp3")
        << QByteArray("[RecorderSet]\nFormat=wav\nQuality=0\n") << QList<int>{0, 0, 0, 0, 5};
    QTest::newRow("any-non-zero-format-kept")
        << QByteArray("[RecorderSet]\nFormat=-1\n") << QList<int>{-1, 0, 1, 0, 5};
    QTest::newRow("out-of-range-kept-as-given")
        << QByteArray("[RecorderSet]\nQuality=7\nPlayVolume=9\n") << QList<int>{0, 0, 7, 0, 9};
    QTest::newRow("other-group-ignored")
        << QByteArray("[Other]\nFormat=1\n") << QList<int>{0, 0, 1, 0, 5};
    QTest::newRow("binary-garbage")
        << QByteArray("\xff\xfe\x00[\x01\x02=\x03\n\x80\x81", 11) << QList<int>{0, 0, 1, 0, 5};
}

void TestConfigWidget::storedValuesAreLoaded()
{
    QFETCH(QByteArray, ini);
    QFETCH(QList<int>, expected);
    TestDeviceRoot root;
    QVERIFY(root.writeFile("/apps/config/recconfig.ini", ini));
    ConfigWidget store;
    const QList<int> got{store.getFileFormat(), store.getModeOption(), store.getFileQuality(),
                         store.getLoopMode(), store.getPlayVolume()};
    QCOMPARE(got, expected);
    // whatever was read is what the file holds afterwards, as plain numbers
    for (int i = 0; i < 5; ++i)
        QCOMPARE(fileValue(root, keys[i]).toString(), QString::number(expected.at(i)));
}

void TestConfigWidget::setterReachesTheFileAtOnce_data()
{
    QTest::addColumn<int>("key");
    for (int i = 0; i < 5; ++i)
        QTest::newRow(keys[i]) << i;
}

void TestConfigWidget::setterReachesTheFileAtOnce()
{
    QFETCH(int, key);
    TestDeviceRoot root;
    ConfigWidget store;
    using Setter = void (ConfigWidget::*)(int);
    using Getter = int (ConfigWidget::*)() const;
    const Setter setters[] = {&ConfigWidget::setFileFormat, &ConfigWidget::setModeOption,
                              &ConfigWidget::setFileQuality, &ConfigWidget::setLoopMode,
                              &ConfigWidget::setPlayVolume};
    const Getter getters[] = {&ConfigWidget::getFileFormat, &ConfigWidget::getModeOption,
                              &ConfigWidget::getFileQuality, &ConfigWidget::getLoopMode,
                              &ConfigWidget::getPlayVolume};
    (store.*setters[key])(4);
    QCOMPARE((store.*getters[key])(), 4);
    // read by another reader while the store is still alive: no deferred write-back
    QCOMPARE(fileValue(root, keys[key]).toInt(), 4);
    ConfigWidget second;
    QCOMPARE((second.*getters[key])(), 4);
}

void TestConfigWidget::sharedInstance()
{
    TestDeviceRoot root;
    QVERIFY(!ConfigWidget::reader);
    ConfigWidget *first = ConfigWidget::instance();
    QCOMPARE(ConfigWidget::reader, first);
    QCOMPARE(ConfigWidget::instance(), first);
    delete ConfigWidget::reader;
    ConfigWidget::reader = nullptr;
}

QTEST_GUILESS_MAIN(TestConfigWidget)
#include "tst_configwidget.moc"
