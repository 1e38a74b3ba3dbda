// The resources: every text of the program translated and the language chosen at start-up (the
// translated screens fitting the display: tst_screensfit; what cmake --install lays out is checked
// with mkroot, which uses it).
#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "storage/languagemanager.h"
#include "testdeviceroot.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QXmlStreamReader>

namespace {

const char idleHelp[] = "Press OK to Record";

// The translations of the start-up table, in its order: list positions 0..7 of the sample
// language table choose them in this order too.
const QStringList names{"zh_CN", "en_US", "Ger", "Fre", "Ita", "Rus", "zh_TW", "Spa"};

QString builtTranslation(const QString &name)
{
    return QM_DIR "/recorder_" + name + ".qm";
}

// Puts the built translations and the menu's background where the device keeps them.
bool installResources(const TestDeviceRoot &root)
{
    bool ok = QFile::copy(RES_SOURCE_DIR "/pics/settings2.png",
                          root.path("/apps/res/pics/settings2.png"));
    for (const QString &name : names)
        ok &= QFile::copy(builtTranslation(name), root.path("/apps/res/recorder_" + name + ".qm"));
    return ok;
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    // lupdate brings a copy of the source up to date with the program's code: a text added to the
    // code appears in it as unfinished, one no longer used is dropped.
    void everyTextTranslated_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString &name : names)
            QTest::newRow(qPrintable(name)) << name;
    }
    void everyTextTranslated()
    {
        QFETCH(QString, name);
        QTemporaryDir dir;
        const QString copy = dir.filePath("recorder_" + name + ".ts");
        QVERIFY(QFile::copy(RES_SOURCE_DIR "/recorder_" + name + ".ts", copy));
        QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
        QCOMPARE(QProcess::execute(LUPDATE_BIN,
                                   {"-silent", "-no-obsolete", "-locations", "none",
                                    SOURCE_DIR "/app", SOURCE_DIR "/recorder",
                                    SOURCE_DIR "/widgets", SOURCE_DIR "/storage", "-ts", copy}),
                 0);
        QFile ts(copy);
        QVERIFY(ts.open(QIODevice::ReadOnly));
        QString source;
        QStringList sources, faults;
        for (QXmlStreamReader xml(&ts); !xml.atEnd();) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (xml.name() == QLatin1String("source"))
                sources << (source = xml.readElementText());
            if (xml.name() != QLatin1String("translation"))
                continue;
            const bool unfinished = xml.attributes().value("type") == QLatin1String("unfinished");
            const QString text = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            // pieces glued into one message keep their blanks: " [", "] ", "Mid "
            if (unfinished || text.isEmpty() || source.startsWith(' ') != text.startsWith(' ') ||
                source.endsWith(' ') != text.endsWith(' '))
                faults << "\"" + source + "\" -> \"" + text + (unfinished ? "\" unfinished" : "\"");
        }
        // the scan found the program's texts at all
        QVERIFY(sources.contains(idleHelp));
        QVERIFY(sources.contains("No enough storage space, please remove some files."));
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
    }

    void languageChoosesHelpText_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<QString>("name");
        for (int i = 0; i < names.size(); ++i)
            QTest::addRow("position-%d-%s", i, qPrintable(names.at(i))) << i << names.at(i);
        QTest::newRow("outside-the-table-is-english") << int(names.size()) << QString();
        QTest::newRow("no-language-key-is-the-first") << -1 << names.first();
    }
    // The idle screen under the language of "SystemSet/Lan", chosen as start-up chooses it.
    void languageChoosesHelpText()
    {
        QFETCH(int, position);
        QFETCH(QString, name);
        TestDeviceRoot root;
        QVERIFY(installResources(root));
        QVERIFY(root.installLanguageTable());
        QVERIFY(position < 0 ||
                root.writeFile("/apps/config/config.ini",
                               "[SystemSet]\nLan=" + QByteArray::number(position) + "\n"));
        LanguageManager::quitFun();
        QCOMPARE(LanguageManager::Instance()->init(), 0);
        QTranslator translator;
        applyTranslation(*qApp, translator,
                         LanguageManager::Instance()->getLanIntByID(readSystemLanguage()));
        const QString shown = RecordMainWnd(nullptr, 0).helpText();
        QCoreApplication::removeTranslator(&translator);
        LanguageManager::quitFun();

        QString expected = idleHelp;
        QTranslator reference;
        if (!name.isEmpty()) {
            QVERIFY(reference.load(builtTranslation(name)));
            expected = reference.translate("RecordMainWnd", idleHelp);
            QVERIFY2(name == "en_US" || (!expected.isEmpty() && expected != idleHelp),
                     "left in English");
        }
        QCOMPARE(shown, expected);
    }
};

QTEST_MAIN(TestResources)
#include "tst_res.moc"
