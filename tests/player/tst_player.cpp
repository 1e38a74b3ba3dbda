// The slave player and its window. The process's line cutter and output parser on typed lines.
// With a scripted player in place of mplayer (it notes the files and commands it gets): length
// and clock texts, the quick-seek ticks and the seek on release, the shell messages and the
// refresh rule, a player that fails or cannot be started with the volume steps and the option
// menu's stored values; the music list's loop modes at the end of a file, F7/F8 and Escape, lists
// that are missing, empty or all gone; the musicplayer program, which skips a gone file and leaves
// on SIGTERM with its player. Against the host's mplayer (through the device simulation's
// stand-in, on files made here) one walk through pause and resume, a quick seek to the middle of
// a 70 s file, F8, a user's stop, a natural end with the parser's signals in their order, a
// missing file and the window's end while playing. No player is left behind by any of them. How
// each screen looks: tst_screens.
#include "app/qcopchannel.h"
#include "app/startup.h"
#include "player/filemanager.h"
#include "player/mplayerprocess.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "playerfixture.h"
#include "screenstaging.h"
#include "widgets/itemmenu.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <csignal>

namespace {

constexpr int runTimeout = 30000;
// what the process makes of a text (TestPlayer::reading)
constexpr int Lines = 0, ChildLines = 1, Signals = 2;

// The parser's signals the player acts on, as short texts in the order they came.
struct EventLog : QStringList
{
    explicit EventLog(MplayerProcess &p)
    {
        const auto note = [this](const char *name) { return [this, name] { append(name); }; };
        QObject::connect(&p, &MplayerProcess::receivedCurrentSec,
                         [this](double sec) { append("sec " + QVariant(sec).toString()); });
        QObject::connect(&p, &MplayerProcess::receivedPause, note("pause"));
        QObject::connect(&p, &MplayerProcess::processExited, note("exited"));
        QObject::connect(&p, &MplayerProcess::receivedEndOfFile, note("eof"));
    }
};

} // namespace

class TestPlayer : public QObject
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

    // Length texts in hundredths of a second: the long form anywhere in a text, neither form
    // with a one-digit minute; from an hour on, the clock in the long form
    void texts()
    {
        QCOMPARE(playerWnd::strTimeNumber("len 01:02:03 ."), 372300);
        QCOMPARE(playerWnd::strTimeNumber("1:30"), 0);
        QCOMPARE(playerWnd::formatTime(3600), QStringLiteral("01:00:00"));
    }

    // Holding F5/F6: the pointer's steps and tick intervals, then the seek sent on release.
    void quickSeek_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<double>("position");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("ticks");
        QTest::addColumn<int>("percent");
        QTest::addColumn<int>("interval");
        QTest::addColumn<QString>("command");
        const int f5 = Qt::Key_F5, f6 = Qt::Key_F6;
        QTest::newRow("faster-further-in") << 100 << 50.0 << f6 << 1 << 51 << 100 << "seek 51 1";
        QTest::newRow("end-reached-and-kept") << 100 << 97.0 << f6 << 6 << 100 << 50 << "seek 97 2";
        QTest::newRow("backward-stops-at-0") << 100 << 1.0 << f5 << 3 << 0 << 150 << "seek 0 1";
        QTest::newRow("short-file-4-percent") << 30 << 0.0 << f6 << 2 << 8 << 150 << "seek 2 2";
    }
    void quickSeek()
    {
        QFETCH(int, length);
        QFETCH(double, position);
        QFETCH(int, key);
        QFETCH(int, ticks);
        QFETCH(QString, command);
        playerWnd window;
        QVERIFY(startOn(window, *fixture, playerWnd::formatTime(length)));
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
            QStringList refreshes;
            for (const double sec : {1.0, 1.5, 2.0, 100.5}) {
                window.changeCurrentSec(sec);
                refreshes << QString::number(playerWnd::lastSeconds) + ' ' +
                                 QString::number(window.currentPosition());
            }
            QCOMPARE(refreshes, QStringList({"100 1", "100 1.5", "200 2", "200 2"}));
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
        QTest::keyClick(menu, Qt::Key_Right);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Right);
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
        QVERIFY(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0);
        // the scripted player went with the program
        QCOMPARE(fixture->lines("/pids").size(), 1);
        QVERIFY(!QFileInfo::exists("/proc/" + fixture->lines("/pids").first()));
    }

    // What the process makes of a text: the line cutter's lines (chunks as they arrive split at
    // '|'), the lines of a real child printing it (its last line without a break is dropped at
    // exit), and the parser's signals. The parser's rows: what a real audio run does not show
    // (its own order is checked at the end of the walk), "exit" standing for the child's exit;
    // then the position of a status line: to the last bit the number toDouble reads from the
    // same text (a fuzzy comparison would hide a misrounded one; a QVariant's text of a double
    // reads back to the same bits), also where the quick path for the usual "123.4" does not
    // apply.
    void reading_data()
    {
        QTest::addColumn<int>("reader");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("out");
        QTest::newRow("line-joined-over-three-chunks")
            << Lines << "A:  1|.5 of 3.0|\r" << QStringList{"A:  1.5 of 3.0"};
        QTest::newRow("crlf-gives-an-empty-line") << Lines << "first\r\nsecond\n"
                                                  << QStringList{"first", "", "second"};
        QTest::newRow("break-opens-a-chunk") << Lines << "one|\rtwo\n" << QStringList{"one", "two"};
        QTest::newRow("partial-line-waits") << Lines << "x\ry|z" << QStringList{"x"};
        QTest::newRow("partial-line-dropped-at-exit")
            << ChildLines << "whole\npartial" << QStringList{"whole"};
        QTest::newRow("pause-before-playback") << Signals << "ID_PAUSED\n" << QStringList{"pause"};
        QTest::newRow("end-before-playback-told-after-exit")
            << Signals << "ID_EXIT=EOF\nExiting... (End of file)\n|exit"
            << QStringList{"exited", "eof"};
        QTest::newRow("exit-unannounced-no-eof")
            << Signals << "A:   3.0 (03.0) of 10.0 (10.0)  0.1% \n|exit"
            << QStringList{"sec 3", "exited"};
        for (const char *text :
             {"0.0", "3599.9", "007.5", "12.", "0.1234567", "123456789012.3", "1234567890123456.7",
              "88888888888888888888888.8", "-0.4", "1,5", "01:02.3", "1.2.3"}) {
            const QString sec = QVariant(QByteArray(text).toDouble()).toString();
            QTest::newRow(text) << Signals << "A: " + QString(text) + " (00.0) of 10.0\n"
                                << QStringList{"sec " + sec};
        }
    }
    void reading()
    {
        QFETCH(int, reader);
        QFETCH(QString, text);
        MplayerProcess process;
        EventLog log(process);
        QStringList cut;
        connect(&process, &MyProcess::lineAvailable,
                [&cut](const QByteArray &line) { cut << line; });
        QSignalSpy finished(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished));
        if (reader == ChildLines) {
            for (const QString &argument : QStringList{"/bin/sh", "-c", "printf '" + text + "'"})
                process.addArgument(argument);
            QVERIFY(process.start() && finished.wait(10000));
        }
        for (const QString &chunk : text.split('|')) {
            if (chunk == "exit")
                process.processFinished(0, QProcess::NormalExit);
            else if (reader != ChildLines)
                process.genericRead(chunk.toLatin1());
        }
        QTEST(reader == Signals ? QStringList(log) : cut, "out");
    }

    void walk()
    {
        QVERIFY(fixture->installStandIn());
        playerWnd &window = *new playerWnd;
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        QSignalSpy failed(&window, &playerWnd::mplayerFinishedWithError);
        // makes a sine tone of the given length (mp3 or wav by suffix), plays it and waits for the
        // player's first position
        const auto play = [&](const QString &name, int seconds) {
            const QString file = fixture->root().path("/mnt/mmc/e_Music/" + name);
            const bool made =
                fixture->root().writeFile("/mnt/mmc/e_Music/" + name, {}) &&
                QProcess::execute("sox", {"-n", "-r", "22050", "-c", "1", file, "synth",
                                          QString::number(seconds), "sine", "440"}) == 0;
            QSignalSpy positions(window.process(), &MplayerProcess::receivedCurrentSec);
            window.startPlay(0, QFileInfo(file), playerWnd::formatTime(seconds), 0, 0);
            return made && positions.wait(runTimeout);
        };
        QVERIFY(play("seventy.mp3", 70));
        // pause, then the next position report plays again (the player's answers come in the waits)
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(QSignalSpy(window.process(), &MplayerProcess::receivedPause).wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Paused);
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(QSignalSpy(window.process(), &MplayerProcess::receivedCurrentSec).wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Playing);
        // F6 held to 50 %: the player goes on from within a second of 35 s
        QTest::keyPress(&window, Qt::Key_F6);
        QTRY_VERIFY_WITH_TIMEOUT(window.quickSeekPosition() >= 50, runTimeout);
        QCOMPARE(window.quickSeekPosition(), 50);
        QTest::keyRelease(&window, Qt::Key_F6);
        QTRY_VERIFY_WITH_TIMEOUT(window.currentPosition() > 20, runTimeout);
        QVERIFY2(qAbs(window.currentPosition() - 35.0) < 1.0,
                 qPrintable(QString::number(window.currentPosition())));
        // F8 ends the run with the next action 1
        QTest::keyClick(&window, Qt::Key_F8);
        QVERIFY(finished.wait(runTimeout));
        QCOMPARE(finished.takeFirst(), QVariantList{1});
        // a user's stop swallows the one report of its run: handled once the shown state is none
        QVERIFY(play("seventy.mp3", 70));
        window.stopPlay();
        QTRY_COMPARE(window.shownState(), 0);
        QCOMPARE(finished.count(), 0);
        // To the end: only positions rising to the file's end, then the exit and the end of
        // file, then the report with the action 0.
        EventLog log(*window.process());
        QVERIFY(play("end.wav", 2));
        QVERIFY(finished.wait(runTimeout));
        QVector<double> secs; // -1 for any other signal
        for (const QString &event : log.mid(0, log.size() - 2))
            secs << (event.startsWith("sec ") ? event.mid(4).toDouble() : -1);
        QVERIFY2(secs.size() > 10 && secs.first() >= 0 && std::is_sorted(secs.begin(), secs.end()),
                 qPrintable(log.join(", ")));
        QVERIFY(qAbs(secs.last() - 2.0) < 0.2 && window.currentPosition() > 1.5);
        QCOMPARE(log.mid(log.size() - 2), QStringList({"exited", "eof"}));
        QCOMPARE(finished.takeFirst(), QVariantList{0});
        QCOMPARE(window.state(), playerWnd::Stopped);
        // This mplayer ends a file it cannot open as it ends any file (exit code 0), with no
        // position ever reported; the owner sees the end of a run that never played.
        window.startPlay(0, QFileInfo(fixture->root().path("/mnt/mmc/gone.mp3")), "00:10", 0, 0);
        QTRY_VERIFY_WITH_TIMEOUT(finished.count() + failed.count() == 1, runTimeout);
        QCOMPARE(window.currentPosition(), 0.0);
        QCOMPARE(window.state(), playerWnd::Stopped);
        // the window's end takes the player with it (checked by cleanup)
        QVERIFY(play("seventy.mp3", 70));
        QCOMPARE(childProcesses().size(), 1);
        playerWnd::destory();
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

QTEST_MAIN(TestPlayer)
#include "tst_player.moc"
