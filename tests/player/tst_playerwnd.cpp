// The player window with a scripted player in place of mplayer (it notes the commands it gets):
// length and clock texts, the quick-seek ticks and the seek on release, volume steps, the refresh
// rule, the shell messages, the option menu's stored values, a player that fails or cannot be
// started, and the screen's geometry with pictures of each screen.
#include "app/qcopchannel.h"
#include "app/startup.h"
#include "player/playerwnd.h"
#include "playerfixture.h"
#include "screenpixels.h"
#include "screenstaging.h"
#include "storage/configwidget.h"
#include "widgets/itemmenu.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

class TestPlayerWnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }
    void cleanup() { QCOMPARE(childProcesses(), QList<qint64>()); }

    // strTimeNumber on length texts; formatTime gives back the clock rows
    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("clock");
        QTest::newRow("clock-under-an-hour") << "59:59" << 3599 << true;
        QTest::newRow("clock-from-one-hour") << "01:00:00" << 3600 << true;
        QTest::newRow("clock-over-ten-hours") << "10:01:01" << 36061 << true;
        QTest::newRow("length-inside-text") << "len 01:02:03 ." << 3723 << false;
        QTest::newRow("one-digit-minute-is-neither") << "1:30" << 0 << false;
        QTest::newRow("neither-form") << "about a minute" << 0 << false;
    }
    void texts()
    {
        QFETCH(QString, text);
        QFETCH(int, seconds);
        QFETCH(bool, clock);
        QCOMPARE(playerWnd::strTimeNumber(text), seconds * 100);
        if (clock)
            QCOMPARE(playerWnd::formatTime(seconds), text);
    }

    // Holding F5/F6: the pointer's steps and tick intervals, then the seek sent on release.
    void quickSeek_data()
    {
        QTest::addColumn<QString>("length");
        QTest::addColumn<double>("position");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("ticks");
        QTest::addColumn<int>("percent");
        QTest::addColumn<int>("interval");
        QTest::addColumn<QString>("command");
        const int f5 = Qt::Key_F5, f6 = Qt::Key_F6;
        QTest::newRow("first-tick") << "00:01:40" << 0.0 << f6 << 1 << 1 << 150 << "seek 1 1";
        QTest::newRow("faster-further-in")
            << "00:01:40" << 50.0 << f6 << 1 << 51 << 100 << "seek 51 1";
        QTest::newRow("end-reached-and-kept")
            << "00:01:40" << 97.0 << f6 << 6 << 100 << 50 << "seek 97 2";
        QTest::newRow("backward-stops-at-0")
            << "00:01:40" << 1.0 << f5 << 3 << 0 << 150 << "seek 0 1";
        QTest::newRow("short-file-four-percent")
            << "00:30" << 0.0 << f6 << 2 << 8 << 150 << "seek 2 2";
        QTest::newRow("short-file-whole-seconds")
            << "00:30" << 15.0 << f6 << 1 << 54 << 100 << "seek 16 2";
    }
    void quickSeek()
    {
        QFETCH(QString, length);
        QFETCH(double, position);
        QFETCH(int, key);
        QFETCH(int, ticks);
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        playerWnd window;
        QVERIFY(startOn(window, fixture, length));
        window.changeCurrentSec(position);
        QTest::keyPress(&window, Qt::Key(key));
        for (int n = 0; n < ticks; ++n)
            window.quickSeekPos();
        QTEST(window.quickSeekPosition(), "percent");
        QTEST(window.quickSeekInterval(), "interval");
        QTest::keyRelease(&window, Qt::Key(key));
        QFETCH(QString, command);
        QTRY_VERIFY(fixture.lines("/commands").contains(command));
    }

    // Each step is stored as a level and applied again, even when it stays at a bound.
    void volume_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("percent");
        QTest::newRow("top-stays") << 5 << int(Qt::Key_Up) << 100;
        QTest::newRow("bottom-stays") << 0 << int(Qt::Key_Down) << 0;
        QTest::newRow("up-a-step") << 2 << int(Qt::Key_Up) << 60;
        QTest::newRow("down-a-step") << 3 << int(Qt::Key_Down) << 40;
    }
    void volume()
    {
        QFETCH(int, level);
        QFETCH(int, key);
        QFETCH(int, percent);
        PlayerFixture fixture;
        QVERIFY(fixture.writeSettings("PlayVolume=" + QByteArray::number(level)));
        playerWnd window;
        QCOMPARE(window.volumePercent(), level * 20);
        const int callsBefore = fixture.root().amixerCalls().size();
        QTest::keyClick(&window, Qt::Key(key));
        QCOMPARE(window.volumePercent(), percent);
        QVERIFY(fixture.settings().contains("PlayVolume=" + QByteArray::number(percent / 20)));
        QVERIFY(fixture.root().amixerCalls().size() > callsBefore);
    }

    // Every state change tells the shell whether the pen may sleep; the end gives the LED back.
    // (a message under another name than "lrcplayer(QString)" keeps its name in the text)
    void shellMessages()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        QCopChannel shell(QStringLiteral("mainprocess"));
        QSignalSpy messages(&shell, &QCopChannel::received);
        QCopChannel::flush();
        {
            playerWnd window;
            QVERIFY(startOn(window, fixture, "00:01:40"));
            window.changePause();
            window.changeCurrentSec(1.0);
            window.stopMplayer();
            window.setLrcAutoSleep(false);
        }
        QTRY_COMPARE(messages.count(), 7);
        QStringList got;
        for (const QList<QVariant> &message : messages)
            got << message.at(0).toString() + ' ' + message.at(1).toString();
        QCOMPARE(got.join(' ').remove(QStringLiteral("lrcplayer(QString) ")),
                 QStringLiteral("disableAutoSleep enableAutoSleep disableAutoSleep "
                                "enableAutoSleep disableShutLed enableShutLed enableAutoSleep"));
        QCOMPARE(fixture.lines("/commands"), QStringList{"quit"});
    }

    // One walk through the screens of a 70 s file: position reports (one refresh a second at
    // most, nothing past the end), playing, paused, quick seek with its pointer.
    void screens()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        playerWnd window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(startOn(window, fixture, "00:01:10"));
        const struct
        {
            double sec;
            int refreshedAt;
            double position;
        } steps[] = {{1.0, 100, 1.0}, {1.5, 100, 1.5}, {2.0, 200, 2.0}, {70.5, 200, 2.0}};
        for (const auto &step : steps) {
            window.changeCurrentSec(step.sec);
            QCOMPARE(playerWnd::lastSeconds, step.refreshedAt);
            QCOMPARE(window.currentPosition(), step.position);
        }
        QCOMPARE(window.timeText(), QStringLiteral("00:02"));
        window.changeCurrentSec(35.0);
        const auto barEndsAt = [](const QImage &image, int end) {
            return lit(image, 2, 22) && lit(image, end + 1, 22) && lit(image, end / 2, 21) &&
                   lit(image, end / 2, 23) && !lit(image, end / 2, 22);
        };
        const auto lineDrawn = [](const QImage &image) {
            for (int x = 0; x < 256; x += 5) {
                if (!lit(image, x, 20))
                    return false;
            }
            return !lit(image, 100, 19);
        };

        const QImage playing = shoot(window, "player_playing");
        QCOMPARE(window.helpText(), QStringLiteral("Press OK to Pause"));
        QCOMPARE(window.timeText(), QStringLiteral("00:35"));
        QVERIFY(lineDrawn(playing));
        QVERIFY(barEndsAt(playing, 35 * 25400 / 7000));
        QVERIFY(!lit(playing, 35 * 25400 / 7000 + 2, 22));
        for (int y = 33; y <= 39; ++y) {
            QVERIFY(lit(playing, 175, y) && lit(playing, 176, y));
            QVERIFY(lit(playing, 180, y) && lit(playing, 181, y));
            QVERIFY(!lit(playing, 178, y) && !lit(playing, 182, y));
        }

        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(window.shownState(), 2);
        QTRY_COMPARE(fixture.lines("/commands"), QStringList{"pause"});
        const QImage paused = shoot(window, "player_paused");
        QCOMPARE(window.helpText(), QStringLiteral("Press OK to Play"));
        QVERIFY(lineDrawn(paused));
        QVERIFY(lit(paused, 178, 33) && lit(paused, 178, 39) && lit(paused, 175, 36) &&
                lit(paused, 181, 36));
        QVERIFY(!lit(paused, 178, 36) && !lit(paused, 182, 36));

        QTest::keyPress(&window, Qt::Key_F6);
        for (int n = 0; n < 10; ++n)
            window.quickSeekPos();
        const QImage seeking = shoot(window, "player_quick-seek");
        const int end = 60 * 254 / 100 - 3;
        QVERIFY(barEndsAt(seeking, end));
        // the pointer: a small triangle just after the bar's end
        QVERIFY(lit(seeking, end + 2, 21) && lit(seeking, end + 5, 21) &&
                lit(seeking, end + 2, 24));
        QVERIFY(!lit(seeking, end + 6, 21) && !lit(seeking, end + 2, 25));
        QTest::keyRelease(&window, Qt::Key_F6);
    }

    // A player that exits with an error: reported as such, never as the end of a file.
    void playerFails()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        playerWnd window;
        QSignalSpy failed(&window, &playerWnd::mplayerFinishedWithError);
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        window.startPlay(0, QFileInfo(fixture.root().path("/mnt/mmc/fails.mp3")), "00:10", 0, 0);
        QVERIFY(failed.wait(10000));
        QCOMPARE(failed.at(0).at(0).toInt(), 1);
        QCOMPARE(finished.count(), 0);
        QCOMPARE(window.state(), playerWnd::Stopped);
    }

    // No player at all: start fails, and the keys still work: the option menu and its stored
    // values, OK, Escape stops, Escape leaves.
    void noPlayer()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.writeSettings("PlayVolume=2\nLoopMode=0"));
        playerWnd window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.startPlay(0, QFileInfo(fixture.root().path("/mnt/mmc/a.mp3")), "00:10", 0, 0);
        QTest::keyClick(&window, Qt::Key_F12);
        ItemMenu *menu = window.optionMenu();
        QVERIFY(menu && menu->isVisible());
        // the loop mode's value stays clear of its arrows (left 150-157, right 245-252)
        const auto valueClear = [](const QImage &image) {
            for (int y = 25; y <= 40; ++y) {
                for (int x : {159, 160, 161, 241, 242, 243})
                    if (lit(image, x, y))
                        return false;
            }
            return true;
        };
        QVERIFY(valueClear(shoot(*menu, "player_menu")));
        QTest::keyClick(menu, Qt::Key_Right);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Right);
        QVERIFY(valueClear(shoot(*menu, "player_menu_pepeat-all")));
        QCOMPARE(window.volumePercent(), 60);
        QVERIFY(fixture.settings().contains("PlayVolume=3"));
        QVERIFY(fixture.settings().contains("LoopMode=1"));
        QTest::keyClick(menu, Qt::Key_Escape);
        QCOMPARE(window.optionMenu(), nullptr);
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(window.shownState(), 2);
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(window.state(), playerWnd::Stopped);
        QVERIFY(window.isVisible());
        QTest::keyClick(&window, Qt::Key_Escape);
        QTRY_VERIFY(!window.isVisible());
    }
};

QTEST_MAIN(TestPlayerWnd)
#include "tst_playerwnd.moc"
