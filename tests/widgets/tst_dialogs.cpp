// The modal dialogs: the yes/no question and the message notice.
#include "widgetshots.h"

#include "app/startup.h"
#include "widgets/messagedialog.h"
#include "widgets/yesnoselect.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

namespace {

QTestEventList keyClicks(std::initializer_list<Qt::Key> keys)
{
    QTestEventList events;
    for (Qt::Key key : keys)
        events.addKeyClick(key);
    return events;
}

// Answers the next modal dialog with the keys as soon as it is up, as a user would.
void answerModal(QTestEventList events)
{
    auto *poll = new QTimer;
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, [poll, events]() mutable {
        QWidget *dialog = QApplication::activeModalWidget();
        if (!dialog)
            return;
        poll->stop();
        poll->deleteLater();
        events.simulate(dialog);
    });
    poll->start();
}

// A dialog that never closes is rejected with -1, so the test fails instead of hanging.
void guard(QDialog &dialog)
{
    QTimer::singleShot(5000, &dialog, [&dialog] { dialog.done(-1); });
}

} // namespace

class TestDialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }

    void yesnoAnswers_data()
    {
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("result");
        QTest::newRow("return-on-first") << keyClicks({Qt::Key_Return}) << 0 << 1;
        QTest::newRow("right-return-second")
            << keyClicks({Qt::Key_Right, Qt::Key_Return}) << 1 << 1;
        QTest::newRow("right-stops-at-second")
            << keyClicks({Qt::Key_Right, Qt::Key_Right, Qt::Key_Return}) << 1 << 1;
        QTest::newRow("left-stops-at-first") << keyClicks({Qt::Key_Left, Qt::Key_Return}) << 0 << 1;
        QTest::newRow("right-left-back-to-first")
            << keyClicks({Qt::Key_Right, Qt::Key_Left, Qt::Key_Return}) << 0 << 1;
        QTest::newRow("escape-rejects") << keyClicks({Qt::Key_Escape}) << 2 << 0;
        QTest::newRow("escape-on-second-rejects")
            << keyClicks({Qt::Key_Right, Qt::Key_Escape}) << 2 << 0;
        QTest::newRow("other-keys-ignored")
            << keyClicks({Qt::Key_Up, Qt::Key_A, Qt::Key_Right, Qt::Key_Return}) << 1 << 1;
    }
    void yesnoAnswers()
    {
        QFETCH(QTestEventList, events);
        YesnoSelect dialog(QStringLiteral("Do you want to save recording?"), QStringLiteral("Yes"),
                           QStringLiteral("No"));
        QCOMPARE(dialog.geometry(), QRect(0, 0, 256, 64));
        guard(dialog);
        answerModal(events);
        QTEST(dialog.exec(), "result");
        QTEST(dialog.getValue(), "value");
    }

    void yesnoMark_data()
    {
        QTest::addColumn<QString>("question");
        QTest::addColumn<bool>("second");
        QTest::addColumn<int>("lineDrop"); // answers' line below the font's ascent
        const QString one = QString(33, QLatin1Char('q'));
        const QString wrapped = QStringLiteral("Do you want to save this very long recording now?");
        QTest::newRow("one-line-first-marked") << one << false << 19;
        QTest::newRow("one-line-second-marked") << one << true << 19;
        QTest::newRow("wrapped-first-marked") << wrapped << false << 24;
        QTest::newRow("wrapped-second-marked") << wrapped << true << 24;
        QTest::newRow("thirty-four-chars-wrap") << QString(34, QLatin1Char('q')) << true << 24;
    }
    void yesnoMark()
    {
        QFETCH(QString, question);
        QFETCH(bool, second);
        QFETCH(int, lineDrop);
        YesnoSelect dialog(question, QStringLiteral("Yes"), QStringLiteral("No"));
        if (second)
            QTest::keyClick(&dialog, Qt::Key_Right);
        const QImage image =
            shoot(dialog, QStringLiteral("yesnoselect_%1").arg(QTest::currentDataTag()));
        const QFontMetrics metrics{QFont(QStringLiteral("nits"))};
        const int y = metrics.ascent() + lineDrop;
        const int firstX = 128 - metrics.horizontalAdvance(QStringLiteral("Yes")) - 15;
        // the inside of the mark before each answer
        QCOMPARE(lit(image, firstX, y + 8), !second);
        QCOMPARE(lit(image, 135, y + 8), second);
        // the mark's tip at the top left is outlined nearly black
        QVERIFY(!lit(image, second ? 132 : firstX - 3, y + 3));
    }

    void messageKeys_data()
    {
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("result");
        QTest::newRow("return-accepts") << keyClicks({Qt::Key_Return}) << 1;
        QTest::newRow("escape-rejects") << keyClicks({Qt::Key_Escape}) << 0;
        QTest::newRow("other-keys-leave-it-open")
            << keyClicks({Qt::Key_Up, Qt::Key_A, Qt::Key_Left, Qt::Key_Return}) << 1;
    }
    void messageKeys()
    {
        QFETCH(QTestEventList, events);
        MessageDialog dialog(nullptr, QStringLiteral("Card full"), 0);
        QCOMPARE(dialog.size(), QSize(256, 64));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
        QSignalSpy finished(&dialog, &MessageDialog::finished);
        guard(dialog);
        answerModal(events);
        QTEST(dialog.exec(), "result");
        QCOMPARE(finished.count(), 1);
    }

    void messageWithoutTimeoutWaits()
    {
        MessageDialog dialog(nullptr, QStringLiteral("Waiting"), 0);
        QSignalSpy finished(&dialog, &MessageDialog::finished);
        dialog.show();
        QVERIFY(!finished.wait(300));
        QVERIFY(dialog.isVisible());
    }

    void messageTimesOut()
    {
        MessageDialog dialog(nullptr, QStringLiteral("Saved"), 200);
        QSignalSpy finished(&dialog, &MessageDialog::finished);
        guard(dialog);
        QCOMPARE(dialog.exec(), 1);
        QCOMPARE(finished.count(), 1);
        QVERIFY(!finished.wait(400)); // the timer went with the dialog
    }

    void messageRestartsTimerOnShow()
    {
        MessageDialog dialog(nullptr, QStringLiteral("Saved"), 200);
        QSignalSpy finished(&dialog, &MessageDialog::finished);
        dialog.show();
        dialog.hide();
        QVERIFY(!finished.wait(400)); // a hidden notice does not time out
        QElapsedTimer shown;
        shown.start();
        dialog.show();
        QVERIFY(finished.wait(2000));
        QVERIFY(shown.elapsed() >= 190);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(dialog.result(), 1);
        QVERIFY(!dialog.isVisible());
    }

    void messageIsClippedToItsBox()
    {
        const QString longText = QStringLiteral("The card is full. ").repeated(12);
        MessageDialog dialog(nullptr, longText, 0);
        const QImage image = shoot(dialog, QStringLiteral("messagedialog_long"));
        bool drawn = false;
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 256; ++x) {
                if (!lit(image, x, y))
                    continue;
                drawn = true;
                QVERIFY2(x < 246 && y < 60, qPrintable(QStringLiteral("%1,%2").arg(x).arg(y)));
            }
        }
        QVERIFY(drawn);
        MessageDialog shortNotice(nullptr, QStringLiteral("Do not remove the card"), 0);
        shoot(shortNotice, QStringLiteral("messagedialog_short"));
    }
};

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
