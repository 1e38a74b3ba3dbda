// The key-driven widget kit: the paged option menu with its spin box and slider rows, the yes/no
// and message dialogs.
#include "app/startup.h"
#include "screenpixels.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/messagedialog.h"
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

const Qt::Key Up = Qt::Key_Up, Down = Qt::Key_Down, Left = Qt::Key_Left, Right = Qt::Key_Right,
              Ret = Qt::Key_Return, Esc = Qt::Key_Escape;

} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    // Five rows of the values a, b, c, three to a page; row i starts at value i % 3. Return and
    // Escape both leave for the screen before, which the menu's owner hears of ("*": the menu
    // is off the screen by then).
    void keySequences_data()
    {
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<QString>("signalLog");
        QTest::addColumn<int>("menuIndex");
        auto row = [](const char *tag, std::initializer_list<Qt::Key> events, const char *log,
                      int index) { QTest::newRow(tag) << keys(events) << log << index; };
        row("down-stops-at-last-row", {Down, Down, Down, Down, Down}, "", 4);
        row("up-stops-at-first-row", {Down, Up, Up}, "", 0);
        row("right-wraps-the-value", {Down, Down, Right, Right}, "row 0 a, row 1 b", 2);
        row("left-wraps-the-value", {Left}, "row 2 c", 0);
        row("unhandled-keys-dropped", {Qt::Key_A, Qt::Key_F1, Qt::Key_Home, Qt::Key_Enter}, "", 0);
        row("return-leaves", {Down, Ret}, "esc*", 1);
        row("escape-leaves", {Down, Esc}, "esc*", 1);
    }
    void keySequences()
    {
        QFETCH(QTestEventList, events);
        QFETCH(QString, signalLog);
        QFETCH(int, menuIndex);
        QStringList log;
        QWidget prev;
        KeySink parent;
        auto *menu = new ItemMenu(&parent);
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
        menu->setPrevWidget(&prev);
        connect(menu, &ItemMenu::escPressed, [&] { log << (menu->isVisible() ? "esc" : "esc*"); });
        parent.show();
        events.simulate(menu);
        QCOMPARE(log.join(", "), signalLog);
        QCOMPARE(menu->getCurIndex(), menuIndex);
        QCOMPARE(parent.received, 0);
        const bool left = signalLog == "esc*";
        QCOMPARE(menu->isVisible(), !left);
        QCOMPARE(prev.isVisible(), left);
        QCOMPARE(menu->getMessWidget(), left ? &prev : nullptr);

        // three rows to a page, touching from y 4, the highlighted one bold, all disabled (rows
        // take no input of their own); a value that was not announced stays
        const int first = menuIndex < 3 ? 0 : 3, h = rows.first()->height();
        for (int i = 0; i < rows.size(); ++i) {
            QCOMPARE(!rows[i]->isHidden(), i >= first && i < first + 3);
            QVERIFY(!rows[i]->isEnabled());
            QVERIFY(signalLog.startsWith("row") || rows[i]->getCurIndex() == i % 3);
            if (!rows[i]->isHidden()) {
                QCOMPARE(rows[i]->geometry(), QRect(40, 4 + (i - first) * h, 241, h));
                QCOMPARE(rows[i]->font().bold(), i == menuIndex);
            }
        }
    }

    // A slider row stops at its first and its last value (a volume past either has no value).
    void sliderRow()
    {
        KoSpinSlide row;
        row.addItem(QVector<QString>{"0", "1", "2", "3", "4", "5"});
        row.setCurIndex(0);
        row.movePrev();
        QCOMPARE(row.getCurIndex(), 0);
        for (int n = 0; n < 6; ++n)
            row.moveNext();
        QCOMPARE(row.getCurIndex(), 5);
        const auto *slider = row.findChild<QSlider *>();
        QCOMPARE(slider->value(), slider->maximum());
    }

    // The answer taken keeps the mark, on the answers' line 19 pixels below the font's ascent.
    void yesno_data()
    {
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("result");
        QTest::newRow("return-on-first") << keys({Ret}) << 0 << 1;
        QTest::newRow("other-keys-ignored-right-stops-at-second")
            << keys({Up, Qt::Key_A, Right, Right, Ret}) << 1 << 1;
        QTest::newRow("left-stops-at-first") << keys({Right, Left, Left, Ret}) << 0 << 1;
        QTest::newRow("escape-rejects") << keys({Esc}) << 2 << 0;
    }
    void yesno()
    {
        QFETCH(QTestEventList, events);
        QFETCH(int, value);
        YesnoSelect dialog("Save?", "Yes", "No");
        QTEST(execAnswered(dialog, events), "result");
        QCOMPARE(dialog.getValue(), value);
        const QImage image = shoot(dialog, QString("widgets_yesno_") + QTest::currentDataTag());
        const QFontMetrics metrics{QFont("nits")};
        const int y = metrics.ascent() + 19 + 8;
        QCOMPARE(lit(image, 128 - metrics.horizontalAdvance("Yes") - 15, y), value != 1);
        QCOMPARE(lit(image, 135, y), value == 1);
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
    }
};

QTEST_MAIN(TestWidgets)
#include "tst_widgets.moc"
