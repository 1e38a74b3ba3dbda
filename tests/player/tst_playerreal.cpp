// The player window against the real mplayer, through the device's /usr/bin/mplayer stand-in, on
// files made here: one walk through pause and resume, F8, a user's stop and a natural end; a quick
// seek to the middle of a 70 s file; a missing file; the window's end while playing. No player is
// left behind by any of them.
#include "player/mplayerprocess.h"
#include "player/playerwnd.h"
#include "playerfixture.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

constexpr int runTimeout = 30000;

// Makes a file of the given length, plays it and waits for the player's first position.
bool play(PlayerFixture &fixture, playerWnd &window, const QString &name, int seconds)
{
    const QString file = fixture.makeSound(name, seconds);
    QSignalSpy positions(window.process(), &MplayerProcess::receivedCurrentSec);
    window.startPlay(0, QFileInfo(file), playerWnd::formatTime(seconds), 0, 0);
    return !file.isEmpty() && positions.wait(runTimeout);
}

} // namespace

class TestPlayerReal : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(fixture.installStandIn()); }
    void cleanup() { QCOMPARE(childProcesses(), QList<qint64>()); }

    void walk()
    {
        playerWnd window;
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        QVERIFY(play(fixture, window, "long.mp3", 30));
        // pause, then the next position report plays again
        QSignalSpy paused(window.process(), &MplayerProcess::receivedPause);
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(paused.wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Paused);
        QSignalSpy positions(window.process(), &MplayerProcess::receivedCurrentSec);
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(positions.wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Playing);
        // F8 ends the run with the next action 1
        QTest::keyClick(&window, Qt::Key_F8);
        QVERIFY(finished.wait(runTimeout));
        QCOMPARE(finished.takeFirst().at(0).toInt(), 1);
        // a user's stop swallows the one report of its run: handled once the shown state is none
        QVERIFY(play(fixture, window, "long.mp3", 30));
        window.stopPlay();
        QTRY_COMPARE(window.shownState(), 0);
        QCOMPARE(finished.count(), 0);
        // to the end: the exit, then the end of file, then the report with the action 0
        QStringList order;
        connect(window.process(), &MplayerProcess::processExited, [&] { order << "exited"; });
        connect(window.process(), &MplayerProcess::receivedEndOfFile, [&] { order << "eof"; });
        QVERIFY(play(fixture, window, "end.wav", 2));
        QVERIFY(finished.wait(runTimeout));
        QCOMPARE(order, QStringList({"exited", "eof"}));
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY(window.currentPosition() > 1.5);
        QCOMPARE(window.state(), playerWnd::Stopped);
    }

    // F6 held to 50 % of a 70 s file: the player goes on from within a second of 35 s.
    void quickSeekToTheMiddle()
    {
        playerWnd window;
        QVERIFY(play(fixture, window, "seventy.mp3", 70));
        QTest::keyPress(&window, Qt::Key_F6);
        QTRY_VERIFY_WITH_TIMEOUT(window.quickSeekPosition() >= 50, runTimeout);
        const int percent = window.quickSeekPosition();
        QTest::keyRelease(&window, Qt::Key_F6);
        QCOMPARE(percent, 50);
        QTRY_VERIFY_WITH_TIMEOUT(window.currentPosition() > 20, runTimeout);
        QVERIFY2(qAbs(window.currentPosition() - 35.0) < 1.0,
                 qPrintable(QString::number(window.currentPosition())));
    }

    // This mplayer ends a file it cannot open as it ends any file (exit code 0), with no
    // position ever reported; the owner sees the end of a run that never played.
    void missingFile()
    {
        playerWnd window;
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        QSignalSpy failed(&window, &playerWnd::mplayerFinishedWithError);
        window.startPlay(0, QFileInfo(fixture.root().path("/mnt/mmc/gone.mp3")), "00:10", 0, 0);
        QTRY_VERIFY_WITH_TIMEOUT(finished.count() + failed.count() == 1, runTimeout);
        QCOMPARE(window.currentPosition(), 0.0);
        QCOMPARE(window.state(), playerWnd::Stopped);
    }

    // The window's end takes the player with it (checked by cleanup).
    void destroyedWhilePlaying()
    {
        QVERIFY(play(fixture, *new playerWnd, "long.mp3", 30));
        QCOMPARE(childProcesses().size(), 1);
        playerWnd::destory();
        QCOMPARE(playerWnd::instance(), nullptr);
    }

private:
    // one device root for all: each test makes the files it plays
    PlayerFixture fixture;
};

QTEST_MAIN(TestPlayerReal)
#include "tst_playerreal.moc"
