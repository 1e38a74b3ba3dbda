// The resources: every text of the program translated, the language chosen at start-up, and every
// screen of the recorder in that language drawn in the stand-ins for the pen's fonts: the help
// text ends before the time, the options menu's texts (each row highlighted in turn) stay on
// screen, off the slider and clear of the arrows, the dialogs' texts inside their boxes; and the
// same screen comes out as the same pixels here (offscreen) and from the program under Xvfb.
// What cmake --install lays out is checked with mkroot, which uses it.
#include "../recorder/xserver.h"
#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "recorderprocess.h"
#include "screenpixels.h"
#include "storage/languagemanager.h"
#include "testdeviceroot.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/messagedialog.h"
#include "widgets/penfonts.h"
#include "widgets/yesnoselect.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// The translations of the start-up table, in its order: list positions 0..7 of the sample
// language table choose them in this order too.
const QStringList languages{"zh_CN", "en_US", "Ger", "Fre", "Ita", "Rus", "zh_TW", "Spa"};
const char idleHelp[] = "Press OK to Record";
const QRect display(0, 0, 256, 64);
// a screen grabbed this big shows what runs off the display's right and bottom edges
const QSize canvas(320, 96);
const QRegion offDisplay = QRegion(QRect(QPoint(), canvas)) - display;

QString translated(const char *text, const char *context = "RecordMainWnd")
{
    return QCoreApplication::translate(context, text);
}

// Lit pixels of the widget grabbed on the big canvas, its sliders shown or hidden.
QRegion canvasLit(QWidget &screen, bool sliders)
{
    const QSize size = screen.size();
    screen.resize(canvas);
    for (QSlider *slider : screen.findChildren<QSlider *>())
        slider->setVisible(sliders);
    const QImage image = screen.grab().toImage();
    for (QSlider *slider : screen.findChildren<QSlider *>())
        slider->setVisible(true);
    screen.resize(size);
    QRegion pixels;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (lit(image, x, y))
                pixels += QRect(x, y, 1, 1);
        }
    }
    return pixels;
}

// The menu's texts are what its rows draw beyond the same rows with blank texts; the slider and
// the arrows are what the blank rows draw beyond the background picture. Each row highlighted.
void checkMenu(RecordMainWnd &window, const QString &picture)
{
    window.newRecordOptionWnd();
    ItemMenu &menu = *window.getOptionMenu();
    ItemMenu background, blank;
    for (SpinItems *row : menu.findChildren<SpinItems *>()) {
        SpinItems *twin = qobject_cast<KoSpinSlide *>(row)
                              ? static_cast<SpinItems *>(new KoSpinSlide(&blank))
                              : new KoSpinBox(&blank);
        twin->setText1(QString()); // a new row has a caption of its own
        twin->addItem(QVector<QString>(row->getCurIndex() + 1));
        twin->setCurIndex(row->getCurIndex());
        blank.addItem(twin);
    }
    for (int current = 0; current < blank.findChildren<SpinItems *>().size(); ++current) {
        menu.setCurIndex(current);
        blank.setCurIndex(current);
        shoot(menu, picture + QString::number(current));
        const QRegion blanks = canvasLit(blank, false);
        const QRegion text = canvasLit(menu, false) - blanks;
        const QRegion sliders = canvasLit(blank, true) - blanks;
        const QRegion arrows = blanks - canvasLit(background, false);
        // each layer is there at all
        QVERIFY(!text.isEmpty() && !sliders.isEmpty() && !arrows.isEmpty());
        QRegion nearArrows;
        for (const QRect &rect : arrows)
            nearArrows += rect.adjusted(-2, -2, 2, 2);
        const std::pair<QRegion, const char *> keepOff[] = {{offDisplay, "off the screen"},
                                                            {sliders, "under the slider"},
                                                            {nearArrows, "near an arrow"}};
        for (const auto &[other, what] : keepOff) {
            QVERIFY2((text & other).isEmpty(),
                     qPrintable(QStringLiteral("row %1: text %2").arg(current).arg(what)));
        }
    }
}

// The painter wraps each text in its box, where it neither clips nor scrolls.
void checkDialogs(const QString &picture)
{
    const QString asked = translated("Do you want to save recording?");
    YesnoSelect question(asked, translated("Yes"), translated("No"), nullptr);
    shoot(question, picture + "question");
    const QFontMetrics metrics(question.font()); // the font it painted with
    // on one line under 34 characters, else in the upper box
    const bool wrapped = asked.length() >= 34;
    const QRect box = wrapped ? QRect(1, 1, 246, 40) : display;
    const int flags = int(Qt::AlignCenter) | (wrapped ? Qt::TextWordWrap : 0);
    QVERIFY2(box.contains(metrics.boundingRect(box, flags, asked)), qPrintable(asked));
    // the mark left of the first answer, the second answer right of the middle
    QVERIFY(display.width() / 2 - metrics.horizontalAdvance(translated("Yes")) - 18 >= 0);
    QVERIFY2((canvasLit(question, true) & offDisplay).isEmpty(), "answers off screen");
    const QStringList messages{
        translated("No enough disk space."),
        translated("Exceed the maximum file number, please remove some files."),
        translated("Recording") + translated(" [") + "231123_12.mp3" + translated("] ") +
            translated("save to library"),
        translated("No enough storage space, please remove some files.", "main"),
        translated("The file is too big, please create new file!", "MyEdit"),
        translated("No music", "PlayerWndAdapter")};
    for (int i = 0; i < messages.size(); ++i) {
        MessageDialog message(nullptr, messages.at(i), 0);
        shoot(message, picture + "message" + QString::number(i + 1));
        QVERIFY2((canvasLit(message, true) - QRect(0, 0, 246, 60)).isEmpty(),
                 qPrintable(messages.at(i)));
    }
}

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
        QImage screen = x.grab().copy(display).convertToFormat(QImage::Format_RGB32);
        screen.save(screensDir() + "/same_xcb_" + name + ".png");
        return screen == here.convertToFormat(QImage::Format_RGB32);
    };
    QTRY_VERIFY_WITH_TIMEOUT(sameThere("idle", idle), 60000);
    // pressed only once the idle screen is there: sooner, the key can be lost
    QVERIFY(x.pressKey(recorder.pid(), "F12"));
    window.getOptionMenu()->setCurIndex(0);
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
                               SOURCE_DIR "/player",
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
    // The screens under the language of "SystemSet/Lan", chosen as start-up chooses it, in an
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
        const QString picture = QStringLiteral("fit_%1_").arg(QTest::currentDataTag());
        const QImage idle = shoot(window, picture + "idle");
        const QFontMetrics metrics(window.font());
        // the help line from x 10 and the time from x 190, both as their glyphs' pixels reach
        const int timeStarts = 190 + metrics.boundingRect(window.getTimeText()).left();
        for (const char *help : {"Press OK to Record", "Press OK to Continue", "Press OK to Pause",
                                 "Press OK to Play"}) {
            const QString text = translated(help);
            QVERIFY2(timeStarts - 10 - metrics.boundingRect(text).right() >= 4, qPrintable(text));
        }
        checkMenu(window, picture + "menu");
        checkDialogs(picture);
        // in Chinese, so that both scripts are compared
        if (position == 0)
            sameUnderXvfb(root, window, idle);
    }
};

QTEST_MAIN(TestResources)
#include "tst_res.moc"
