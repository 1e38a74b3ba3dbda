// The screen switcher, text fitting, the sand glass and the seek tip.
#include "widgetshots.h"

#include "app/startup.h"
#include "widgets/cropstring.h"
#include "widgets/sandglass.h"
#include "widgets/seektipwnd.h"
#include "widgets/widgetchange.h"

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QMovie>
#include <QtTest>

namespace {

bool isUp(QWidget &widget)
{
    return widget.isVisible() && widget.isEnabled();
}

} // namespace

class TestSmallWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    void widgetChangeHandsOver()
    {
        QWidget screen;
        QWidget a(&screen);
        QWidget b(&screen);
        QWidget c(&screen);
        screen.show();
        WidgetChange *change = WidgetChange::instance();
        QCOMPARE(WidgetChange::myChange, change);
        QWidget *before = change->getCurWidget();

        change->Go2PrevWidget(nullptr, &b); // no source: nothing at all
        QVERIFY(isUp(a) && isUp(b) && isUp(c));
        QCOMPARE(change->getCurWidget(), before);

        change->Go2NewWidget(&a, &b);
        QVERIFY(!a.isVisible() && !a.isEnabled());
        QVERIFY(isUp(b));
        QCOMPARE(screen.focusWidget(), &b);
        QCOMPARE(change->getCurWidget(), &b);
        QCOMPARE(change->getPrevWidget(), &a);

        change->Go2NewWidget(&c); // from whatever is current
        QVERIFY(!isUp(b) && isUp(c));
        QCOMPARE(change->getCurWidget(), &c);
        QCOMPARE(change->getPrevWidget(), &a);

        change->Go2PrevWidget(&c, &a);
        QVERIFY(!isUp(c) && isUp(a));
        QCOMPARE(change->getCurWidget(), &a);
        QCOMPARE(change->getPrevWidget(), nullptr);

        change->Go2PrevWidget(&a, nullptr); // nowhere to go: the current one stays recorded
        QVERIFY(!isUp(a));
        QCOMPARE(change->getCurWidget(), &a);

        change->Go2NewWidget(&b, &c);
        change->Go2NewWidget(nullptr, &b); // a null source is remembered as well
        QVERIFY(isUp(b) && isUp(c));
        QCOMPARE(change->getPrevWidget(), nullptr);
    }

    void cropString_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("widthOf"); // maxWidth = width of this many letters (+ suffix) ...
        QTest::addColumn<int>("extra");   // ... plus this many pixels
        QTest::addColumn<bool>("withSuffix");
        QTest::addColumn<int>("kept");
        QTest::addColumn<bool>("wider");
        QTest::newRow("fits-unchanged-without-suffix") << 10 << 10 << 0 << false << 10 << false;
        QTest::newRow("exact-width-found") << 20 << 5 << 0 << true << 5 << false;
        QTest::newRow("closes-after-too-wide-prefix") << 20 << 5 << 1 << true << 6 << true;
        QTest::newRow("narrower-than-suffix") << 20 << 0 << -1 << true << 1 << true;
        QTest::newRow("ten-halvings-run-out") << 2048 << 1500 << 1 << true << 1502 << true;
    }
    void cropString()
    {
        QFETCH(int, length);
        QFETCH(int, widthOf);
        QFETCH(int, extra);
        QFETCH(bool, withSuffix);
        QFETCH(int, kept);
        QFETCH(bool, wider);
        const QFont font;
        const QFontMetrics metrics(font);
        const QString suffix = QStringLiteral("...");
        const QString text(length, QLatin1Char('a'));
        auto letters = [&](int n) {
            return metrics.horizontalAdvance(QString(n, QLatin1Char('a')));
        };
        QVERIFY(letters(2) - letters(1) >= 2); // every letter more is wider than one pixel
        const int maxWidth =
            letters(widthOf) + (withSuffix ? metrics.horizontalAdvance(suffix) : 0) + extra;

        const QString result = crop_string(font, text, maxWidth, suffix);
        QCOMPARE(result, text.left(kept) + (withSuffix ? suffix : QString()));
        QCOMPARE(metrics.horizontalAdvance(result) > maxWidth, wider);
    }

    void sandGlassWithoutPicture()
    {
        TestDeviceRoot root;
        SandGlass glass;
        QCOMPARE(glass.size(), QSize(33, 33));
        QCOMPARE(glass.pos(), QPoint(0, 0));
        QVERIFY(glass.windowFlags() & Qt::FramelessWindowHint);
        QCOMPARE(glass.windowTitle(), QStringLiteral("Form"));
        auto *label = glass.findChild<QLabel *>(QStringLiteral("label"));
        QVERIFY(label && label->movie());
        QCOMPARE(label->movie()->fileName(), root.path(QStringLiteral("/apps/res/sandglass.gif")));
        // the missing animation leaves an empty square
        const QImage image = shoot(glass, QStringLiteral("sandglass_missing"));
        QVERIFY(!lit(image, 16, 16));
    }

    void seekTipBox()
    {
        SeekTipWnd tip;
        tip.showText(QStringLiteral("01:23"));
        QVERIFY(tip.isVisible());
        const QImage image = shoot(tip, QStringLiteral("seektipwnd"));
        // the outline of the box 1, 1, 126 x 26, filled black inside
        QVERIFY(lit(image, 1, 14) && lit(image, 127, 14));
        QVERIFY(lit(image, 64, 1) && lit(image, 64, 27));
        QVERIFY(!lit(image, 0, 14) && !lit(image, 3, 3) && !lit(image, 124, 24));
        bool textDrawn = false;
        for (int x = 3; x < 125; ++x)
            textDrawn = textDrawn || lit(image, x, 14);
        QVERIFY(textDrawn);
    }
};

QTEST_MAIN(TestSmallWidgets)
#include "tst_smallwidgets.moc"
