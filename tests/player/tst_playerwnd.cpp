// The player window and the music list with a scripted player in place of mplayer (it notes the
// files and commands it gets): length and clock texts, the quick-seek ticks and the seek on
// release, the shell messages and the refresh rule, a player that fails or cannot be started with
// the volume steps and the option menu's stored values; the loop modes at the end of a file,
// F7/F8 and Escape, files that are gone, lists that are missing or empty; and the musicplayer
// program, which leaves on SIGTERM with its player. How each screen looks: tst_screens.
#include "app/qcopchannel.h"
#include "app/startup.h"
#include "player/filemanager.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "playerfixture.h"
#include "screenpixels.h"
#include "screenstaging.h"
#include "widgets/itemmenu.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

#include <csignal>

class TestPlayerWnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setPalette(recorderPalette()); }
    void init()
    {
        fixture.reset(new PlayerFixture);
        QVERIFY(fixture->installScriptedPlayer());
    }
    void cleanup()
    {
        fixture.reset();
        QCOMPARE(childProcesses(), QList<qint64>());
    }

    // strTimeNumber on length texts; formatTime gives back the clock rows
    void texts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("seconds");
        QTest::newRow("clock-under-an-hour") << "59:59" << 3599;
        QTest::newRow("clock-from-one-hour") << "01:00:00" << 3600;
        QTest::newRow("clock-over-ten-hours") << "10:01:01" << 36061;
        QTest::newRow("length-inside-text") << "len 01:02:03 ." << 3723;
        QTest::newRow("one-digit-minute-is-neither") << "1:30" << 0;
        QTest::newRow("neither-form") << "about a minute" << 0;
    }
    void texts()
    {
        QFETCH(QString, text);
        QFETCH(int, seconds);
        QCOMPARE(playerWnd::strTimeNumber(text), seconds * 100);
        if (QByteArray(QTest::currentDataTag()).startsWith("clock"))
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
        QFETCH(QString, command);
        playerWnd window;
        QVERIFY(startOn(window, *fixture, length));
        window.changeCurrentSec(position);
        QTest::keyPress(&window, Qt::Key(key));
        for (int n = 0; n < ticks; ++n)
            window.quickSeekPos();
        QTEST(window.quickSeekPosition(), "percent");
        QTEST(window.quickSeekInterval(), "interval");
        QTest::keyRelease(&window, Qt::Key(key));
        QTRY_VERIFY(fixture->lines("/commands").contains(command));
    }

    // Every state change tells the shell whether the pen may sleep; the end gives the LED back.
    // (a message under another name than "lrcplayer(QString)" keeps its name in the text) The
    // position reports of a 100 s file refresh the screen once a second at most, and nothing
    // past the end is taken.
    void shellMessagesAndRefresh()
    {
        QCopChannel shell(QStringLiteral("mainprocess"));
        QSignalSpy messages(&shell, &QCopChannel::received);
        QCopChannel::flush();
        {
            playerWnd window;
            QVERIFY(startOn(window, *fixture, "00:01:40"));
            window.changePause();
            const auto report = [&](double sec, int refreshedAt, double position) {
                window.changeCurrentSec(sec);
                return playerWnd::lastSeconds == refreshedAt &&
                       window.currentPosition() == position;
            };
            QVERIFY(report(1.0, 100, 1.0) && report(1.5, 100, 1.5) && report(2.0, 200, 2.0));
            QVERIFY(report(100.5, 200, 2.0));
            QCOMPARE(window.timeText(), QStringLiteral("00:02"));
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
        QCOMPARE(fixture->lines("/commands"), QStringList{"quit"});
    }

    // A player that exits with an error: reported as such, never as the end of a file. Then no
    // player at all: start fails, and the keys still work: the option menu and its stored values,
    // each volume step stored as a level and applied again (also when it stays at a bound), OK,
    // Escape stops, Escape leaves.
    void playerFailsOrIsMissing()
    {
        QVERIFY(fixture->writeSettings("PlayVolume=2\nLoopMode=0"));
        playerWnd window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QSignalSpy failed(&window, &playerWnd::mplayerFinishedWithError);
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        window.startPlay(0, QFileInfo(fixture->root().path("/mnt/mmc/fails.mp3")), "00:10", 0, 0);
        QVERIFY(failed.wait(10000));
        QCOMPARE(failed.first(), QVariantList{1});
        QCOMPARE(finished.count(), 0);
        QCOMPARE(window.state(), playerWnd::Stopped);
        QVERIFY(QFile::remove(fixture->root().path("/usr/bin/mplayer")));
        window.startPlay(0, QFileInfo(fixture->root().path("/mnt/mmc/a.mp3")), "00:10", 0, 0);
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
        QTest::keyClick(menu, Qt::Key_Right);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Right);
        QVERIFY(valueClear(shoot(*menu, "player_menu_repeat-all")));
        QVERIFY(fixture->settings().contains("LoopMode=1"));
        QTest::keyClick(menu, Qt::Key_Escape);
        QCOMPARE(window.optionMenu(), nullptr);
        QCOMPARE(window.volumePercent(), 60);
        QVERIFY(fixture->settings().contains("PlayVolume=3"));
        for (const int percent : {80, 100, 100, 80, 60, 40, 20, 0, 0}) {
            const int calls = fixture->root().amixerCalls().size();
            const bool up = percent > window.volumePercent() || percent == 100;
            QTest::keyClick(&window, up ? Qt::Key_Up : Qt::Key_Down);
            QCOMPARE(window.volumePercent(), percent);
            QVERIFY(fixture->settings().contains("PlayVolume=" + QByteArray::number(percent / 20)));
            QVERIFY(fixture->root().amixerCalls().size() > calls);
        }
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(window.shownState(), 2);
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(window.state(), playerWnd::Stopped);
        QVERIFY(window.isVisible());
        QTest::keyClick(&window, Qt::Key_Escape);
        QTRY_VERIFY(!window.isVisible());
    }

    // The files played, from the loop mode at each end (files named *ends* end at once) or from
    // a key pressed during the first (the others play until stopped); none from a list that is
    // missing (as no names: it loads as -1), empty (an empty name: an empty line) or all gone.
    void playsTheList_data()
    {
        QTest::addColumn<int>("loopMode");
        QTest::addColumn<QStringList>("list");
        QTest::addColumn<int>("loaded");
        QTest::addColumn<int>("key");
        QTest::addColumn<QStringList>("expected");
        const QStringList two{"a-ends.mp3", "b-ends.mp3"}, three{"1.mp3", "2.mp3", "3.mp3"};
        QTest::newRow("repeat-one") << 0 << two << 2 << 0 << QStringList{two[0], two[0]};
        QTest::newRow("repeat-all-wraps") << 1 << two << 2 << 0 << two + QStringList{two[0]};
        QTest::newRow("not-repeat-stops-at-the-end") << 2 << two << 2 << 0 << two;
        QTest::newRow("gone-files-skipped")
            << 2 << QStringList{"gone.mp3", two[0], "gone2.mp3", two[1]} << 4 << 0 << two;
        QTest::newRow("f8-next") << 2 << three << 3 << int(Qt::Key_F8)
                                 << QStringList{"1.mp3", "2.mp3"};
        QTest::newRow("f7-previous-wraps")
            << 2 << three << 3 << int(Qt::Key_F7) << QStringList{"1.mp3", "3.mp3"};
        QTest::newRow("no-list") << 2 << QStringList{} << -1 << 0 << QStringList{};
        QTest::newRow("empty-list") << 2 << QStringList{""} << 0 << 0 << QStringList{};
        QTest::newRow("only-gone-files") << 2 << QStringList{"gone.mp3"} << 1 << 0 << QStringList{};
    }
    void playsTheList()
    {
        QFETCH(int, loopMode);
        QFETCH(QStringList, list);
        QFETCH(int, key);
        QFETCH(QStringList, expected);
        QVERIFY(fixture->writeSettings("LoopMode=" + QByteArray::number(loopMode)));
        writeList(list);
        FileManager files;
        QTEST(files.load(), "loaded");
        playerWnd window;
        MusicPlayerController controller(&files, &window);
        QCOMPARE(controller.start(), !expected.isEmpty());
        if (key)
            QTest::keyClick(&window, Qt::Key(key));
        QTRY_VERIFY(played().size() >= expected.size());
        // not repeating, it stops at the end
        if (loopMode == 2 && !key)
            QTRY_COMPARE(window.shownState(), 0);
        QCOMPARE(played().mid(0, expected.size()), expected);
        if (!key)
            return;
        QCOMPARE(controller.currentIndex(), list.indexOf(expected.last()));
        // Escape stops without moving on; Escape again leaves
        QSignalSpy finished(&controller, &MusicPlayerController::finished);
        QTest::keyClick(&window, Qt::Key_Escape);
        QTRY_COMPARE(window.shownState(), 0);
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(played(), expected);
    }

    // The installed-style program: plays the list, says which files are gone, and ends on
    // SIGTERM taking its player along.
    void program()
    {
        writeList({"gone.mp3", "song.mp3"});
        RecorderProcess program(fixture->root().root());
        program.setProgram(QStringLiteral(MUSICPLAYER_BIN));
        QVERIFY(program.start());
        // the line comes before the song starts, but may still be on its way here
        QVERIFY(program.waitForError("music file missing, skipped: /mnt/mmc/e_Music/gone.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(played(), QStringList{"song.mp3"}, 15000);
        ::kill(program.pid(), SIGTERM);
        QVERIFY(program.waitForExit());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
        // the scripted player went with the program
        QCOMPARE(fixture->lines("/pids").size(), 1);
        QVERIFY(!QFileInfo::exists("/proc/" + fixture->lines("/pids").first()));
    }

private:
    // Writes the list as the scan does (device paths, one a line; none without names) and makes
    // its files but gone*.
    void writeList(const QStringList &names)
    {
        QByteArray list;
        for (const QString &name : names) {
            list += (name.isEmpty() ? "" : "/mnt/mmc/e_Music/" + name.toLocal8Bit()) + '\n';
            if (!name.isEmpty() && !name.startsWith("gone"))
                QVERIFY(fixture->root().writeFile("/mnt/mmc/e_Music/" + name, "not played here"));
        }
        QVERIFY(names.isEmpty() || fixture->root().writeFile("/apps/config/musiclist.txt", list));
    }
    // the names of the files the scripted player was given
    QStringList played()
    {
        return fixture->lines("/played").replaceInStrings(QRegularExpression(".*/"), "");
    }

    // a device root of its own for each test, with the scripted player
    std::unique_ptr<PlayerFixture> fixture;
};

QTEST_MAIN(TestPlayerWnd)
#include "tst_playerwnd.moc"
