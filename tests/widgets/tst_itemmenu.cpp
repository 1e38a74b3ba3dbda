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

const QVector<QString> kValues{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};

void fill(ItemMenu &menu, int rows)
{
    menu.resize(256, 64);
    for (int i = 0; i < rows; ++i) {
        auto *row = new KoSpinBox(&menu);
        row->setText1(QStringLiteral("Row %1").arg(i));
        row->addItem(kValues);
        menu.addItem(row);
    }
}

// Every exit signal of the menu in the order it came; "*" marks one that came after the menu
// had already left the screen.
struct ExitLog
{
    QStringList lines;

    explicit ExitLog(ItemMenu &menu)
    {
        auto note = [this, &menu](const QString &what) {
            lines.append(what + (menu.isVisible() ? QString() : QStringLiteral("*")));
        };
        QObject::connect(&menu, &ItemMenu::triggergoin,
                         [=](int i) { note(QStringLiteral("goin %1").arg(i)); });
        QObject::connect(&menu, &ItemMenu::okPressedLan,
                         [=](int i, QString) { note(QStringLiteral("lan %1").arg(i)); });
        QObject::connect(&menu, &ItemMenu::okDateTimePressed,
                         [=](int, QString) { note(QStringLiteral("datetime")); });
        QObject::connect(&menu, &ItemMenu::okPressed,
                         [=](int, QString) { note(QStringLiteral("ok")); });
        QObject::connect(&menu, &ItemMenu::okPressedForQuick,
                         [=](int, QString) { note(QStringLiteral("quick")); });
        QObject::connect(&menu, &ItemMenu::escPressed, [=] { note(QStringLiteral("esc")); });
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
        QTest::newRow("third-row-of-first-page") << 5 << 2 << 0 << 3;
        QTest::newRow("exact-second-page") << 6 << 3 << 3 << 3;
    }
    void paging()
    {
        QFETCH(int, rows);
        QFETCH(int, current);
        QFETCH(int, firstShown);
        QFETCH(int, shown);
        ItemMenu menu;
        fill(menu, rows);
        menu.setCurIndex(current);
        const QList<KoSpinBox *> all = menu.findChildren<KoSpinBox *>();
        QCOMPARE(all.size(), rows);
        const int h = all.first()->height();
        for (int i = 0; i < rows; ++i) {
            KoSpinBox *row = all.at(i);
            const bool onPage = i >= firstShown && i < firstShown + shown;
            QCOMPARE(!row->isHidden(), onPage);
            QVERIFY(!row->isEnabled());
            if (!onPage)
                continue;
            QCOMPARE(row->geometry(), QRect(40, 4 + (i - firstShown) * h, 241, h));
            QCOMPARE(row->font().bold(), i == current);
        }
        // the picture shows the arrows of exactly the rows on the page
        const QImage image =
            shoot(menu, QStringLiteral("itemmenu_%1").arg(QTest::currentDataTag()));
        for (int k = 0; k < 3; ++k)
            QCOMPARE(lit(image, 40 + 144, 4 + k * h + 9), k < shown);
    }

    void refusedIndex()
    {
        ItemMenu menu;
        fill(menu, 3);
        menu.setCurIndex(1);
        menu.setCurIndex(3);
        menu.setCurIndex(-1);
        QCOMPARE(menu.getCurIndex(), 1);
    }

    void keys_data()
    {
        QTest::addColumn<bool>("moveLR");
        QTest::addColumn<int>("rowStart");
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("menuIndex");
        QTest::addColumn<int>("rowIndex");
        QTest::addColumn<int>("announced");

        auto keys = [](std::initializer_list<Qt::Key> list) {
            QTestEventList events;
            for (Qt::Key key : list)
                events.addKeyClick(key);
            return events;
        };
        QTest::newRow("down-stops-at-last-row")
            << true << 0
            << keys({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down}) << 4
            << 0 << 0;
        QTest::newRow("up-stops-at-first-row")
            << true << 0 << keys({Qt::Key_Down, Qt::Key_Up, Qt::Key_Up}) << 0 << 0 << 0;
        QTest::newRow("right-wraps-the-value")
            << true << 0 << keys({Qt::Key_Right, Qt::Key_Right, Qt::Key_Right}) << 0 << 0 << 3;
        QTest::newRow("left-wraps-the-value") << true << 0 << keys({Qt::Key_Left}) << 0 << 2 << 1;
        QTest::newRow("keys-act-on-the-highlighted-row")
            << true << 0 << keys({Qt::Key_Down, Qt::Key_Right}) << 1 << 1 << 1;
        QTest::newRow("fixed-left-blocked-at-first")
            << false << 0 << keys({Qt::Key_Left}) << 0 << 0 << 0;
        QTest::newRow("fixed-left-announces-only")
            << false << 2 << keys({Qt::Key_Left}) << 0 << 2 << 1;
        QTest::newRow("fixed-right-announces-only")
            << false << 0 << keys({Qt::Key_Right}) << 0 << 0 << 1;
        QTest::newRow("fixed-right-blocked-at-second")
            << false << 1 << keys({Qt::Key_Right}) << 0 << 1 << 0;
        QTest::newRow("keys-outside-the-block-dropped")
            << true << 0
            << keys({Qt::Key_A, Qt::Key_5, Qt::Key_F1, Qt::Key_PageDown, Qt::Key_Space}) << 0 << 0
            << 0;
        QTest::newRow("unhandled-keys-inside-the-block")
            << true << 0
            << keys({Qt::Key_Home, Qt::Key_End, Qt::Key_Tab, Qt::Key_Enter, Qt::Key_Delete}) << 0
            << 0 << 0;
    }
    void keys()
    {
        QFETCH(bool, moveLR);
        QFETCH(int, rowStart);
        QFETCH(QTestEventList, events);
        QFETCH(int, menuIndex);
        QFETCH(int, rowIndex);
        QFETCH(int, announced);
        QWidget parent;
        ItemMenu menu;
        menu.setParent(&parent);
        fill(menu, 5);
        menu.setMoveLRFlag(moveLR);
        const QList<KoSpinBox *> rows = menu.findChildren<KoSpinBox *>();
        for (KoSpinBox *row : rows)
            row->setCurIndex(rowStart);
        QSignalSpy announces(rows.at(menuIndex), &SpinItems::triggered);
        QSignalSpy exits(&menu, &ItemMenu::escPressed);
        QSignalSpy lan(&menu, &ItemMenu::okPressedLan);
        EventCounter parentKeys(&parent, QEvent::KeyPress);
        parent.show();
        events.simulate(&menu);
        QCOMPARE(menu.getCurIndex(), menuIndex);
        QCOMPARE(rows.at(menuIndex)->getCurIndex(), rowIndex);
        QCOMPARE(announces.count(), announced);
        if (announced > 0) {
            QCOMPARE(announces.last().at(0).toInt(), rowIndex);
            QCOMPARE(announces.last().at(1).toString(), kValues.at(rowIndex));
        }
        QCOMPARE(parentKeys.count, 0); // nothing is passed on
        QCOMPARE(exits.count(), 0);
        QCOMPARE(lan.count(), 0);
        QVERIFY(menu.isVisible());
    }

    void exits_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QStringList>("signalOrder");
        QTest::addColumn<QString>("screenAfter");
        QTest::newRow("return-announces-then-switches")
            << Qt::Key_Return << "plain" << QStringList{"lan 1", "datetime", "esc*"} << "prev";
        QTest::newRow("return-quick-goes-to-quick-widget")
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
        QWidget prev;
        QWidget quick;
        ItemMenu menu;
        fill(menu, 3);
        menu.setCurIndex(1);
        menu.setPrevWidget(&prev);
        menu.setPrevQuickWidget(&quick);
        menu.setQuickFlag(mode == QLatin1String("quick"));
        menu.setGoInFlag(mode == QLatin1String("goin"));
        menu.setEscGoPreFlag(mode != QLatin1String("escstays"));
        ExitLog log(menu);
        menu.show();
        QTest::keyClick(&menu, key);
        QTEST(log.lines, "signalOrder");
        QCOMPARE(menu.isVisible(), screenAfter == QLatin1String("menu"));
        QCOMPARE(prev.isVisible(), screenAfter == QLatin1String("prev"));
        QCOMPARE(quick.isVisible(), screenAfter == QLatin1String("quick"));
        QWidget *handed = screenAfter == QLatin1String("prev")    ? &prev
                          : screenAfter == QLatin1String("quick") ? &quick
                                                                  : nullptr;
        QCOMPARE(menu.getMessWidget(), handed);
    }

    void quickFlagIsOneShot()
    {
        QWidget prev;
        QWidget quick;
        ItemMenu menu;
        fill(menu, 3);
        menu.setPrevWidget(&prev);
        menu.setPrevQuickWidget(&quick);
        menu.setQuickFlag(true);
        QSignalSpy quickSpy(&menu, &ItemMenu::okPressedForQuick);
        QSignalSpy plainSpy(&menu, &ItemMenu::okDateTimePressed);
        menu.show();
        QTest::keyClick(&menu, Qt::Key_Return);
        WidgetChange::instance()->Go2NewWidget(&quick, &menu);
        QTest::keyClick(&menu, Qt::Key_Return);
        QCOMPARE(quickSpy.count(), 1);
        QCOMPARE(plainSpy.count(), 1);
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
        QTest::keyClick(&menu, Qt::Key_Escape);
        QVERIFY(!other.isVisible());
        QCOMPARE(log.lines, (QStringList{"lan 0", "datetime*", "esc*"}));
        QCOMPARE(menu.getMessWidget(), nullptr);
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
        if (present) {
            QImage picture(20, 20, QImage::Format_RGB32);
            picture.fill(Qt::white);
            QVERIFY(picture.save(root.path(QStringLiteral("/apps/res/pics/settings2.png"))));
        }
        ItemMenu menu;
        menu.resize(256, 64);
        const QImage image =
            shoot(menu, QStringLiteral("itemmenu_%1").arg(QTest::currentDataTag()));
        QVERIFY(!lit(image, 5, 9));
        QCOMPARE(lit(image, 5, 10), present);
        QCOMPARE(lit(image, 19, 29), present);
        QVERIFY(!lit(image, 20, 30));
    }
};

QTEST_MAIN(TestItemMenu)
#include "tst_itemmenu.moc"
