// The reader settings applied to the real engines; what reaches them is read from the wrappers'
// own log lines.

#include "scanread/configreader.h"
#include "scanread/ocrpen.h"
#include "scanread/ttsplayer.h"
#include "storage/languagemanager.h"
#include "storage/volume.h"
#include "testdeviceroot.h"

#include <QtTest>

namespace {

QStringList messages;

void keep(QtMsgType, const QMessageLogContext &, const QString &message)
{
    messages.append(message);
}

// the values logged after prefix, in order
QList<int> logged(const QString &prefix)
{
    QList<int> values;
    for (const QString &message : qAsConst(messages))
        if (message.startsWith(prefix))
            values.append(message.mid(prefix.size()).trimmed().toInt());
    return values;
}

} // namespace

class TestConfigReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_root.installEngines());
        QVERIFY(m_root.installLanguageTable());
        QCOMPARE(languageInit(), 0);
    }

    void cleanupTestCase()
    {
        OCRPen::quitFun();
        TTSPlayer::quitFun();
    }

    // a reader left by a failed row would keep its settings file cached for the next one
    void cleanup()
    {
        if (ConfigReader::reader)
            ConfigReader::quitFun();
        ConfigReader::reader = nullptr;
    }

    void appliesSettingsInOrder_data()
    {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<int>("language");
        QTest::addColumn<int>("scanDirection");
        QTest::addColumn<int>("ocrEngine");
        QTest::addColumn<int>("speechLanguage");
        QTest::addColumn<QList<int>>("speeds");
        QTest::addColumn<QList<int>>("volumes");

        // the volume applied last is the speaker volume of the sound record
        const int speaker = int(getSpeakerVolume());
        // language 0 is the table's first shown row, simplified Chinese (1)
        QTest::newRow("empty-file")
            << QByteArray() << 0 << 0 << 1 << 1 << QList<int>{50, 1} << QList<int>{60, speaker};
        QTest::newRow("read-speed-step-passes-as-it-is")
            << QByteArray("[InfoListen]\nReadSpeed=7\n") << 0 << 0 << 1 << 1 << QList<int>{7, 1}
            << QList<int>{60, speaker};
        QTest::newRow("russian-loud-fast")
            << QByteArray("[InfoListen]\nLan=5\nScanDirect=1\nVolum=5\nReadSpeed=2\n"
                          "[SystemSet]\nSpeed=65\n")
            << 5 << 1 << 3 << 151 << QList<int>{65, 65} << QList<int>{100, speaker};
        QTest::newRow("english-slow") << QByteArray("[InfoListen]\nLan=1\nReadSpeed=0\n") << 1 << 0
                                      << 2 << 101 << QList<int>{30, 1} << QList<int>{60, speaker};
        QTest::newRow("not-numbers-give-defaults")
            << QByteArray("[InfoListen]\nLan=abc\nScanDirect=x\nVolum=loud\nReadSpeed=fast\n"
                          "[SystemSet]\nSpeed=quick\n")
            << 0 << 0 << 1 << 1 << QList<int>{50, 1} << QList<int>{60, speaker};
    }

    void appliesSettingsInOrder()
    {
        QFETCH(QByteArray, ini);
        QFETCH(int, language);
        QFETCH(int, ocrEngine);
        QFETCH(int, speechLanguage);
        QVERIFY(m_root.writeFile(QStringLiteral("/apps/config/config.ini"), ini));

        messages.clear();
        const QtMessageHandler previous = qInstallMessageHandler(keep);
        ConfigReader::reader = new ConfigReader;
        qInstallMessageHandler(previous);

        // the engines are made on first use, and the speech engine really started
        QVERIFY(OCRPen::ocr && TTSPlayer::player);
        QCOMPARE(ConfigReader::reader->getLanInfo(), language);
        QTEST(ConfigReader::reader->getScanDirectInfo(), "scanDirection");
        QCOMPARE(logged(QStringLiteral("aLanguages=")), QList<int>{ocrEngine});
        QCOMPARE(logged(QStringLiteral("TTSPlayer::setLan")), QList<int>{speechLanguage});
        QTEST(logged(QStringLiteral("in TTSPlayer::setSpeed")), "speeds");
        QTEST(logged(QStringLiteral("##########in TTSPlayer::setVolume---")), "volumes");
        QVERIFY(messages.contains(QStringLiteral("SetSpeed success")));

        // the language is written back even when it did not change
        ConfigReader::quitFun();
        ConfigReader::reader = nullptr;
        const QSettings written(m_root.path(QStringLiteral("/apps/config/config.ini")),
                                QSettings::IniFormat);
        QCOMPARE(written.value(QStringLiteral("InfoListen/Lan")).toInt(), language);
    }

    // simplified Chinese and Russian have engines of their own (the rows above); every other
    // language, traditional Chinese too, and none at all read with the Latin one
    void otherLanguagesReadWithLatinEngine()
    {
        for (int lanInt : {0, 2, 104})
            QCOMPARE(ConfigReader::getEngineID(lanInt), 2);
    }

private:
    TestDeviceRoot m_root;
};

QTEST_MAIN(TestConfigReader)
#include "tst_configreader.moc"
