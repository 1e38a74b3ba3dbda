// The screen switcher, text fitting, the sand glass and the seek tip.
#include "widgetshots.h"

#include "app/startup.h"
#include "widgets/cropstring.h"
#include "widgets/sandglass.h"
#include "widgets/seektipwnd.h"
#include "widgets/widgetchange.h"

#include <QApplication>
#include <QLabel>
#include <QMovie>
#include <QtTest>

class TestSmallWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    void widgetChangeHandsOver()
    {
        QWidget screen;
        QWidget a(&screen), b(&screen), c(&screen);
        screen.show();
        auto up = [](QWidget &w) { return w.isVisible() && w.isEnabled(); };
        WidgetChange *change = WidgetChange::instance();
        QCOMPARE(WidgetChange::myChange, change);
        QWidget *before = change->getCurWidget();

        change->Go2PrevWidget(nullptr, &b); // no source: nothing at all
        QVERIFY(up(a) && up(b) && up(c));
        QCOMPARE(change->getCurWidget(), before);

        change->Go2NewWidget(&a, &b);
        QVERIFY(!a.isVisible() && !a.isEnabled() && up(b));
        QCOMPARE(screen.focusWidget(), &b);
        QCOMPARE(change->getCurWidget(), &b);
        QCOMPARE(change->getPrevWidget(), &a);

        change->Go2NewWidget(&c); // away from whatever is current; the previous one stays
        QVERIFY(!up(b) && up(c));
        QCOMPARE(change->getCurWidget(), &c);
        QCOMPARE(change->getPrevWidget(), &a);

        change->Go2PrevWidget(&c, &a);
        QVERIFY(!up(c) && up(a));
        QCOMPARE(change->getCurWidget(), &a);
        QCOMPARE(change->getPrevWidget(), nullptr);

        change->Go2PrevWidget(&a, nullptr); // nowhere to go: still recorded as current
        QVERIFY(!up(a));
        QCOMPARE(change->getCurWidget(), &a);
    }

    void cropString_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("widthOf"); // maxWidth: this many letters and the suffix ...
        QTest::addColumn<int>("extra");   // ... plus these pixels
        QTest::addColumn<int>("kept");
        QTest::addColumn<bool>("wider");
        QTest::newRow("fits-unchanged-without-suffix") << 10 << 10 << 0 << -1 << false;
        QTest::newRow("exact-width-found") << 20 << 5 << 0 << 5 << false;
        QTest::newRow("closes-after-too-wide-prefix") << 20 << 5 << 1 << 6 << true;
        QTest::newRow("narrower-than-suffix") << 20 << 0 << -1 << 1 << true;
        QTest::newRow("ten-halvings-run-out") << 2048 << 1500 << 1 << 1502 << true;
    }
    void cropString()
    {
        QFETCH(int, length);
        QFETCH(int, widthOf);
        QFETCH(int, extra);
        QFETCH(int, kept);
        const QFont font;
        const QFontMetrics metrics(font);
        auto letters = [&](int n) { return metrics.horizontalAdvance(QString(n, 'a')); };
        QVERIFY(letters(2) - letters(1) >= 2); // every letter adds more than a pixel
        const int maxWidth = letters(widthOf) + metrics.horizontalAdvance("...") + extra;
        const QString text(length, 'a');

        const QString result = crop_string(font, text, maxWidth, "...");
        QCOMPARE(result, kept < 0 ? text : text.left(kept) + "...");
        QTEST(metrics.horizontalAdvance(result) > maxWidth, "wider");
    }

    void sandGlassWithoutPicture()
    {
        TestDeviceRoot root;
        SandGlass glass;
        QCOMPARE(glass.size(), QSize(33, 33));
        QVERIFY(glass.windowFlags() & Qt::FramelessWindowHint);
        auto *label = glass.findChild<QLabel *>("label");
        QCOMPARE(label->movie()->fileName(), root.path("/apps/res/sandglass.gif"));
        QVERIFY(!lit(shoot(glass, "sandglass_missing"), 16, 16)); // an empty square
    }

    void seekTipBox()
    {
        SeekTipWnd tip;
        tip.showText("01:23");
        QVERIFY(tip.isVisible());
        const QImage image = shoot(tip, "seektipwnd");
        // the outline of the box 1, 1, 126 x 26, black inside, the text across the middle
        QVERIFY(lit(image, 1, 14) && lit(image, 127, 14) && lit(image, 64, 1) &&
                lit(image, 64, 27));
        QVERIFY(!lit(image, 0, 14) && !lit(image, 3, 3) && !lit(image, 124, 24));
        int text = 0;
        for (int x = 3; x < 125; ++x)
            text += lit(image, x, 14);
        QVERIFY(text > 0);
    }
};

QTEST_MAIN(TestSmallWidgets)
#include "tst_smallwidgets.moc"
