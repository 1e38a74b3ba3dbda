// Every screen of the recorder in every language, drawn in the stand-ins for the pen's fonts: the
// help text ends before the time, the options menu's texts (each row highlighted in turn) stay on
// screen, off the slider and clear of the arrows, the dialogs' texts inside their boxes; and the
// same screen comes out as the same pixels here (offscreen) and from the program under Xvfb.
#include "../recorder/xserver.h"
#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "recorderprocess.h"
#include "screenpixels.h"
#include "testdeviceroot.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/messagedialog.h"
#include "widgets/penfonts.h"
#include "widgets/yesnoselect.h"

#include <QApplication>
#include <QFontDatabase>
#include <QScopeGuard>
#include <QSlider>
#include <QStandardPaths>
#include <QTranslator>
#include <QtTest>

namespace {

// the start-up table's languages, in its order
const QStringList languages{"zh_CN", "en_US", "Ger", "Fre", "Ita", "Rus", "zh_TW", "Spa"};
enum Screen { Idle, MenuVolume, MenuFormat, MenuQuality, SaveQuestion, Messages };
const char *const screenNames[] = {"idle",         "menu-volume",   "menu-format",
                                   "menu-quality", "save-question", "messages"};
const QRect display(0, 0, 256, 64);
// a screen grabbed this big shows what runs off the display's right and bottom edges
const QSize canvas(320, 96);

QString recorderText(const char *text)
{
    return QCoreApplication::translate("RecordMainWnd", text);
}

// Lit pixels of the widget grabbed on the big canvas, its sliders shown or hidden.
QImage canvasMask(QWidget &screen, bool sliders)
{
    const QSize size = screen.size();
    screen.resize(canvas);
    for (QSlider *slider : screen.findChildren<QSlider *>())
        slider->setVisible(sliders);
    QImage mask = litMask(screen.grab().toImage());
    for (QSlider *slider : screen.findChildren<QSlider *>())
        slider->setVisible(true);
    screen.resize(size);
    return mask;
}

QImage offDisplay()
{
    QImage mask(canvas, QImage::Format_Grayscale8);
    mask.fill(255);
    for (int y = 0; y < display.height(); ++y)
        memset(mask.scanLine(y), 0, size_t(display.width()));
    return mask;
}

void checkIdle(const QString &picture)
{
    RecordMainWnd window(nullptr, 0);
    shoot(window, picture);
    const QFontMetrics metrics(window.font());
    // the help line from x 10 and the time from x 190, both as their glyphs' pixels reach
    const int timeStarts = 190 + metrics.boundingRect(window.getTimeText()).left();
    for (const char *help :
         {"Press OK to Record", "Press OK to Continue", "Press OK to Pause", "Press OK to Play"}) {
        const int helpEnds = 10 + metrics.boundingRect(recorderText(help)).right();
        QVERIFY2(
            timeStarts - helpEnds >= 4,
            qPrintable(QString::asprintf("\"%s\" ends at x %d, the time starts at x %d",
                                         qPrintable(recorderText(help)), helpEnds, timeStarts)));
    }
}

// The menu's texts are what its rows draw beyond the same rows with blank texts; the slider and
// the arrows are what the blank rows draw beyond the background picture.
void checkMenu(int current, const QString &picture)
{
    RecordMainWnd window(nullptr, 0);
    window.newRecordOptionWnd();
    ItemMenu *menu = window.getOptionMenu();
    QVERIFY(menu);
    menu->setCurIndex(current);
    shoot(*menu, picture);

    ItemMenu background, blank;
    for (SpinItems *row : menu->findChildren<SpinItems *>()) {
        SpinItems *twin = qobject_cast<KoSpinSlide *>(row)
                              ? static_cast<SpinItems *>(new KoSpinSlide(&blank))
                              : new KoSpinBox(&blank);
        twin->setText1(QString());
        twin->addItem(QVector<QString>(row->getCurIndex() + 1));
        twin->setCurIndex(row->getCurIndex());
        blank.addItem(twin);
    }
    blank.setCurIndex(current);
    const QImage text = maskWithout(canvasMask(*menu, false), canvasMask(blank, false));
    const QImage sliders = maskWithout(canvasMask(blank, true), canvasMask(blank, false));
    const QImage arrows = maskWithout(canvasMask(blank, false), canvasMask(background, false));
    // each layer is there at all
    for (const QImage *layer : {&text, &sliders, &arrows})
        QVERIFY(maskMeet(*layer, *layer).x() >= 0);
    const std::pair<QImage, const char *> keepOff[] = {
        {offDisplay(), "off the screen"},
        {sliders, "under the slider"},
        {maskGrown(arrows, 2), "within 2 pixels of an arrow"}};
    for (const auto &[other, what] : keepOff) {
        const QPoint p = maskMeet(text, other);
        QVERIFY2(p.x() < 0,
                 qPrintable(QStringLiteral("text at (%1, %2) %3").arg(p.x()).arg(p.y()).arg(what)));
    }
}

// Wrapped in its box by the painter, which neither clips nor scrolls.
void checkBoxed(const QFont &font, const QRect &box, const QString &text)
{
    const QRect used =
        QFontMetrics(font).boundingRect(box, Qt::AlignCenter | Qt::TextWordWrap, text);
    QVERIFY2(box.contains(used),
             qPrintable(QString::asprintf("%s takes %d,%d %dx%d", qPrintable(text), used.x(),
                                          used.y(), used.width(), used.height())));
}

void checkDialogs(Screen screen, const QString &picture)
{
    if (screen == SaveQuestion) {
        const QString asked = recorderText("Do you want to save recording?");
        YesnoSelect question(asked, recorderText("Yes"), recorderText("No"), nullptr);
        shoot(question, picture);
        const QFontMetrics metrics(question.font()); // the font it painted with
        if (asked.length() >= 34)
            checkBoxed(question.font(), QRect(1, 1, 246, 40), asked);
        else
            QVERIFY2(metrics.horizontalAdvance(asked) <= display.width(), qPrintable(asked));
        // the mark left of the first answer, the second answer right of the middle
        QVERIFY(display.width() / 2 - metrics.horizontalAdvance(recorderText("Yes")) - 18 >= 0);
        QVERIFY2(maskMeet(canvasMask(question, true), offDisplay()).x() < 0, "answers off screen");
        return;
    }
    const QStringList messages{
        recorderText("No enough disk space."),
        recorderText("Exceed the maximum file number, please remove some files."),
        recorderText("Recording") + recorderText(" [") + "231123_12.mp3" + recorderText("] ") +
            recorderText("save to library"),
        QCoreApplication::translate("main", "No enough storage space, please remove some files."),
        QCoreApplication::translate("MyEdit", "The file is too big, please create new file!")};
    for (int i = 0; i < messages.size(); ++i) {
        MessageDialog message(nullptr, messages.at(i), 0);
        shoot(message, picture + QString::number(i + 1));
        checkBoxed(message.font(), QRect(0, 0, 246, 60), messages.at(i));
    }
}

} // namespace

class TestScreensFit : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    void screenFits_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("screen");
        for (const QString &language : languages) {
            for (int screen = Idle; screen <= Messages; ++screen)
                QTest::addRow("%s-%s", qPrintable(language), screenNames[screen])
                    << language << screen;
        }
    }
    void screenFits()
    {
        QFETCH(QString, language);
        QFETCH(int, screen);
        TestDeviceRoot root;
        QVERIFY(QFile::copy(RES_SOURCE_DIR "/pics/settings2.png",
                            root.path("/apps/res/pics/settings2.png")));
        QTranslator translator;
        QVERIFY(translator.load(QM_DIR "/recorder_" + language + ".qm"));
        QCoreApplication::installTranslator(&translator);
        const auto untranslate =
            qScopeGuard([&translator] { QCoreApplication::removeTranslator(&translator); });
        const QString picture = QStringLiteral("fit_%1_%2").arg(language, screenNames[screen]);
        if (screen == Idle)
            checkIdle(picture);
        else if (screen <= MenuQuality)
            checkMenu(screen - MenuVolume, picture);
        else
            checkDialogs(Screen(screen), picture);
    }

    // The program under Xvfb draws its idle screen and options menu with the stand-in family, to
    // the very pixels this process draws offscreen; in Chinese, so that both scripts are compared.
    void sameScreenOffscreenAndXcb()
    {
        for (const char *tool : {"Xvfb", "xwdtopnm"}) {
            if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
                QSKIP(qPrintable(QStringLiteral("%1 is not installed (scripts/setup)").arg(tool)));
        }
        TestDeviceRoot root;
        QCOMPARE(QProcess::execute("bash", {MKROOT, root.root(), BUILD_DIR}), 0);
        QVERIFY(root.writeFile("/apps/config/config.ini", "[SystemSet]\nLan=0\n"));
        XServer x;
        QVERIFY2(x.start(), "no Xvfb could be started");
        RecorderProcess recorder(root.root());
        recorder.showOn(x.display());
        QVERIFY(recorder.start());

        // "nits" stands for the family loaded from the device root here; a program drawing with
        // another font shows other pixels
        QCOMPARE(QFontInfo(QFont("nits")).family(), loadPenFonts());

        QTranslator translator;
        QVERIFY(translator.load(QM_DIR "/recorder_zh_CN.qm"));
        QCoreApplication::installTranslator(&translator);
        const auto untranslate =
            qScopeGuard([&translator] { QCoreApplication::removeTranslator(&translator); });
        // the last picture taken under X stays for a look when they never agree
        const auto there = [&x](const QString &name) {
            QImage screen = x.grab().copy(display).convertToFormat(QImage::Format_RGB32);
            screen.save(screensDir() + "/same_xcb_" + name + ".png");
            return screen;
        };
        RecordMainWnd window(nullptr, 0);
        const QImage idle =
            shoot(window, "same_offscreen_idle").convertToFormat(QImage::Format_RGB32);
        QTRY_VERIFY_WITH_TIMEOUT(there("idle") == idle, 60000);
        // the options menu on its second row: bold, the slider and the arrows too
        QVERIFY(x.pressKey(recorder.pid(), "F12"));
        window.newRecordOptionWnd();
        ItemMenu *options = window.getOptionMenu();
        QVERIFY(options);
        QTest::keyClick(options, Qt::Key_Down);
        QVERIFY(x.pressKey(recorder.pid(), "Down"));
        const QImage menu =
            shoot(*options, "same_offscreen_menu").convertToFormat(QImage::Format_RGB32);
        QTRY_VERIFY_WITH_TIMEOUT(there("menu") == menu, 60000);
    }
};

QTEST_MAIN(TestScreensFit)
#include "tst_screensfit.moc"
