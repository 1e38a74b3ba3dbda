#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "resfiles.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/spinitems.h"

#include <QApplication>
#include <QFontMetrics>
#include <QTest>
#include <QTranslator>

namespace {

// The help line starts at x 10. The state symbol (rows 33-39) stands above the line's glyphs;
// the time's digits from x 190 share their rows, so the help text has to end before them.
constexpr int helpLeft = 10;
constexpr int timeLeft = 190;
// Menu rows stand at x 40 of the 256-pixel screen. In a row the caption starts at x 7 and the
// value block (spin box arrow or slider) at 140; a spin box value starts at 156.
constexpr int screenWidth = 256;
constexpr int rowLeft = 40;
constexpr int captionLeft = 7;
constexpr int valueBlockLeft = 140;
constexpr int valueLeft = 156;

// Message boxes wrap their text into 246 x 60 pixels.
const QRect messageBox(0, 0, 246, 60);

QString translated(const QTranslator &translator, const char *context, const char *source)
{
    const QString text = translator.translate(context, source);
    return text.isEmpty() ? QString::fromLatin1(source) : text;
}

} // namespace

class TestTranslatedScreens : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void idleScreen_data() { addLanguageRows(); }
    void idleScreen();
    void optionMenu_data() { addLanguageRows(); }
    void optionMenu();
    void messagesFitTheirBox_data() { addLanguageRows(); }
    void messagesFitTheirBox();

private:
    static void addLanguageRows();
};

void TestTranslatedScreens::initTestCase()
{
    QApplication::setPalette(recorderPalette());
}

void TestTranslatedScreens::addLanguageRows()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : translationNames())
        QTest::newRow(qPrintable(name)) << name;
}

void TestTranslatedScreens::idleScreen()
{
    QFETCH(QString, name);
    TestDeviceRoot root;
    QVERIFY(installResources(root));
    QTranslator translator;
    QVERIFY(translator.load(root.path("/apps/res/recorder_" + name + ".qm")));
    QCoreApplication::installTranslator(&translator);

    RecordMainWnd window(nullptr, 0);
    QVERIFY(window.grab().save(screensDir() + "/res_idle_" + name + ".png"));
    const QFontMetrics metrics(window.font());
    for (const char *help :
         {"Press OK to Record", "Press OK to Continue", "Press OK to Pause", "Press OK to Play"}) {
        const QString text = translated(translator, "RecordMainWnd", help);
        QVERIFY2(helpLeft + metrics.horizontalAdvance(text) < timeLeft, qPrintable(text));
    }
}

// Every caption and value fits its place whichever row is highlighted (bold).
void TestTranslatedScreens::optionMenu()
{
    QFETCH(QString, name);
    TestDeviceRoot root;
    QVERIFY(installResources(root));
    QTranslator translator;
    QVERIFY(translator.load(root.path("/apps/res/recorder_" + name + ".qm")));
    QCoreApplication::installTranslator(&translator);

    RecordMainWnd window(nullptr, 0);
    window.newRecordOptionWnd();
    ItemMenu *menu = window.getOptionMenu();
    QVERIFY(menu);
    QCOMPARE(menu->findChildren<SpinItems *>().size(), 3);
    for (int current = 0; current < 3; ++current) {
        menu->setCurIndex(current);
        QVERIFY(menu->grab().save(
            QStringLiteral("%1/res_menu_%2_current%3.png").arg(screensDir(), name).arg(current)));
        for (SpinItems *row : menu->findChildren<SpinItems *>()) {
            // the fonts as the menu gives them: bold for the highlighted row
            const QFontMetrics metrics(row->font());
            const QString caption = row->getText1();
            QVERIFY(caption != QLatin1String("teset"));
            if (qobject_cast<KoSpinSlide *>(row)) {
                // caption and value are written only while the row is not highlighted
                const QString widest = caption + QLatin1String(" 30");
                if (row->font().weight() == QFont::Normal)
                    QVERIFY2(captionLeft + metrics.horizontalAdvance(widest) < valueBlockLeft,
                             qPrintable(widest));
                continue;
            }
            QVERIFY2(captionLeft + metrics.horizontalAdvance(caption) < valueBlockLeft,
                     qPrintable(caption));
            // values go in the nits face at the row's size and weight, and stay on the screen
            const QFontMetrics valueMetrics(QFont(QStringLiteral("nits")).resolve(row->font()));
            auto *box = qobject_cast<KoSpinBox *>(row);
            QVERIFY(box);
            for (int step = 0; step < box->getSizeItems(); ++step) {
                const QString value = row->getCurItem().trimmed();
                QVERIFY2(rowLeft + valueLeft + valueMetrics.horizontalAdvance(value) <= screenWidth,
                         qPrintable(value));
                row->moveNext();
            }
        }
    }
}

// The notices of the recorder and of start-up fit the message box, the question its line.
void TestTranslatedScreens::messagesFitTheirBox()
{
    QFETCH(QString, name);
    QTranslator translator;
    QVERIFY(translator.load(builtTranslation(name)));
    const QFontMetrics metrics(QFont(QStringLiteral("nits")));
    const QString saved = translated(translator, "RecordMainWnd", "Recording") +
                          translated(translator, "RecordMainWnd", " [") + "200101_12.mp3" +
                          translated(translator, "RecordMainWnd", "] ") +
                          translated(translator, "RecordMainWnd", "save to library");
    const QStringList notices{
        saved, translated(translator, "RecordMainWnd", "No enough disk space."),
        translated(translator, "RecordMainWnd",
                   "Exceed the maximum file number, please remove some files."),
        translated(translator, "main", "No enough storage space, please remove some files.")};
    for (const QString &notice : notices) {
        const QRect used =
            metrics.boundingRect(messageBox, Qt::AlignCenter | Qt::TextWordWrap, notice);
        QVERIFY2(messageBox.contains(used), qPrintable(notice));
    }
    // the save question takes one line of the screen while it is short, else a wrapped box
    const QString question =
        translated(translator, "RecordMainWnd", "Do you want to save recording?");
    if (question.length() < 34) {
        QVERIFY2(metrics.horizontalAdvance(question) <= 256, qPrintable(question));
    } else {
        const QRect questionBox(1, 1, 246, 40);
        QVERIFY2(questionBox.contains(metrics.boundingRect(
                     questionBox, Qt::AlignCenter | Qt::TextWordWrap, question)),
                 qPrintable(question));
    }
}

QTEST_MAIN(TestTranslatedScreens)
#include "tst_translatedscreens.moc"
