// The player window against the real mplayer, through the device's /usr/bin/mplayer stand-in, on
// files made here: pause and resume, a natural end, F8, a user's stop, a quick seek to the middle
// of a 70 s file, a missing file. No player is left behind by any of them.
#include "player/mplayerprocess.h"
#include "player/playerwnd.h"
#include "playerfixture.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

constexpr int runTimeout = 30000;

// A window in a device root of its own whose /usr/bin/mplayer is the stand-in.
struct RealPlayer
{
    RealPlayer() { installed = fixture.installStandIn(); }

    // Makes a file of the given length, plays it and waits for the player's first position.
    bool play(const QString &name, int seconds, const QString &length)
    {
        const QString file = fixture.makeSound(name, seconds);
        QSignalSpy positions(window.process(), &MplayerProcess::receivedCurrentSec);
        window.startPlay(0, QFileInfo(file), length, 0, 0);
        return installed && !file.isEmpty() && positions.wait(runTimeout);
    }

    PlayerFixture fixture;
    playerWnd window;
    bool installed = false;
};

} // namespace

class TestPlayerReal : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(childProcesses(), QList<qint64>()); }

    void pauseAndResume()
    {
        RealPlayer player;
        playerWnd &window = player.window;
        QVERIFY(player.play("long.mp3", 30, "00:30"));
        QCOMPARE(window.state(), playerWnd::Playing);
        QSignalSpy paused(window.process(), &MplayerProcess::receivedPause);
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(paused.wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Paused);
        QSignalSpy positions(window.process(), &MplayerProcess::receivedCurrentSec);
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(positions.wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Playing);
    }

    // To the end: the exit, then the end of file, then the report to the owner with action 0.
    void naturalEnd_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("mp3") << "end.mp3";
        QTest::newRow("wav") << "end.wav";
    }
    void naturalEnd()
    {
        QFETCH(QString, name);
        RealPlayer player;
        playerWnd &window = player.window;
        QStringList order;
        connect(window.process(), &MplayerProcess::processExited, [&] { order << "exited"; });
        connect(window.process(), &MplayerProcess::receivedEndOfFile, [&] { order << "eof"; });
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        QVERIFY(player.play(name, 2, "00:02"));
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, runTimeout);
        QCOMPARE(order, QStringList({"exited", "eof"}));
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
        QVERIFY(window.currentPosition() > 1.5);
        QCOMPARE(window.state(), playerWnd::Stopped);
    }

    void nextKey()
    {
        RealPlayer player;
        QVERIFY(player.play("long.mp3", 30, "00:30"));
        QSignalSpy finished(&player.window, &playerWnd::mplayerPlayFinished);
        QTest::keyClick(&player.window, Qt::Key_F8);
        QVERIFY(finished.wait(runTimeout));
        QCOMPARE(finished.at(0).at(0).toInt(), 1);
    }

    // A user's stop swallows the one report of its run; the next run reports normally.
    void stopSwallowsOneReport()
    {
        RealPlayer player;
        playerWnd &window = player.window;
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        QVERIFY(player.play("long.mp3", 30, "00:30"));
        window.stopPlay();
        QCOMPARE(window.state(), playerWnd::Stopped);
        // the queued end of the run has been handled once the shown state falls to none
        QTRY_COMPARE(window.shownState(), 0);
        QCOMPARE(finished.count(), 0);
        QVERIFY(player.play("short.mp3", 1, "00:01"));
        QVERIFY(finished.wait(runTimeout));
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 0);
    }

    // F6 held to 50 % of a 70 s file: the player goes on from within a second of 35 s.
    void quickSeekToTheMiddle()
    {
        RealPlayer player;
        playerWnd &window = player.window;
        QVERIFY(player.play("seventy.mp3", 70, "01:10"));
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
        RealPlayer player;
        playerWnd &window = player.window;
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        QSignalSpy failed(&window, &playerWnd::mplayerFinishedWithError);
        window.startPlay(0, QFileInfo(player.fixture.root().path("/mnt/mmc/gone.mp3")), "00:10", 0,
                         0);
        QTRY_VERIFY_WITH_TIMEOUT(finished.count() + failed.count() == 1, runTimeout);
        QCOMPARE(window.currentPosition(), 0.0);
        QCOMPARE(window.state(), playerWnd::Stopped);
    }

    // The window's end takes the player with it.
    void destroyedWhilePlaying()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.installStandIn());
        const QString file = fixture.makeSound("long.mp3", 30);
        auto *window = new playerWnd;
        QSignalSpy positions(window->process(), &MplayerProcess::receivedCurrentSec);
        window->startPlay(0, QFileInfo(file), "00:30", 0, 0);
        QVERIFY(positions.wait(runTimeout));
        QCOMPARE(childProcesses().size(), 1);
        playerWnd::destory();
        QCOMPARE(playerWnd::instance(), nullptr);
    }
};

QTEST_MAIN(TestPlayerReal)
#include "tst_playerreal.moc"
