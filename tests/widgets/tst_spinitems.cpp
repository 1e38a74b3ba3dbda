// The option rows: the plain row, the spin box, the spin slider and the volume row.
#include "widgetshots.h"

#include "app/startup.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/spinvolum.h"

#include <QApplication>
#include <QProgressBar>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include <memory>

namespace {

std::unique_ptr<SpinItems> makeRow(const QString &kind, int values = 3)
{
    std::unique_ptr<SpinItems> row(kind == "spinbox" ? new KoSpinBox
                                   : kind == "slide" ? new KoSpinSlide
                                   : kind == "volum" ? new SpinVolum
                                                     : new SpinItems);
    for (int i = 0; i < values; ++i)
        row->addItem(QString(QChar('A' + i)));
    return row;
}

// Painting a row once unselected, as the menu shows it beside the highlighted one, is what
// places the slider rows' bars.
void paintUnselected(SpinItems &row)
{
    row.setSelect(false);
    row.grab();
}

} // namespace

class TestSpinItems : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    void moveRules_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("start");
        QTest::addColumn<bool>("next");
        QTest::addColumn<int>("expected");
        QTest::newRow("plain-next-wraps-to-first") << "plain" << 2 << true << 0;
        QTest::newRow("plain-prev-wraps-to-last") << "plain" << 0 << false << 2;
        QTest::newRow("spinbox-next-wraps-to-first") << "spinbox" << 2 << true << 0;
        QTest::newRow("spinbox-prev-wraps-to-last") << "spinbox" << 0 << false << 2;
        QTest::newRow("slide-next-stops-at-last") << "slide" << 2 << true << 2;
        QTest::newRow("slide-prev-stops-at-first") << "slide" << 0 << false << 0;
        QTest::newRow("volum-next-stops-at-last") << "volum" << 2 << true << 2;
        QTest::newRow("volum-prev-steps") << "volum" << 2 << false << 1;
    }
    void moveRules()
    {
        QFETCH(QString, kind);
        QFETCH(int, start);
        QFETCH(bool, next);
        auto row = makeRow(kind);
        row->setCurIndex(start);
        QSignalSpy spy(row.get(), &SpinItems::triggered);
        next ? row->moveNext() : row->movePrev();
        QTEST(row->getCurIndex(), "expected");
        QCOMPARE(row->getCurItem(), QString(QChar('A' + row->getCurIndex())));
        QCOMPARE(spy.count(), 0); // announcing is the menu's business
        row->trigger(4, QStringLiteral("x"));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0), (QVariantList{4, QStringLiteral("x")}));
    }

    void refusedIndexKeepsRowAndPicture()
    {
        auto row = makeRow("plain");
        row->setCurIndex(1);
        row->show();
        QVERIFY(QTest::qWaitForWindowExposed(row.get()));
        EventCounter paints(row.get(), QEvent::Paint);
        row->setCurIndex(3);
        row->setCurIndex(-1);
        QCoreApplication::processEvents();
        QCOMPARE(row->getCurIndex(), 1);
        QCOMPARE(paints.count, 0);
        row->setCurIndex(2);
        QTRY_VERIFY(paints.count > 0);
    }

    void plainRowDrawsNothing()
    {
        auto row = makeRow("plain");
        QCOMPARE(makeRow("plain", 0)->getCurItem(), QString());
        row->setText1(QStringLiteral("Format"));
        paintUnselected(*row);
        const QImage image = shoot(*row, QStringLiteral("spinitems_plain"));
        QCOMPARE(image.size(), QSize(241, 21));
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                QVERIFY(!lit(image, x, y));
    }

    void spinBoxArrows_data()
    {
        QTest::addColumn<int>("goFront"); // -1: never called, else the argument
        QTest::addColumn<int>("values");
        QTest::addColumn<int>("leftX");
        QTest::addColumn<int>("rightX");
        QTest::newRow("default-place") << -1 << 2 << 140 << 198;
        QTest::newRow("go-front") << 1 << 2 << 110 << 205;
        QTest::newRow("go-front-false-still-moves-left") << 0 << 2 << 110 << 205;
        QTest::newRow("no-values-no-arrows") << -1 << 0 << 140 << 198;
    }
    void spinBoxArrows()
    {
        QFETCH(int, goFront);
        QFETCH(int, values);
        QFETCH(int, leftX);
        QFETCH(int, rightX);
        auto row = makeRow("spinbox", values);
        auto *box = static_cast<KoSpinBox *>(row.get());
        if (goFront >= 0)
            box->setGoFrontFlag(goFront != 0);
        const QImage image = shoot(*box, QStringLiteral("kospinbox_") + QTest::currentDataTag());
        // the arrows' insides, and the dark beside, above and below them
        QCOMPARE(lit(image, leftX + 4, 9), values > 0);
        QCOMPARE(lit(image, rightX + 3, 9), values > 0);
        QVERIFY(!lit(image, leftX - 3, 9) && !lit(image, rightX + 10, 9));
        QVERIFY(!lit(image, leftX + 4, 2) && !lit(image, rightX + 3, 17));
    }

    void sliderPlaceAndValue_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < 6; ++i)
            QTest::addRow("step-%d", i) << i;
    }
    void sliderPlaceAndValue()
    {
        QFETCH(int, index);
        auto row = makeRow("slide", 6);
        auto *slider = row->findChild<QSlider *>();
        auto *bar = row->findChild<QProgressBar *>();
        // a row that was never painted unselected has not found its place yet
        row->setCurIndex(index == 0 ? 1 : 0);
        QCOMPARE(slider->geometry(), QRect(-2, -3, 62, 18));

        paintUnselected(*row);
        row->setCurIndex(index);
        QCOMPARE(slider->geometry(), QRect(140, 4, 62, 18));
        QCOMPARE(slider->value(), index * 6);
        QCOMPARE(bar->geometry(), QRect(145, 7, 67, 18));
        QCOMPARE(bar->value(), index * 3);
        QVERIFY(bar->isHidden());
        const QImage image = shoot(*row, QStringLiteral("kospinslide_step%1").arg(index));
        // the handle (8 pixels wide) travels 54 pixels over the six steps
        const int handleX = 140 + index * 54 / 5 + 4;
        QVERIFY(lit(image, handleX, 10));
        QVERIFY(!lit(image, index < 3 ? handleX + 15 : handleX - 15, 10));
    }

    void volumeRow_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("silent") << 0;
        QTest::newRow("full-bar") << 5;
    }
    void volumeRow()
    {
        QFETCH(int, index);
        auto row = makeRow("volum", 6);
        // the device's GB2312 caption, whatever the locale is
        QCOMPARE(row->getText1(), QString::fromUtf8("\u6717\u8BFB\u97F3\u91CF"));
        paintUnselected(*row);
        row->setCurIndex(index);
        auto *bar = row->findChild<QProgressBar *>();
        QVERIFY(!bar->isHidden());
        QCOMPARE(bar->value(), index * 3);
        QCOMPARE(bar->geometry(), QRect(145, 1, 67, 18));
        const QImage image = shoot(*row, QStringLiteral("spinvolum_%1").arg(index));
        QVERIFY(lit(image, 134, 9) && lit(image, 235, 9)); // the arrows
        QCOMPARE(lit(image, 150, 10), index > 0);          // first chunk of the level
        QVERIFY(!lit(image, 226, 9));
    }
};

QTEST_MAIN(TestSpinItems)
#include "tst_spinitems.moc"
