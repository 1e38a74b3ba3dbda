// The slave player, its window and the music player that owns it. The process's line cutter,
// argument splitter and output parser on typed text. With a scripted player in place of mplayer
// (it notes the files and commands it gets): length and clock texts, the quick-seek ticks and the
// seek on release, the shell messages and the refresh rule, and what the window offers its owner,
// keys and calls (a hung player killed after 5 s). The controller with no process at all: loop
// modes, skips, failures and keys in one table. The whole music player without a player: the
// keys (volume steps, the option menu's stored values), then "No music"; the musicplayer program
// hands the card's bytes to the player and leaves on SIGTERM with it. With the host's mplayer
// (through the device simulation's stand-in, on files made here): "Not repeat" lists that end in
// a gone or an unplayable file stop, then play again on OK, the parser's signals of a run in
// their order. No player is left behind by any of them. How each screen looks: tst_screens.
#include "app/startup.h"
#include "player/cardnamecodec.h"
#include "player/filemanager.h"
#include "player/mplayerprocess.h"
#include "player/musicplayer.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "playerfixture.h"
#include "screenpixels.h"
#include "screenstaging.h"
#include "shelllistener.h"
#include "storage/configwidget.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/messagedialog.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <functional>

namespace {

constexpr int runTimeout = 30000;
// what the process makes of a text (TestPlayer::reading)
constexpr int Lines = 0, ChildLines = 1, Signals = 2, Split = 3;

// The parser's signals that carry what the player does, as short texts in the order they came.
struct EventLog : QStringList
{
    explicit EventLog(MplayerProcess &p)
    {
        const auto note = [this](const char *name) { return [this, name] { append(name); }; };
        const auto noteValue = [this](const char *name) {
            return [this, name](const QVariant &value) { append(name + value.toString()); };
        };
        QObject::connect(&p, &MplayerProcess::receivedAO, noteValue("ao "));
        QObject::connect(&p, &MplayerProcess::receivedStartingTime, noteValue("start "));
        QObject::connect(&p, &MplayerProcess::mplayerFullyLoaded, note("loaded"));
        QObject::connect(&p, &MplayerProcess::receivedCurrentFrame, noteValue("frame "));
        QObject::connect(&p, &MplayerProcess::receivedCurrentSec, noteValue("sec "));
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
    void initTestCase()
    {
        QApplication::setPalette(recorderPalette());
        // as the musicplayer program has it
        CardNameCodec::install();
    }
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
        ShellListener shell;
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
        QTRY_COMPARE(shell.heard().size(), 7);
        QCOMPARE(shell.heard().join(' ').remove(QStringLiteral("lrcplayer(QString) ")),
                 QStringLiteral("disableAutoSleep enableAutoSleep disableAutoSleep "
                                "enableAutoSleep disableShutLed enableShutLed enableAutoSleep"));
        QCOMPARE(fixture->lines("/commands"), QStringList{"quit"});
    }

    // What the window offers its owner, keys and calls, on a scripted player (hangs.mp3 never
    // reads "quit"): the signals each brings, its run's end handled, and what isCurIdxPlaying
    // then says of the current entry and another one. Once nothing is shown, OK does nothing and
    // Escape leaves.
    void ownerCalls_data()
    {
        QTest::addColumn<QString>("emitted");
        QTest::addColumn<QString>("entries");
        // one row a line
        // clang-format off
        QTest::newRow("ok-pauses-on-screen") << "" << "2 3";
        QTest::newRow("escape-stops") << "finished 0" << "3 3";
        QTest::newRow("f7-asks-for-the-previous") << "finished -1" << "3 3";
        QTest::newRow("f8-asks-for-the-next") << "finished 1" << "3 3";
        QTest::newRow("force-play-one-reports-it") << "finished 3" << "3 3";
        QTest::newRow("quit-current-reports-nothing") << "" << "3 3";
        QTest::newRow("hung-player-killed-after-5-s") << "error 9" << "3 3";
        QTest::newRow("quit-window-playing-hides-it") << "hide" << "1 0";
        QTest::newRow("stopped-quit-window-quits") << "quit hide" << "3 3";
        // clang-format on
    }
    void ownerCalls()
    {
        const QString call = QTest::currentDataTag();
        playerWnd window;
        window.show();
        QStringList emitted;
        connect(&window, &playerWnd::mplayerPlayFinished,
                [&](int flag) { emitted << "finished " + QString::number(flag); });
        connect(&window, &playerWnd::mplayerFinishedWithError,
                [&](int code) { emitted << "error " + QString::number(code); });
        connect(&window, &playerWnd::playerwndQuit, [&] { emitted << "quit"; });
        connect(&window, &playerWnd::playerwndHide, [&] { emitted << "hide"; });
        const QString path =
            fixture->root().path(call.startsWith("hung") ? "/mnt/mmc/hangs.mp3" : "/mnt/mmc/a.mp3");
        window.startPlay(0, QFileInfo(path), "00:10", 0, 0);
        QTRY_COMPARE(fixture->lines("/played"), QStringList{path});
        const auto key = [&window](Qt::Key key) {
            return [&window, key] { QTest::keyClick(&window, key); };
        };
        const QHash<QString, std::function<void()>> calls{
            {"ok-pauses-on-screen", key(Qt::Key_Return)},
            {"escape-stops", key(Qt::Key_Escape)},
            {"f7-asks-for-the-previous", key(Qt::Key_F7)},
            {"f8-asks-for-the-next", key(Qt::Key_F8)},
            {"force-play-one-reports-it", [&] { window.forcePlayOne(3); }},
            {"quit-current-reports-nothing", [&] { window.quitCurPlay(); }},
            {"hung-player-killed-after-5-s", [&] { window.stopMplayer(); }},
            {"quit-window-playing-hides-it", [&] { window.quitPlayerWnd(); }},
            {"stopped-quit-window-quits", [&] { window.stopPlay(), window.quitPlayerWnd(); }}};
        QElapsedTimer timer;
        timer.start();
        calls[call]();
        QVERIFY(!call.startsWith("hung") || timer.elapsed() >= 5000);
        const bool playing = call.startsWith("ok") || call.startsWith("quit-window");
        if (!playing) {
            QTRY_COMPARE(window.shownState(), 0);
            QTest::keyClick(&window, Qt::Key_Return);
            QCOMPARE(window.shownState(), 0);
            QTest::keyClick(&window, Qt::Key_Escape);
        }
        QTEST(emitted.join(' '), "emitted");
        QTEST(QStringLiteral("%1 %2").arg(window.isCurIdxPlaying(0)).arg(window.isCurIdxPlaying(1)),
              "entries");
        QCOMPARE(window.isVisible(), call.startsWith("ok"));
        QCOMPARE(window.state(), playing ? playerWnd::Playing : playerWnd::Stopped);
        QTRY_VERIFY(!call.startsWith("ok") || fixture->lines("/commands") == QStringList{"pause"});
    }

    // The controller with no process at all, driven as the window drives it. The list's names
    // (gone* not made); the script: "end" a run that plays to its end, "fail" one that never
    // reaches a position, "crash" one that plays and exits with an error, "hung-f7" F7 on a
    // player that had to be killed; "ok", "f7", "f8", "esc" keys (during a run the window stops
    // it and reports F7 as -1, F8 as 1, Escape as 0). What the controller asked for: the entries
    // played, "none" for the message that nothing can be, "leave".
    void controller_data()
    {
        QTest::addColumn<int>("loopMode");
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("asked");
        const int one = MusicPlayerController::RepeatOne, all = MusicPlayerController::RepeatAll,
                  not_ = MusicPlayerController::NotRepeat;
        // one row a line
        // clang-format off
        QTest::newRow("not-repeat-once-each-then-stops-ok-again") << not_ << "gone a b gone2" << "end end ok end" << "a b b";
        QTest::newRow("not-repeat-bad-last-tried-once") << not_ << "a bad" << "end fail ok end" << "a bad a";
        QTest::newRow("repeat-all-wraps-bad-tried-once")
            << all << "a b bad c" << "f7 end end end fail end end end" << "a c a b bad c a b c";
        QTest::newRow("repeat-one-skips-a-failure-moves-on-at-a-crash") << one << "bad a b" << "fail end crash" << "bad a a b";
        QTest::newRow("nothing-playable-says-so") << all << "gone bad" << "fail" << "bad none";
        QTest::newRow("empty-list-says-so") << all << "" << "" << "none";
        QTest::newRow("skips-go-the-way-asked") << not_ << "a bad c" << "f7 f7 fail" << "a c bad a";
        QTest::newRow("hung-player-killed-f7-goes-back") << not_ << "a b c" << "f8 hung-f7" << "a b a";
        QTest::newRow("stopped-keys-play-and-leave")
            << not_ << "a b c" << "esc f7 esc ok esc f8 esc esc" << "a c c a leave";
        // clang-format on
    }
    void controller()
    {
        QFETCH(int, loopMode);
        QFETCH(QString, list);
        QFETCH(QString, script);
        ConfigWidget::instance()->setLoopMode(loopMode);
        writeList(list.split(' ', Qt::SkipEmptyParts));
        FileManager files;
        files.load();
        MusicPlayerController controller(&files);
        QStringList asked;
        connect(&controller, &MusicPlayerController::playRequested,
                [&](int, const QByteArray &path) { asked << QFileInfo(path).fileName(); });
        connect(&controller, &MusicPlayerController::nothingToPlay, [&] { asked << "none"; });
        connect(&controller, &MusicPlayerController::leaveRequested, [&] { asked << "leave"; });
        controller.start();
        const auto key = [&controller](int key, int reported) {
            return [&controller, key, reported] {
                const bool running = controller.isRunning();
                controller.keyPressed(key);
                if (running)
                    controller.runEnded(reported);
            };
        };
        const QHash<QString, std::function<void()>> steps{
            {"end", [&] { controller.runPlaying(), controller.runEnded(0); }},
            {"fail", [&] { controller.runEnded(0); }},
            {"crash", [&] { controller.runPlaying(), controller.runFailed(11); }},
            {"hung-f7",
             [&] {
                 controller.runPlaying(), controller.keyPressed(Qt::Key_F7);
                 controller.runFailed(9);
             }},
            {"ok", key(Qt::Key_Return, 0)},
            {"f7", key(Qt::Key_F7, -1)},
            {"f8", key(Qt::Key_F8, 1)},
            {"esc", key(Qt::Key_Escape, 0)}};
        for (const QString &step : script.split(' ', Qt::SkipEmptyParts))
            steps[step]();
        QTEST(asked.join(' '), "asked");
    }

    // No player at all. The keys still work: the option menu and its stored values (the loop
    // modes as the menu names them), each volume step stored as a level and applied again (also
    // when it stays at a bound). Each entry then fails to start once, the screen (and so the
    // shell) sees "stopped", and "No music" comes up in the pen's language (how it fits in each:
    // tst_res); OK leaves.
    void noPlayer()
    {
        QVERIFY(fixture->writeSettings("PlayVolume=2\nLoopMode=0"));
        QVERIFY(QFile::remove(fixture->root().path("/usr/bin/mplayer")));
        writeList({"a.mp3", "b.mp3"});
        QTranslator translator;
        QVERIFY(translator.load(QM_DIR "/recorder_Ger.qm"));
        QCoreApplication::installTranslator(&translator);
        MusicPlayer player;
        playerWnd &window = player.window();
        window.show();
        QTest::keyClick(&window, Qt::Key_F12);
        ItemMenu *menu = window.optionMenu();
        QVERIFY(menu && menu->isVisible());
        QTest::keyClick(menu, Qt::Key_Right);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Right);
        QCOMPARE(menu->findChild<KoSpinBox *>()->getCurItem(), QStringLiteral("Pepeat all"));
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
        player.start();
        QTRY_VERIFY(window.findChild<MessageDialog *>());
        auto *message = window.findChild<MessageDialog *>();
        QVERIFY(message->isVisible() && !player.controller().isRunning());
        QCOMPARE(window.state(), playerWnd::Stopped);
        QCOMPARE(window.helpText(), translator.translate("playerWnd", "Press OK to Play"));
        MessageDialog expected(nullptr, translator.translate("PlayerWndAdapter", "No music"), 0);
        QCOMPARE(message->grab().toImage().convertToFormat(QImage::Format_RGB32),
                 expected.grab().toImage().convertToFormat(QImage::Format_RGB32));
        QTest::keyClick(message, Qt::Key_Return);
        QTRY_VERIFY(!window.isVisible());
    }

    // The musicplayer program: the list's names reach the player as the card's bytes (UTF-8 and
    // not GBK, after a byte-order mark and with CRLF line ends; files named *ends* end at once),
    // a gone file is named in the log, and SIGTERM ends the program and the player of its last
    // song.
    void program()
    {
        QVERIFY(fixture->writeSettings("LoopMode=2"));
        QByteArray list = "\xef\xbb\xbf", played;
        for (const QByteArray name :
             {"a-ends.mp3", "gone.mp3", "\xe4\xb8\xad-ends.mp3", "\xff-ends.mp3", "song.mp3"}) {
            list += "/mnt/mmc/e_Music/" + name + "\r\n";
            if (name == "gone.mp3")
                continue;
            played += fixture->root().rootBytes() + "/mnt/mmc/e_Music/" + name + '\n';
            QVERIFY(fixture->root().writeFile("/mnt/mmc/e_Music/" + QFile::decodeName(name), {}));
        }
        QVERIFY(fixture->root().writeFile("/apps/config/musiclist.txt", list));
        RecorderProcess program(fixture->root().root());
        program.setProgram(QStringLiteral(MUSICPLAYER_BIN));
        QVERIFY(program.start());
        QVERIFY(program.waitForError("music file missing, skipped: /mnt/mmc/e_Music/gone.mp3"));
        QTRY_COMPARE_WITH_TIMEOUT(fixture->root().readFile("/played"), played, 15000);
        ::kill(program.pid(), SIGTERM);
        QVERIFY(program.waitForExit());
        QVERIFY(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0);
        QCOMPARE(fixture->lines("/pids").size(), 4);
        QVERIFY(!QFileInfo::exists("/proc/" + fixture->lines("/pids").last()));
    }

    // What the process makes of a text: the line cutter's lines (chunks as they arrive split at
    // '|'), the lines of a real child printing it (its last line without a break is dropped at
    // exit), the argument splitter's pieces, and the parser's signals. The parser's rows: what a
    // real audio run does not show, "exit" standing for the child's exit; then the position of
    // a status line: to the last bit the number toDouble reads from the same text (a fuzzy
    // comparison would hide a misrounded one; a QVariant's text of a double reads back to the
    // same bits), also where the quick path for the usual "123.4" does not apply.
    void reading_data()
    {
        QTest::addColumn<int>("reader");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("out");
        QTest::newRow("line-joined-over-three-chunks")
            << Lines << "A:  1|.5 of 3.0|\r" << QStringList{"A:  1.5 of 3.0"};
        QTest::newRow("crlf-gives-an-empty-line") << Lines << "first\r\nsecond\n"
                                                  << QStringList{"first", "", "second"};
        QTest::newRow("partial-line-waits") << Lines << "x\ry|z" << QStringList{"x"};
        QTest::newRow("partial-line-dropped-at-exit")
            << ChildLines << "whole\npartial" << QStringList{"whole"};
        QTest::newRow("split-keeps-quoted-blanks")
            << Split << "a \"b c\" d" << QStringList{"a", "\"b c\"", "d"};
        QTest::newRow("split-blank-pieces")
            << Split << " a  b " << QStringList{"", "a", "", "b", ""};
        QTest::newRow("split-nothing") << Split << "" << QStringList{};
        QTest::newRow("first-status-line-announces-playback")
            << Signals << "AO: [null] 22050Hz 2ch\nA:   3.0 (03.0) of 9.0\rA:   3.1 (03.0) of 9.0\r"
            << QStringList{"ao null", "start 3", "loaded", "frame 0", "sec 3", "sec 3.1"};
        QTest::newRow("audio-driver-only-before-playback")
            << Signals << "A:   1.0 (01.0) of 9.0\rAO: [alsa] 44100Hz\n"
            << QStringList{"start 1", "loaded", "frame 0", "sec 1"};
        QTest::newRow("end-before-playback-told-after-exit")
            << Signals << "ID_EXIT=EOF\nExiting... (End of file)\n|exit"
            << QStringList{"loaded", "exited", "eof"};
        QTest::newRow("pause-and-exit-unannounced-no-eof")
            << Signals << "ID_PAUSED\n|exit" << QStringList{"pause", "exited"};
        for (const char *text :
             {"0.0", "3599.9", "007.5", "12.", "0.1234567", "123456789012.3", "1234567890123456.7",
              "88888888888888888888888.8", "-0.4", "1,5", "01:02.3", "1.2.3"}) {
            const QString sec = QVariant(QByteArray(text).toDouble()).toString();
            QTest::newRow(text) << Signals << "A: " + QString(text) + " (00.0) of 10.0\n"
                                << QStringList{"start " + sec, "loaded", "frame 0", "sec " + sec};
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
            else if (reader == Lines || reader == Signals)
                process.genericRead(chunk.toLatin1());
        }
        if (reader == Split)
            cut = MyProcess::splitArguments(text);
        QTEST(reader == Signals ? QStringList(log) : cut, "out");
    }

    // "Not repeat" with the host's mplayer on lists that end in a file that is gone or one that is
    // no music (mplayer ends on it at once, with no position): each entry is started once and the
    // player stops; OK then plays the first again, and the other no more. The first run as the
    // parser tells it: the audio driver, playback's start, positions rising to the file's end,
    // the exit and the end of file.
    void notRepeatListEnds_data()
    {
        QTest::addColumn<QString>("last");
        QTest::addColumn<QStringList>("started");
        QTest::newRow("a-then-gone") << "gone.mp3" << QStringList{"a.mp3"};
        QTest::newRow("a-then-bad") << "bad.mp3" << QStringList{"a.mp3", "bad.mp3"};
    }
    void notRepeatListEnds()
    {
        QFETCH(QString, last);
        QFETCH(QStringList, started);
        QVERIFY(fixture->installStandIn() && fixture->writeSettings("LoopMode=2"));
        writeList({"a.mp3", last});
        QCOMPARE(QProcess::execute("sox", {"-n", "-r", "22050", "-c", "1",
                                           fixture->root().path("/mnt/mmc/e_Music/a.mp3"), "synth",
                                           "2", "sine", "440"}),
                 0);
        MusicPlayer player;
        playerWnd &window = player.window();
        EventLog log(*window.process());
        QStringList runs;
        connect(window.process(), &QProcess::started,
                [&] { runs << QFileInfo(window.process()->arguments().at(3)).fileName(); });
        player.start();
        QTRY_VERIFY_WITH_TIMEOUT(!player.controller().isRunning(), runTimeout);
        QCOMPARE(runs, started);
        const QStringList first = log.mid(0, log.indexOf("eof") + 1);
        QCOMPARE(first.mid(0, 4), QStringList({"ao null", first.value(1), "loaded", "frame 0"}));
        QVector<double> secs; // -1 for any other signal
        for (const QString &event : first.mid(4, first.size() - 6))
            secs << (event.startsWith("sec ") ? event.mid(4).toDouble() : -1);
        QVERIFY2(first.value(1).startsWith("start ") && secs.size() > 10 && secs.first() >= 0 &&
                     std::is_sorted(secs.begin(), secs.end()) && qAbs(secs.last() - 2.0) < 0.2,
                 qPrintable(first.join(", ")));
        QCOMPARE(first.mid(first.size() - 2), QStringList({"exited", "eof"}));
        QTest::keyClick(&window, Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(!player.controller().isRunning(), runTimeout);
        QCOMPARE(runs, started << "a.mp3");
        QVERIFY(window.state() == playerWnd::Stopped && window.currentPosition() > 1.5);
    }

private:
    // Writes the list as the scan does (device paths, one a line; none without names) and makes
    // its files that are not there yet, but gone*.
    void writeList(const QStringList &names)
    {
        QByteArray list;
        for (const QString &name : names) {
            list += (name.isEmpty() ? "" : "/mnt/mmc/e_Music/" + name.toLocal8Bit()) + '\n';
            if (!name.isEmpty() && !name.startsWith("gone") &&
                !fixture->root().exists("/mnt/mmc/e_Music/" + name))
                QVERIFY(fixture->root().writeFile("/mnt/mmc/e_Music/" + name, "not played here"));
        }
        QVERIFY(names.isEmpty() || fixture->root().writeFile("/apps/config/musiclist.txt", list));
    }
    // a device root of its own for each test, with the scripted player
    std::unique_ptr<PlayerFixture> fixture;
};

QTEST_MAIN(TestPlayer)
#include "tst_player.moc"
