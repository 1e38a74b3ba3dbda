// The key-driven widget kit: the paged option menu with its spin box and slider rows, the
// screen switcher, the yes/no and message dialogs, and fitting text to a width.
#include "app/startup.h"
#include "screenpixels.h"
#include "widgets/cropstring.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/messagedialog.h"
#include "widgets/widgetchange.h"
#include "widgets/yesnoselect.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// Presses only: the widgets act on the press, and after an exit they may be off screen.
QTestEventList keys(std::initializer_list<Qt::Key> list)
{
    QTestEventList events;
    for (Qt::Key key : list)
        events.addKeyPress(key);
    return events;
}

// Counts the keys that reach it: the menu passes none on to its parent.
struct KeySink : QWidget
{
    int received = 0;
    void keyPressEvent(QKeyEvent *) override { ++received; }
};

// Runs the dialog modally and answers it with the keys, as a user would. A dialog that never
// closes is rejected with -1 after five seconds, so the test fails instead of hanging.
int execAnswered(QDialog &dialog, const QTestEventList &events)
{
    QTimer::singleShot(0, &dialog, [&] { QTestEventList(events).simulate(&dialog); });
    QTimer::singleShot(5000, &dialog, [&dialog] { dialog.done(-1); });
    return dialog.exec();
}

// The widget's picture, kept as widgets_WHAT_<data tag>.png
QImage shot(QWidget &widget, const char *what)
{
    return shoot(widget, QStringLiteral("widgets_%1_%2").arg(what, QTest::currentDataTag()));
}

const Qt::Key Up = Qt::Key_Up, Down = Qt::Key_Down, Left = Qt::Key_Left, Right = Qt::Key_Right,
              Ret = Qt::Key_Return, Esc = Qt::Key_Escape;

} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    // Five rows of the values a, b, c; row i starts at value i % 3. "*" in the signal log marks
    // a signal sent after the menu left the screen: Return announces before the screen changes
    // hands, Escape after.
    void keySequences_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<QString>("signalLog");
        QTest::addColumn<int>("menuIndex");
        QTest::addColumn<QString>("screenAfter");
        auto row = [](const char *tag, const char *mode, std::initializer_list<Qt::Key> events,
                      const char *log, int index, const char *screen) {
            QTest::newRow(tag) << mode << keys(events) << log << index << screen;
        };
        row("down-stops-at-last-row", "plain", {Down, Down, Down, Down, Down}, "", 4, "menu");
        row("up-stops-at-first-row", "plain", {Down, Up, Up}, "", 0, "menu");
        row("right-wraps-the-value", "plain", {Down, Down, Right, Right}, "row 0 a, row 1 b", 2,
            "menu");
        row("left-wraps-the-value", "plain", {Left}, "row 2 c", 0, "menu");
        row("fixed-left-blocked-at-first", "fixed", {Left}, "", 0, "menu");
        row("fixed-left-announces-only", "fixed", {Down, Down, Left}, "row 2 c", 2, "menu");
        row("fixed-right-announces-only", "fixed", {Right}, "row 0 a", 0, "menu");
        row("fixed-right-blocked-at-second", "fixed", {Down, Right}, "", 1, "menu");
        row("unhandled-keys-dropped", "plain",
            {Qt::Key_A, Qt::Key_5, Qt::Key_F1, Qt::Key_Space, Qt::Key_Home, Qt::Key_Tab,
             Qt::Key_Enter},
            "", 0, "menu");
        row("return-announces-then-switches", "plain", {Down, Ret}, "lan 1, datetime, esc*", 1,
            "prev");
        row("return-quick-to-quick-widget", "quick", {Down, Ret}, "lan 1, ok*, quick*, esc*", 1,
            "quick");
        row("return-go-in-stays", "goin", {Down, Ret}, "goin 1", 1, "menu");
        row("escape-switches-then-announces", "plain", {Down, Esc}, "lan 1, datetime*, esc*", 1,
            "prev");
        row("escape-left-to-listener", "escstays", {Esc}, "lan 0, esc", 0, "menu");
        row("escape-nowhere-to-go-closes-all", "noprev", {Esc}, "lan 0, datetime*, esc*", 0,
            "none");
    }
    void keySequences()
    {
        QFETCH(QString, mode);
        QFETCH(QTestEventList, events);
        QFETCH(int, menuIndex);
        QFETCH(QString, screenAfter);
        QStringList log;
        QWidget prev, quick, other;
        KeySink parent;
        auto *menu = new ItemMenu(&parent);
        menu->resize(256, 64);
        QList<KoSpinBox *> rows;
        for (int i = 0; i < 5; ++i) {
            rows << new KoSpinBox(menu);
            rows[i]->addItem(QVector<QString>{"a", "b", "c"});
            rows[i]->setCurIndex(i % 3);
            menu->addItem(rows[i]);
            connect(rows[i], &SpinItems::triggered, [&log](int n, const QString &value) {
                log << QString("row %1 %2").arg(n).arg(value);
            });
        }
        menu->setMoveLRFlag(mode != "fixed");
        menu->setPrevWidget(mode == "noprev" ? nullptr : &prev);
        menu->setPrevQuickWidget(&quick);
        menu->setQuickFlag(mode == "quick");
        menu->setGoInFlag(mode == "goin");
        menu->setEscGoPreFlag(mode != "escstays");
        auto note = [&](const QString &what) { log << what + (menu->isVisible() ? "" : "*"); };
        connect(menu, &ItemMenu::triggergoin, [=](int i) { note("goin " + QString::number(i)); });
        connect(menu, &ItemMenu::okPressedLan, [=](int i) { note("lan " + QString::number(i)); });
        connect(menu, &ItemMenu::okDateTimePressed, [=] { note("datetime"); });
        connect(menu, &ItemMenu::okPressed, [=] { note("ok"); });
        connect(menu, &ItemMenu::okPressedForQuick, [=] { note("quick"); });
        connect(menu, &ItemMenu::escPressed, [=] { note("esc"); });
        other.show();
        parent.show();
        events.simulate(menu);
        QTEST(log.join(", "), "signalLog");
        QCOMPARE(menu->getCurIndex(), menuIndex);
        if (!log.join(' ').contains("row")) // a row that announced nothing has not moved
            QCOMPARE(rows.at(menuIndex)->getCurIndex(), menuIndex % 3);
        QCOMPARE(parent.received, 0);
        QCOMPARE(other.isVisible(), mode != "noprev");
        QCOMPARE(menu->isVisible(), screenAfter == "menu");
        const QHash<QString, QWidget *> screens{{"prev", &prev}, {"quick", &quick}};
        QCOMPARE(menu->getMessWidget(), screens.value(screenAfter));

        // three rows to a page, touching from y 4, the highlighted one bold, all disabled:
        // rows take no input of their own
        const int first = menuIndex < 3 ? 0 : 3, h = rows.first()->height();
        for (int i = 0; i < rows.size(); ++i) {
            QCOMPARE(!rows[i]->isHidden(), i >= first && i < first + 3);
            QVERIFY(!rows[i]->isEnabled());
            if (!rows[i]->isHidden()) {
                QCOMPARE(rows[i]->geometry(), QRect(40, 4 + (i - first) * h, 241, h));
                QCOMPARE(rows[i]->font().bold(), i == menuIndex);
            }
        }
        // exactly the rows on the page show their arrows, at x 140-147 and 198-205 of the row
        const QImage image = shot(*menu, "itemmenu");
        for (int k = 0; k < 3; ++k) {
            const int y = 4 + k * h + 9;
            QCOMPARE(lit(image, 40 + 144, y) && lit(image, 40 + 201, y), first + k < rows.size());
            QVERIFY(!lit(image, 40 + 137, y) && !lit(image, 40 + 208, y));
        }
    }

    // A spin box's value block moves left for good, whatever the go-front flag's argument
    // (index -1); a slider row's handle (the middle of its 8 pixels at handleX) stops at the first
    // and the last value.
    void rowPictures_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("handleX");
        QTest::newRow("spin-box-go-front") << -1 << 1;
        QTest::newRow("spin-box-go-front-false-still-moves-left") << -1 << 0;
        const int middles[] = {144, 154, 165, 176, 187, 198};
        for (int i = 0; i < 6; ++i)
            QTest::addRow("slider-step-%d", i) << i << middles[i];
    }
    void rowPictures()
    {
        QFETCH(int, index);
        QFETCH(int, handleX);
        if (index < 0) {
            KoSpinBox box;
            box.addItem(QVector<QString>{"On", "Off"});
            box.setGoFrontFlag(handleX);
            const QImage image = shot(box, "kospinbox");
            QVERIFY(lit(image, 114, 9) && lit(image, 208, 9)); // arrows at 110-117 and 205-212
            QVERIFY(!lit(image, 107, 9) && !lit(image, 144, 9) && !lit(image, 215, 9));
            return;
        }
        KoSpinSlide row;
        row.addItem(QVector<QString>{"0", "1", "2", "3", "4", "5"});
        auto *slider = row.findChild<QSlider *>();
        // in place from the start, also while highlighted and never painted: a row first shown
        // highlighted must not leave its slider across its caption
        row.setCurIndex(0);
        row.movePrev();                                // stops at the first value
        for (int i = 0; i < index + (index == 5); ++i) // and at the last
            row.moveNext();
        QCOMPARE(slider->geometry(), QRect(140, 4, 62, 18));
        QCOMPARE(row.getCurIndex(), index);
        QCOMPARE(slider->value(), index * 6);
        const QImage image = shot(row, "kospinslide");
        QVERIFY(lit(image, handleX, 10));
        QVERIFY(!lit(image, index < 3 ? handleX + 15 : handleX - 15, 10));
    }

    void widgetChangeWithoutSource()
    {
        QWidget a, b;
        a.show();
        WidgetChange *change = WidgetChange::instance();
        change->Go2NewWidget(&b);
        change->Go2PrevWidget(nullptr, &a); // no source: nothing at all
        QVERIFY(a.isVisible() && a.isEnabled() && b.isVisible());
        QCOMPARE(change->getCurWidget(), &b);
    }

    // The answers' line sits below the font's ascent: 19 pixels under a one-line question
    // (up to 33 characters), 24 under a wrapped one.
    void yesno_data()
    {
        QTest::addColumn<bool>("wrapped");
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("result");
        QTest::newRow("return-on-first") << false << keys({Ret}) << 0 << 1;
        QTest::newRow("other-keys-ignored-right-stops-at-second")
            << false << keys({Up, Qt::Key_A, Right, Right, Ret}) << 1 << 1;
        QTest::newRow("wrapped-left-stops-at-first") << true << keys({Left, Ret}) << 0 << 1;
        QTest::newRow("wrapped-right-left-back-to-first")
            << true << keys({Right, Left, Ret}) << 0 << 1;
        QTest::newRow("escape-rejects") << false << keys({Esc}) << 2 << 0;
    }
    void yesno()
    {
        QFETCH(bool, wrapped);
        QFETCH(QTestEventList, events);
        QFETCH(int, value);
        YesnoSelect dialog(QString(wrapped ? 34 : 33, 'q'), "Yes", "No");
        QTEST(execAnswered(dialog, events), "result");
        QCOMPARE(dialog.getValue(), value);

        // the mark stays where the answer was taken: inside it lit, its nearly black outline not
        const QImage image = shot(dialog, "yesno");
        const QFontMetrics metrics{QFont("nits")};
        const int y = metrics.ascent() + (wrapped ? 24 : 19);
        const int firstX = 128 - metrics.horizontalAdvance("Yes") - 15;
        QCOMPARE(lit(image, firstX, y + 8), value != 1);
        QCOMPARE(lit(image, 135, y + 8), value == 1);
        QVERIFY(!lit(image, value == 1 ? 132 : firstX - 3, y + 3));
    }

    void message_data()
    {
        QTest::addColumn<int>("timeout");
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("result");
        QTest::newRow("no-time-out-other-keys-leave-it-open")
            << 0 << keys({Up, Qt::Key_A, Ret}) << 1;
        QTest::newRow("no-time-out-escape-rejects") << 0 << keys({Esc}) << 0;
        QTest::newRow("time-out-accepts-after-every-show") << 1000 << QTestEventList() << 1;
    }
    void message()
    {
        QFETCH(int, timeout);
        QFETCH(QTestEventList, events);
        MessageDialog dialog(nullptr, "Saved", timeout);
        QSignalSpy finished(&dialog, &MessageDialog::finished);
        dialog.show();
        QVERIFY(!finished.wait(300)); // waits for a key, or for the time
        dialog.hide();
        QVERIFY(!finished.wait(timeout + 300)); // a hidden notice does not time out
        QElapsedTimer shown;
        shown.start();
        QTEST(execAnswered(dialog, events), "result");
        QVERIFY(shown.elapsed() >= timeout * 9 / 10); // the full time again (coarse timers: 5%)
        QCOMPARE(finished.count(), 1);
        shot(dialog, "message");
    }

    // maxWidth is the width of widthOf letters and the suffix, plus extra pixels
    void cropString_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("widthOf");
        QTest::addColumn<int>("extra");
        QTest::addColumn<int>("kept"); // -1: the text unchanged, without the suffix
        QTest::newRow("fits-unchanged-without-suffix") << 10 << 10 << 0 << -1;
        QTest::newRow("exact-width-found") << 20 << 5 << 0 << 5;
        QTest::newRow("closes-after-too-wide-prefix") << 20 << 5 << 1 << 6;
        QTest::newRow("narrower-than-suffix") << 20 << 0 << -1 << 1;
        QTest::newRow("ten-halvings-run-out") << 2048 << 1500 << 1 << 1502;
    }
    void cropString()
    {
        QFETCH(int, length);
        QFETCH(int, widthOf);
        QFETCH(int, extra);
        QFETCH(int, kept);
        const QFontMetrics metrics{QFont()};
        auto letters = [&](int n) { return metrics.horizontalAdvance(QString(n, 'a')); };
        QVERIFY(letters(2) - letters(1) >= 2); // every letter adds more than a pixel
        const int maxWidth = letters(widthOf) + metrics.horizontalAdvance("...") + extra;
        const QString text(length, 'a');
        const QString result = crop_string(QFont(), text, maxWidth, "...");
        QCOMPARE(result, kept < 0 ? text : text.left(kept) + "...");
        // a width between two prefixes' is overshot: the search closes on the wider one
        QCOMPARE(metrics.horizontalAdvance(result) > maxWidth, extra != 0);
    }
};

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
