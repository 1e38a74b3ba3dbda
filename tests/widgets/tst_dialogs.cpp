// The modal dialogs: the yes/no question and the message notice.
#include "widgetshots.h"

#include "app/startup.h"
#include "widgets/messagedialog.h"
#include "widgets/yesnoselect.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>

namespace {

// Answers the dialog with the keys once it runs modally, as a user would. A dialog that never
// closes is rejected with -1 after five seconds, so the test fails instead of hanging.
int execAnswered(QDialog &dialog, QTestEventList events)
{
    auto *poll = new QTimer(&dialog);
    QObject::connect(poll, &QTimer::timeout, [poll, events]() mutable {
        if (QWidget *modal = QApplication::activeModalWidget()) {
            poll->stop();
            events.simulate(modal);
        }
    });
    poll->start(5);
    QTimer::singleShot(5000, &dialog, [&dialog] { dialog.done(-1); });
    return dialog.exec();
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
        const Qt::Key left = Qt::Key_Left, right = Qt::Key_Right, ret = Qt::Key_Return;
        QTest::newRow("return-on-first") << keys({ret}) << 0 << 1;
        QTest::newRow("right-stops-at-second") << keys({right, right, ret}) << 1 << 1;
        QTest::newRow("left-stops-at-first") << keys({left, ret}) << 0 << 1;
        QTest::newRow("right-left-back-to-first") << keys({right, left, ret}) << 0 << 1;
        QTest::newRow("escape-rejects") << keys({right, Qt::Key_Escape}) << 2 << 0;
        QTest::newRow("other-keys-ignored") << keys({Qt::Key_Up, Qt::Key_A, right, ret}) << 1 << 1;
    }
    void yesnoAnswers()
    {
        QFETCH(QTestEventList, events);
        YesnoSelect dialog("Do you want to save recording?", "Yes", "No");
        QCOMPARE(dialog.geometry(), QRect(0, 0, 256, 64));
        QTEST(execAnswered(dialog, events), "result");
        QTEST(dialog.getValue(), "value");
    }

    void yesnoMark_data()
    {
        QTest::addColumn<QString>("question");
        QTest::addColumn<bool>("second");
        QTest::addColumn<int>("lineDrop"); // the answers' line below the font's ascent
        const QString wrapped = QStringLiteral("Do you want to save this very long recording now?");
        QTest::newRow("33-chars-one-line-first") << QString(33, 'q') << false << 19;
        QTest::newRow("33-chars-one-line-second") << QString(33, 'q') << true << 19;
        QTest::newRow("34-chars-wrapped-first") << QString(34, 'q') << false << 24;
        QTest::newRow("wrapped-second") << wrapped << true << 24;
    }
    void yesnoMark()
    {
        QFETCH(QString, question);
        QFETCH(bool, second);
        QFETCH(int, lineDrop);
        YesnoSelect dialog(question, "Yes", "No");
        if (second)
            QTest::keyClick(&dialog, Qt::Key_Right);
        const QImage image = shoot(dialog, QStringLiteral("yesno_") + QTest::currentDataTag());
        const QFontMetrics metrics{QFont("nits")};
        const int y = metrics.ascent() + lineDrop;
        const int firstX = 128 - metrics.horizontalAdvance("Yes") - 15;
        QCOMPARE(lit(image, firstX, y + 8), !second); // inside the mark before each answer
        QCOMPARE(lit(image, 135, y + 8), second);
        QVERIFY(!lit(image, second ? 132 : firstX - 3, y + 3)); // its nearly black outline
    }

    void messageKeys_data()
    {
        QTest::addColumn<QTestEventList>("events");
        QTest::addColumn<int>("result");
        QTest::newRow("return-accepts") << keys({Qt::Key_Return}) << 1;
        QTest::newRow("escape-rejects") << keys({Qt::Key_Escape}) << 0;
        QTest::newRow("other-keys-leave-it-open")
            << keys({Qt::Key_Up, Qt::Key_A, Qt::Key_Return}) << 1;
    }
    void messageKeys()
    {
        QFETCH(QTestEventList, events);
        MessageDialog dialog(nullptr, "Card full", 0);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Dialog"));
        QSignalSpy finished(&dialog, &MessageDialog::finished);
        dialog.show();
        QVERIFY(!finished.wait(300)); // no time-out: waits for a key
        dialog.hide();
        QTEST(execAnswered(dialog, events), "result");
        QCOMPARE(finished.count(), 1);
    }

    void messageTimesOutAfterEveryShow()
    {
        MessageDialog dialog(nullptr, "Saved", 200);
        QSignalSpy finished(&dialog, &MessageDialog::finished);
        dialog.show();
        dialog.hide();
        QVERIFY(!finished.wait(400)); // a hidden notice does not time out
        QElapsedTimer shown;
        shown.start();
        QCOMPARE(execAnswered(dialog, {}), 1);
        QVERIFY(shown.elapsed() >= 190); // the full time again
        QCOMPARE(finished.count(), 1);
        QVERIFY(!finished.wait(400)); // the timer went with the dialog
    }

    void messageIsClippedToItsBox()
    {
        MessageDialog dialog(nullptr, QStringLiteral("The card is full. ").repeated(12), 0);
        const QImage image = shoot(dialog, QStringLiteral("messagedialog_long"));
        int inside = 0, outside = 0;
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 256; ++x)
                if (lit(image, x, y))
                    ++(x < 246 && y < 60 ? inside : outside);
        QVERIFY(inside > 0);
        QCOMPARE(outside, 0);
    }
};

QTEST_MAIN(TestDialogs)
#include "tst_dialogs.moc"
