// The resources: every text of the program translated, the language chosen at start-up, the help
// text ending before the time in every language, and the same screen drawn to the same pixels
// here (offscreen, as every picture test draws it) and by the program under Xvfb, in the stand-ins
// for the pen's fonts. What cmake --install lays out is checked with mkroot, which uses it.
#include "../recorder/xserver.h"
#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "recorderprocess.h"
#include "screenpixels.h"
#include "storage/languagemanager.h"
#include "testdeviceroot.h"
#include "widgets/itemmenu.h"
#include "widgets/penfonts.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// The translations of the start-up table, in its order: list positions 0..7 of the sample
// language table choose them in this order too.
const QStringList languages{"zh_CN", "en_US", "Ger", "Fre", "Ita", "Rus", "zh_TW", "Spa"};
const char idleHelp[] = "Press OK to Record";

// The program under Xvfb draws its idle screen and its options menu as it opens (the bold row,
// the slider and the arrows too) with the stand-in family, to the very pixels drawn here.
void sameUnderXvfb(const TestDeviceRoot &root, RecordMainWnd &window, const QImage &idle)
{
    XServer x;
    QVERIFY2(x.start(), "no Xvfb could be started (scripts/setup installs it)");
    RecorderProcess recorder(root.root());
    recorder.showOn(x.display());
    QVERIFY(recorder.start());
    // "nits" stands for the family loaded from the device root here; a program drawing with
    // another font shows other pixels
    QCOMPARE(QFontInfo(QFont("nits")).family(), loadPenFonts());
    // the last picture taken under X stays for a look when they never agree
    const auto sameThere = [&x](const QString &name, const QImage &here) {
        QImage screen = x.grab().copy(0, 0, 256, 64).convertToFormat(QImage::Format_RGB32);
        screen.save(screensDir() + "/same_xcb_" + name + ".png");
        return screen == here.convertToFormat(QImage::Format_RGB32);
    };
    QTRY_VERIFY_WITH_TIMEOUT(sameThere("idle", idle), 60000);
    // pressed only once the idle screen is there: sooner, the key can be lost
    QVERIFY(x.pressKey(recorder.pid(), "F12"));
    window.newRecordOptionWnd();
    const QImage menu = shoot(*window.getOptionMenu(), "same_offscreen_menu");
    QTRY_VERIFY_WITH_TIMEOUT(sameThere("menu", menu), 60000);
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    // lupdate brings copies of the sources up to date with the program's code: a text added to
    // the code appears in them as unfinished, one no longer used is dropped.
    void everyTextTranslated()
    {
        QTemporaryDir dir;
        QStringList copies;
        for (const QString &name : languages) {
            copies << dir.filePath("recorder_" + name + ".ts");
            QVERIFY(QFile::copy(RES_SOURCE_DIR "/recorder_" + name + ".ts", copies.last()));
            QVERIFY(QFile::setPermissions(copies.last(), QFile::ReadOwner | QFile::WriteOwner));
        }
        const QStringList scan{"-silent",
                               "-no-obsolete",
                               "-locations",
                               "none",
                               SOURCE_DIR "/app",
                               SOURCE_DIR "/recorder",
                               SOURCE_DIR "/widgets",
                               SOURCE_DIR "/storage",
                               "-ts"};
        QCOMPARE(QProcess::execute(LUPDATE_BIN, scan + copies), 0);
        const QRegularExpression message(
            "<source>(.*)</source>\\s*<translation( type=\"unfinished\")?>(.*)</translation>");
        QStringList faults;
        for (const QString &copy : copies) {
            QFile ts(copy);
            const QString content = ts.open(QIODevice::ReadOnly) ? ts.readAll() : QString();
            // the scan found the program's texts at all, and each message is read here
            QVERIFY2(content.contains(">Press OK to Record<") &&
                         content.contains(">No enough storage space, please remove some files.<"),
                     qPrintable(copy));
            int messages = 0;
            for (auto it = message.globalMatch(content); it.hasNext(); ++messages) {
                const QRegularExpressionMatch m = it.next();
                const QString source = m.captured(1), text = m.captured(3);
                // pieces glued into one message keep their blanks: " [", "] ", "Mid "
                if (m.capturedLength(2) || text.isEmpty() ||
                    source.startsWith(' ') != text.startsWith(' ') ||
                    source.endsWith(' ') != text.endsWith(' '))
                    faults << copy + ": " + m.captured(0);
            }
            // every message matched, numerus forms too (they would need reading here)
            QCOMPARE(messages, content.count("<message"));
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
    }

    void screens_data()
    {
        QTest::addColumn<int>("position"); // of "SystemSet/Lan"
        QTest::addColumn<QString>("name"); // the translation it chooses; none: English
        for (int i = 0; i < languages.size(); ++i)
            QTest::addRow("%d-%s", i, qPrintable(languages.at(i))) << i << languages.at(i);
        QTest::newRow("outside-the-table-is-english") << int(languages.size()) << QString();
    }
    // The idle screen under the language of "SystemSet/Lan", chosen as start-up chooses it, in an
    // installed device root. (Without the key start-up takes the table's first: the start-up test.)
    void screens()
    {
        QFETCH(int, position);
        QFETCH(QString, name);
        TestDeviceRoot root;
        QCOMPARE(QProcess::execute("bash", {MKROOT, root.root(), BUILD_DIR}), 0);
        QVERIFY(root.writeFile("/apps/config/config.ini",
                               "[SystemSet]\nLan=" + QByteArray::number(position)));
        LanguageManager::quitFun();
        QCOMPARE(LanguageManager::Instance()->init(), 0);
        QTranslator translator; // removes itself from the application when the test ends
        applyTranslation(*qApp, translator,
                         LanguageManager::Instance()->getLanIntByID(readSystemLanguage()));
        QTranslator reference;
        QVERIFY(name.isEmpty() || reference.load(root.path("/apps/res/recorder_" + name + ".qm")));
        RecordMainWnd window(nullptr, 0);
        QCOMPARE(window.helpText(),
                 name.isEmpty() ? idleHelp : reference.translate("RecordMainWnd", idleHelp));
        const QImage idle = shoot(window, QStringLiteral("lang_%1").arg(QTest::currentDataTag()));
        const QFontMetrics metrics(window.font());
        // the help line from x 10 and the time from x 190, both as their glyphs' pixels reach
        const int timeStarts = 190 + metrics.boundingRect(window.getTimeText()).left();
        for (const char *help : {"Press OK to Record", "Press OK to Continue", "Press OK to Pause",
                                 "Press OK to Play"}) {
            const QString text = QCoreApplication::translate("RecordMainWnd", help);
            QVERIFY2(timeStarts - 10 - metrics.boundingRect(text).right() >= 4, qPrintable(text));
        }
        // in Chinese, so that both scripts are compared
        if (position == 0)
            sameUnderXvfb(root, window, idle);
    }
};

QTEST_MAIN(TestResources)
#include "tst_res.moc"
