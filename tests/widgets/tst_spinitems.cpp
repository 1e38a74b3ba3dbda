// The option rows: the plain row, the spin box, the spin slider and the volume row.
#include "widgetshots.h"

#include "app/startup.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/spinvolum.h"

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include <memory>

namespace {

std::unique_ptr<SpinItems> makeRow(const QString &kind)
{
    std::unique_ptr<SpinItems> row;
    if (kind == QLatin1String("spinbox"))
        row.reset(new KoSpinBox);
    else if (kind == QLatin1String("slide"))
        row.reset(new KoSpinSlide);
    else if (kind == QLatin1String("volum"))
        row.reset(new SpinVolum);
    else
        row.reset(new SpinItems);
    row->addItem(QVector<QString>{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
    return row;
}

// an unselected row as the menu shows it beside the highlighted one; painting it once places
// the slider rows' bars
void unselect(SpinItems &row)
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
        QTest::newRow("spinbox-next-steps") << "spinbox" << 0 << true << 1;
        QTest::newRow("slide-next-stops-at-last") << "slide" << 2 << true << 2;
        QTest::newRow("slide-prev-stops-at-first") << "slide" << 0 << false << 0;
        QTest::newRow("slide-prev-steps") << "slide" << 2 << false << 1;
        QTest::newRow("volum-next-stops-at-last") << "volum" << 2 << true << 2;
        QTest::newRow("volum-prev-stops-at-first") << "volum" << 0 << false << 0;
        QTest::newRow("volum-next-steps") << "volum" << 1 << true << 2;
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
    }

    void setCurIndexRefusesOutsideValues_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("past-the-end") << 3;
        QTest::newRow("negative") << -1;
    }
    void setCurIndexRefusesOutsideValues()
    {
        QFETCH(int, index);
        auto row = makeRow(QStringLiteral("plain"));
        row->setCurIndex(1);
        row->show();
        QVERIFY(QTest::qWaitForWindowExposed(row.get()));
        EventCounter paints(row.get(), QEvent::Paint);
        row->setCurIndex(index);
        QCoreApplication::processEvents();
        QCOMPARE(row->getCurIndex(), 1);
        QCOMPARE(paints.count, 0);
        row->setCurIndex(2);
        QTRY_VERIFY(paints.count > 0);
    }

    void triggerAnnouncesUnchanged()
    {
        SpinItems row;
        QCOMPARE(row.getCurItem(), QString());
        QSignalSpy spy(&row, &SpinItems::triggered);
        row.trigger(4, QStringLiteral("x"));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toInt(), 4);
        QCOMPARE(spy.at(0).at(1).toString(), QStringLiteral("x"));
    }

    void plainRowFormAndEmptyPicture()
    {
        auto row = makeRow(QStringLiteral("plain"));
        row->setText1(QStringLiteral("Format"));
        unselect(*row);
        QCOMPARE(row->size(), QSize(241, 21));
        auto *label = row->findChild<QLabel *>(QStringLiteral("label"));
        QVERIFY(label);
        QCOMPARE(label->geometry(), QRect(30, 0, 71, 21));
        QVERIFY(label->text().isEmpty());

        const QImage image = shoot(*row, QStringLiteral("spinitems_plain"));
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                QVERIFY2(!lit(image, x, y), qPrintable(QStringLiteral("%1,%2").arg(x).arg(y)));

        row->setWindowTitle(QStringLiteral("changed"));
        QEvent languageChange(QEvent::LanguageChange);
        QCoreApplication::sendEvent(row.get(), &languageChange);
        QCOMPARE(row->windowTitle(), QStringLiteral("Form"));
    }

    void spinBoxArrows_data()
    {
        QTest::addColumn<int>("goFront"); // -1: never called, else the argument
        QTest::addColumn<bool>("withValues");
        QTest::addColumn<int>("leftX");
        QTest::addColumn<int>("rightX");
        QTest::newRow("default-place") << -1 << true << 140 << 198;
        QTest::newRow("go-front") << 1 << true << 110 << 205;
        QTest::newRow("go-front-false-still-moves-left") << 0 << true << 110 << 205;
        QTest::newRow("no-values-no-arrows") << -1 << false << 140 << 198;
    }
    void spinBoxArrows()
    {
        QFETCH(int, goFront);
        QFETCH(bool, withValues);
        QFETCH(int, leftX);
        QFETCH(int, rightX);
        KoSpinBox box;
        box.setText1(QStringLiteral("Mode"));
        if (withValues)
            box.addItem(QVector<QString>{QStringLiteral("on"), QStringLiteral("off")});
        if (goFront >= 0)
            box.setGoFrontFlag(goFront != 0);
        const QImage image =
            shoot(box, QStringLiteral("kospinbox_%1").arg(QTest::currentDataTag()));
        // the arrow tips, and the gaps beside them
        QCOMPARE(lit(image, leftX + 4, 9), withValues);
        QCOMPARE(lit(image, rightX + 3, 9), withValues);
        QVERIFY(!lit(image, leftX - 3, 9));
        QVERIFY(!lit(image, rightX + 10, 9));
        QVERIFY(!lit(image, leftX + 4, 2));
        QVERIFY(!lit(image, rightX + 3, 17));
    }

    void spinBoxDeleteLastKeepsIndex()
    {
        KoSpinBox box;
        box.addItem(
            QVector<QString>{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
        box.setCurIndex(2);
        box.deleteLast();
        QCOMPARE(box.getSizeItems(), 2);
        QCOMPARE(box.getCurIndex(), 2);
        QCOMPARE(box.getText1(), QStringLiteral("teset"));
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
        KoSpinSlide slide;
        slide.setText1(QStringLiteral("Vol"));
        for (int i = 0; i < 6; ++i)
            slide.addItem(QString::number(i));
        auto *slider = slide.findChild<QSlider *>();
        auto *bar = slide.findChild<QProgressBar *>();
        QVERIFY(slider && bar);

        // a row that was never painted unselected has not found its place yet
        slide.setCurIndex(index == 0 ? 1 : 0);
        QCOMPARE(slider->geometry(), QRect(-2, -3, 62, 18));

        unselect(slide);
        slide.setCurIndex(index);
        QCOMPARE(slider->geometry(), QRect(140, 4, 62, 18));
        QCOMPARE(slider->value(), index * 6);
        QCOMPARE(bar->geometry(), QRect(145, 7, 67, 18));
        QCOMPARE(bar->value(), index * 3);
        QVERIFY(bar->isHidden());

        const QImage image = shoot(slide, QStringLiteral("kospinslide_step%1").arg(index));
        // the handle (8 pixels wide) travels 54 pixels over the six steps
        const int handleX = 140 + index * 54 / 5 + 4;
        QVERIFY(lit(image, handleX, 10));
        QVERIFY(!lit(image, index < 3 ? handleX + 15 : handleX - 15, 10));
    }

    void volumeRow_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("silent") << 0;
        QTest::newRow("middle") << 3;
        QTest::newRow("full-bar") << 5;
    }
    void volumeRow()
    {
        QFETCH(int, index);
        SpinVolum volume;
        // the caption comes from the device's GB2312 text whatever the locale is
        QCOMPARE(volume.getText1(),
                 QString::fromUtf8("\xE6\x9C\x97\xE8\xAF\xBB\xE9\x9F\xB3\xE9\x87\x8F"));
        for (int i = 0; i < 6; ++i)
            volume.addItem(QString::number(i));
        unselect(volume);
        volume.setCurIndex(index);
        auto *bar = volume.findChild<QProgressBar *>();
        QVERIFY(bar && !bar->isHidden());
        QCOMPARE(bar->value(), index * 3);
        QCOMPARE(bar->geometry(), QRect(145, 1, 67, 18));

        const QImage image = shoot(volume, QStringLiteral("spinvolum_%1").arg(index));
        QVERIFY(lit(image, 134, 9));              // left arrow, beside the bar
        QVERIFY(lit(image, 235, 9));              // right arrow
        QCOMPARE(lit(image, 150, 10), index > 0); // first chunk of the level
        QVERIFY(!lit(image, 226, 9));             // gap between the bar and the right arrow
    }
};

QTEST_MAIN(TestSpinItems)
#include "tst_spinitems.moc"
