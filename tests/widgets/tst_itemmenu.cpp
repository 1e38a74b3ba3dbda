// The paged option menu: paging, keys, the exit signals and the screen hand-over.
#include "widgetshots.h"

#include "app/startup.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/widgetchange.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

namespace {

QList<KoSpinBox *> fill(ItemMenu &menu, int rows)
{
    menu.resize(256, 64);
    QList<KoSpinBox *> added;
    for (int i = 0; i < rows; ++i) {
        added << new KoSpinBox(&menu);
        added.last()->setText1(QStringLiteral("Row %1").arg(i));
        added.last()->addItem({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
        menu.addItem(added.last());
    }
    return added;
}

// The exit signals in the order they came; "*" marks one sent after the menu left the screen.
struct ExitLog
{
    QStringList lines;
    explicit ExitLog(ItemMenu &menu)
    {
        auto note = [this, &menu](const QString &what) {
            lines << what + (menu.isVisible() ? "" : "*");
        };
        QObject::connect(&menu, &ItemMenu::triggergoin,
                         [=](int i) { note("goin " + QString::number(i)); });
        QObject::connect(&menu, &ItemMenu::okPressedLan,
                         [=](int i) { note("lan " + QString::number(i)); });
        QObject::connect(&menu, &ItemMenu::okDateTimePressed, [=] { note("datetime"); });
        QObject::connect(&menu, &ItemMenu::okPressed, [=] { note("ok"); });
        QObject::connect(&menu, &ItemMenu::okPressedForQuick, [=] { note("quick"); });
        QObject::connect(&menu, &ItemMenu::escPressed, [=] { note("esc"); });
    }
};

} // namespace

class TestItemMenu : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    void paging_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("current");
        QTest::addColumn<int>("firstShown");
        QTest::addColumn<int>("shown");
        QTest::newRow("first-page") << 5 << 1 << 0 << 3;
        QTest::newRow("last-page-of-five") << 5 << 4 << 3 << 2;
        QTest::newRow("exact-second-page") << 6 << 3 << 3 << 3;
    }
    void paging()
    {
        QFETCH(int, rows);
        QFETCH(int, current);
        QFETCH(int, firstShown);
        QFETCH(int, shown);
        ItemMenu menu;
        const QList<KoSpinBox *> all = fill(menu, rows);
        menu.setCurIndex(current);
        menu.setCurIndex(rows); // refused
        QCOMPARE(menu.getCurIndex(), current);
        const int h = all.first()->height();
        for (int i = 0; i < rows; ++i) {
            const bool onPage = i >= firstShown && i < firstShown + shown;
            QCOMPARE(!all.at(i)->isHidden(), onPage);
            QVERIFY(!all.at(i)->isEnabled()); // rows take no input of their own
            if (onPage) {
                QCOMPARE(all.at(i)->geometry(), QRect(40, 4 + (i - firstShown) * h, 241, h));
                QCOMPARE(all.at(i)->font().bold(), i == current);
            }
        }
        // the picture shows the arrows of exactly the rows on the page
        const QImage image = shoot(menu, QStringLiteral("itemmenu_") + QTest::currentDataTag());
        for (int k = 0; k < 3; ++k)
            QCOMPARE(lit(image, 40 + 144, 4 + k * h + 9), k < shown);
    }

    void navigationKeys_data()
    {
        QTest::addColumn<bool>("moveLR");
        QTest::addColumn<int>("rowStart");
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("menuIndex");
        QTest::addColumn<int>("rowIndex");
        QTest::addColumn<int>("announced");
        const Qt::Key up = Qt::Key_Up, down = Qt::Key_Down, left = Qt::Key_Left,
                      right = Qt::Key_Right;
        QTest::newRow("down-stops-at-last-row")
            << true << 0 << keys({down, down, down, down, down}) << 4 << 0 << 0;
        QTest::newRow("up-stops-at-first-row") << true << 0 << keys({down, up, up}) << 0 << 0 << 0;
        QTest::newRow("right-wraps-the-value")
            << true << 0 << keys({right, right, right}) << 0 << 0 << 3;
        QTest::newRow("left-on-highlighted-row") << true << 0 << keys({down, left}) << 1 << 2 << 1;
        QTest::newRow("fixed-left-blocked-at-first") << false << 0 << keys({left}) << 0 << 0 << 0;
        QTest::newRow("fixed-left-announces-only") << false << 2 << keys({left}) << 0 << 2 << 1;
        QTest::newRow("fixed-right-announces-only") << false << 0 << keys({right}) << 0 << 0 << 1;
        QTest::newRow("fixed-right-blocked-at-second")
            << false << 1 << keys({right}) << 0 << 1 << 0;
        QTest::newRow("keys-outside-block-dropped")
            << true << 0 << keys({Qt::Key_A, Qt::Key_5, Qt::Key_F1, Qt::Key_Space}) << 0 << 0 << 0;
        QTest::newRow("other-keys-inside-block")
            << true << 0 << keys({Qt::Key_Home, Qt::Key_Tab, Qt::Key_Enter}) << 0 << 0 << 0;
    }
    void navigationKeys()
    {
        QFETCH(bool, moveLR);
        QFETCH(int, rowStart);
        QFETCH(QTestEventList, events);
        QFETCH(int, menuIndex);
        QFETCH(int, rowIndex);
        QWidget parent;
        auto *menu = new ItemMenu(&parent);
        const QList<KoSpinBox *> rows = fill(*menu, 5);
        menu->setMoveLRFlag(moveLR);
        for (KoSpinBox *row : rows)
            row->setCurIndex(rowStart);
        QSignalSpy announces(rows.at(menuIndex), &SpinItems::triggered);
        QSignalSpy exits(menu, &ItemMenu::okPressedLan);
        EventCounter parentKeys(&parent, QEvent::KeyPress);
        parent.show();
        events.simulate(menu);
        QCOMPARE(menu->getCurIndex(), menuIndex);
        QCOMPARE(rows.at(menuIndex)->getCurIndex(), rowIndex);
        QTEST(announces.count(), "announced");
        if (!announces.isEmpty())
            QCOMPARE(announces.last(), (QVariantList{rowIndex, QString(QChar('a' + rowIndex))}));
        QCOMPARE(parentKeys.count, 0); // nothing is passed on
        QCOMPARE(exits.count(), 0);
    }

    void exits_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QStringList>("signalOrder");
        QTest::addColumn<QString>("screenAfter");
        QTest::newRow("return-announces-then-switches")
            << Qt::Key_Return << "plain" << QStringList{"lan 1", "datetime", "esc*"} << "prev";
        QTest::newRow("return-quick-to-quick-widget")
            << Qt::Key_Return << "quick" << QStringList{"lan 1", "ok*", "quick*", "esc*"}
            << "quick";
        QTest::newRow("return-go-in-stays")
            << Qt::Key_Return << "goin" << QStringList{"goin 1"} << "menu";
        QTest::newRow("escape-switches-then-announces")
            << Qt::Key_Escape << "plain" << QStringList{"lan 1", "datetime*", "esc*"} << "prev";
        QTest::newRow("escape-left-to-listener")
            << Qt::Key_Escape << "escstays" << QStringList{"lan 1", "esc"} << "menu";
    }
    void exits()
    {
        QFETCH(Qt::Key, key);
        QFETCH(QString, mode);
        QFETCH(QString, screenAfter);
        QWidget prev, quick;
        ItemMenu menu;
        fill(menu, 3);
        menu.setCurIndex(1);
        menu.setPrevWidget(&prev);
        menu.setPrevQuickWidget(&quick);
        menu.setQuickFlag(mode == "quick");
        menu.setGoInFlag(mode == "goin");
        menu.setEscGoPreFlag(mode != "escstays");
        ExitLog log(menu);
        menu.show();
        QTest::keyPress(&menu, key); // press only: by the release the menu may be off screen
        QTEST(log.lines, "signalOrder");
        QCOMPARE(menu.isVisible(), screenAfter == "menu");
        QCOMPARE(prev.isVisible(), screenAfter == "prev");
        QCOMPARE(quick.isVisible(), screenAfter == "quick");
        QCOMPARE(menu.getMessWidget(), screenAfter == "prev"    ? &prev
                                       : screenAfter == "quick" ? &quick
                                                                : nullptr);

        // the quick flag is one-shot: the next Return goes the plain way
        WidgetChange::instance()->Go2NewWidget(&menu);
        menu.setGoInFlag(false);
        QTest::keyPress(&menu, Qt::Key_Return);
        QCOMPARE(menu.getMessWidget(), &prev);
    }

    void escapeWithNowhereToGoClosesAll()
    {
        QWidget other;
        ItemMenu menu;
        fill(menu, 3);
        ExitLog log(menu);
        other.show();
        menu.show();
        QTest::keyPress(&menu, Qt::Key_Escape);
        QVERIFY(!other.isVisible());
        QCOMPARE(log.lines, (QStringList{"lan 0", "datetime*", "esc*"}));
    }

    void backgroundPicture_data()
    {
        QTest::addColumn<bool>("present");
        QTest::newRow("picture-drawn-below-the-top") << true;
        QTest::newRow("picture-missing-draws-nothing") << false;
    }
    void backgroundPicture()
    {
        QFETCH(bool, present);
        TestDeviceRoot root;
        QImage picture(20, 20, QImage::Format_RGB32);
        picture.fill(Qt::white);
        if (present)
            QVERIFY(picture.save(root.path("/apps/res/pics/settings2.png")));
        ItemMenu menu;
        menu.resize(256, 64);
        const QImage image = shoot(menu, QStringLiteral("itemmenu_") + QTest::currentDataTag());
        QVERIFY(!lit(image, 5, 9) && !lit(image, 20, 30));
        QCOMPARE(lit(image, 5, 10) && lit(image, 19, 29), present);
    }
};

QTEST_MAIN(TestItemMenu)
#include "tst_itemmenu.moc"
