#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "resfiles.h"
#include "storage/languagemanager.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

const char idleHelp[] = "Press OK to Record";

struct TsMessage
{
    QString context;
    QString source;
    QString translation;
    QString type;
};

// The messages of a translation source that are still in use (not vanished or obsolete).
QVector<TsMessage> liveMessages(const QString &tsPath)
{
    QVector<TsMessage> messages;
    QFile file(tsPath);
    if (!file.open(QIODevice::ReadOnly))
        return messages;
    QXmlStreamReader xml(&file);
    QString context;
    TsMessage message;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::EndElement) {
            if (xml.name() == QLatin1String("message") && message.type != "vanished" &&
                message.type != "obsolete")
                messages.append(message);
        } else if (token != QXmlStreamReader::StartElement) {
            continue;
        } else if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("message")) {
            message = TsMessage{context, QString(), QString(), QString()};
        } else if (xml.name() == QLatin1String("source")) {
            message.source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            message.type = xml.attributes().value(QLatin1String("type")).toString();
            message.translation = xml.readElementText(QXmlStreamReader::IncludeChildElements);
        }
    }
    return messages;
}

QByteArray sampleLanguageTable()
{
    QFile sample(QStringLiteral(DEVSIM_SOURCE_DIR "/scanlanguage.cfg"));
    return sample.open(QIODevice::ReadOnly) ? sample.readAll() : QByteArray();
}

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void everyTextTranslated_data();
    void everyTextTranslated();
    void languageChoosesHelpText_data();
    void languageChoosesHelpText();

private:
    QTemporaryDir m_updated;
};

// lupdate brings copies of the sources up to date with the program's code: a text added to
// the code appears in them as unfinished.
void TestTranslations::initTestCase()
{
    QVERIFY(m_updated.isValid());
    QStringList arguments{"-silent",  "-locations", "none",    "app",
                          "recorder", "widgets",    "storage", "-ts"};
    for (const QString &name : translationNames()) {
        const QString copy = m_updated.filePath("recorder_" + name + ".ts");
        QVERIFY(QFile::copy(RES_SOURCE_DIR "/recorder_" + name + ".ts", copy));
        QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
        arguments << copy;
    }
    QProcess lupdate;
    lupdate.setWorkingDirectory(QStringLiteral(SOURCE_DIR));
    lupdate.start(QStringLiteral(LUPDATE_BIN), arguments);
    QVERIFY(lupdate.waitForFinished(120000));
    QCOMPARE(lupdate.exitStatus(), QProcess::NormalExit);
    QVERIFY2(lupdate.exitCode() == 0, lupdate.readAllStandardError().constData());
}

void TestTranslations::everyTextTranslated_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : translationNames())
        QTest::newRow(qPrintable(name)) << name;
}

void TestTranslations::everyTextTranslated()
{
    QFETCH(QString, name);
    const QVector<TsMessage> messages =
        liveMessages(m_updated.filePath("recorder_" + name + ".ts"));

    // the scan found the program's texts at all
    const auto found = [&](const char *context, const char *source) {
        return std::any_of(messages.begin(), messages.end(), [&](const TsMessage &m) {
            return m.context == QLatin1String(context) && m.source == QLatin1String(source);
        });
    };
    QVERIFY(found("RecordMainWnd", idleHelp));
    QVERIFY(found("main", "No enough storage space, please remove some files."));

    QStringList faults;
    for (const TsMessage &m : messages) {
        const QString where = m.context + ": \"" + m.source + "\"";
        if (m.type == QLatin1String("unfinished") || m.translation.isEmpty())
            faults << "untranslated " + where;
        // pieces glued into one message keep their blanks: " [", "] ", "Mid "
        else if (m.source.startsWith(' ') != m.translation.startsWith(' ') ||
                 m.source.endsWith(' ') != m.translation.endsWith(' '))
            faults << "blanks lost in " + where;
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char('\n'))));
}

void TestTranslations::languageChoosesHelpText_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("name");
    const QStringList names = translationNames();
    for (int position = 0; position < names.size(); ++position) {
        QTest::addRow("position-%d-%s", position, qPrintable(names.at(position)))
            << position << names.at(position);
    }
    QTest::newRow("outside-the-table-is-english") << int(names.size()) << QString();
}

// The idle screen under the language of "SystemSet/Lan", chosen as start-up chooses it.
void TestTranslations::languageChoosesHelpText()
{
    QFETCH(int, position);
    QFETCH(QString, name);
    TestDeviceRoot root;
    QVERIFY(installResources(root));
    QVERIFY(root.writeFile("/apps/config/scanlanguage.cfg", sampleLanguageTable()));
    QVERIFY(root.writeFile("/apps/config/config.ini",
                           "[SystemSet]\nLan=" + QByteArray::number(position) + "\n"));
    LanguageManager::quitFun();
    QCOMPARE(LanguageManager::Instance()->init(), 0);
    const int number = LanguageManager::Instance()->getLanIntByID(readSystemLanguage());

    QTranslator translator;
    applyTranslation(*qApp, translator, number);
    QString shown;
    {
        RecordMainWnd window(nullptr, 0);
        shown = window.helpText();
    }
    QCoreApplication::removeTranslator(&translator);
    LanguageManager::quitFun();

    QString expected = QLatin1String(idleHelp);
    if (!name.isEmpty()) {
        QTranslator reference;
        QVERIFY(reference.load(builtTranslation(name)));
        expected = reference.translate("RecordMainWnd", idleHelp);
        QVERIFY(!expected.isEmpty());
        if (name != QLatin1String("en_US"))
            QVERIFY2(expected != QLatin1String(idleHelp), "left in English");
    }
    QCOMPARE(shown, expected);
}

QTEST_MAIN(TestTranslations)
#include "tst_translations.moc"
