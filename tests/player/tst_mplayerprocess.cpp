// The slave player: its line cutter, argument splitting and output parser on typed lines; and
// against the host's mplayer (through the device simulation's stand-in, on files made here) the
// player window in one walk through pause and resume, a quick seek to the middle of a 70 s file,
// F8, a user's stop, a natural end with the parser's signals in their order, a missing file and
// the window's end while playing. No player is left behind. A scripted player: tst_playerwnd.
#include "player/mplayerprocess.h"
#include "player/playerwnd.h"
#include "playerfixture.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

constexpr int runTimeout = 30000;

// The parser's signals as short texts, in the order they came.
struct EventLog : QStringList
{
    explicit EventLog(MplayerProcess &p)
    {
        const auto note = [this](const char *name) { return [this, name] { append(name); }; };
        const auto with = [this](const char *name) {
            return [this, name](const QVariant &v) { append(name + (' ' + v.toString())); };
        };
        QObject::connect(&p, &MplayerProcess::receivedStartingTime, with("start"));
        QObject::connect(&p, &MplayerProcess::mplayerFullyLoaded, note("loaded"));
        QObject::connect(&p, &MplayerProcess::receivedCurrentFrame, with("frame"));
        QObject::connect(&p, &MplayerProcess::receivedCurrentSec, with("sec"));
        QObject::connect(&p, &MplayerProcess::receivedPause, note("pause"));
        QObject::connect(&p, &MplayerProcess::receivedAO, with("ao"));
        QObject::connect(&p, &MplayerProcess::receivedScreenshot, with("shot"));
        QObject::connect(&p, &MplayerProcess::processExited, note("exited"));
        QObject::connect(&p, &MplayerProcess::receivedEndOfFile, note("eof"));
    }
};

} // namespace

class TestMplayerProcess : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(fixture.installStandIn()); }
    void cleanup() { QCOMPARE(childProcesses(), QList<qint64>()); }

    // The line cutter on chunks as they arrive (split at '|'), and splitArguments on a text.
    void splitting_data()
    {
        QTest::addColumn<bool>("cutter");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("pieces");
        QTest::newRow("line-joined-over-three-chunks")
            << true << "A:  1|.5 of 3.0|\r" << QStringList{"A:  1.5 of 3.0"};
        QTest::newRow("crlf-gives-an-empty-line") << true << "first\r\nsecond\n"
                                                  << QStringList{"first", "", "second"};
        QTest::newRow("break-opens-a-chunk") << true << "one|\rtwo\n" << QStringList{"one", "two"};
        QTest::newRow("partial-line-waits") << true << "x\ry|z" << QStringList{"x"};
        QTest::newRow("quoted-piece-keeps-quotes")
            << false << "a \"b c\" d" << QStringList{"a", "\"b c\"", "d"};
        QTest::newRow("two-spaces-empty-piece") << false << "a  b" << QStringList{"a", "", "b"};
        QTest::newRow("trailing-space-empty-last") << false << "a " << QStringList{"a", ""};
        QTest::newRow("empty") << false << "" << QStringList{};
    }
    void splitting()
    {
        QFETCH(bool, cutter);
        QFETCH(QString, text);
        MyProcess process;
        QSignalSpy lines(&process, &MyProcess::lineAvailable);
        for (const QString &chunk : text.split('|'))
            process.genericRead(chunk.toLatin1());
        QStringList cut;
        for (const QList<QVariant> &line : lines)
            cut << line.at(0).toString();
        QTEST(cutter ? cut : MyProcess::splitArguments(text), "pieces");
    }

    // A real child: its last line without a break is dropped at exit.
    void partialLineAtExitDropped()
    {
        MyProcess process;
        QSignalSpy lines(&process, &MyProcess::lineAvailable);
        QSignalSpy finished(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished));
        for (const char *argument : {"/bin/sh", "-c", "printf 'whole\\npartial'"})
            process.addArgument(argument);
        process.start();
        QVERIFY(finished.wait(10000));
        QCOMPARE(lines, QList<QList<QVariant>>{{QByteArray("whole")}});
    }

    // What a real audio run does not show (its own order is checked at the end of the walk),
    // "exit" standing for the child's exit. Then the position of a status line: to the last bit
    // the number toDouble reads from the same text (a fuzzy comparison would hide a misrounded
    // one; a QVariant's text of a double reads back to the same bits), also where the quick path
    // for the usual "123.4" does not apply.
    void parser_data()
    {
        QTest::addColumn<QByteArrayList>("lines");
        QTest::addColumn<QStringList>("events");
        const QByteArray status = "A:   3.0 (03.0) of 10.0 (10.0)  0.1% ";
        const QStringList first{"start 3", "loaded", "frame 0", "sec 3"};
        QTest::newRow("video-frame-number")
            << QByteArrayList{"V:   1.0  25/ 25  1%  0%  0.0% 0 0"}
            << QStringList{"start 1", "loaded", "frame 0", "sec 1", "frame 25"};
        QTest::newRow("ao-after-playback-ignored")
            << QByteArrayList{status, "AO: [null] 22050Hz 2ch s16le"} << first;
        QTest::newRow("pause-before-playback")
            << QByteArrayList{"ID_PAUSED"} << QStringList{"pause"};
        QTest::newRow("end-before-playback-loads")
            << QByteArrayList{"ID_EXIT=EOF", "Exiting... (End of file)"} << QStringList{"loaded"};
        QTest::newRow("screenshot") << QByteArrayList{"*** screenshot 'shot0001.png' ***"}
                                    << QStringList{"shot shot0001.png"};
        QTest::newRow("exit-unannounced-no-eof")
            << QByteArrayList{status, "exit"} << first + QStringList{"exited"};
        for (const char *text :
             {"0.0", "3599.9", "007.5", "12.", "0.1234567", "123456789012.3", "1234567890123456.7",
              "88888888888888888888888.8", "-0.4", "1,5", "01:02.3", "1.2.3"}) {
            const QString sec = QVariant(QByteArray(text).toDouble()).toString();
            QTest::newRow(text) << QByteArrayList{"A: " + QByteArray(text) + " (00.0) of 10.0"}
                                << QStringList{"start " + sec, "loaded", "frame 0", "sec " + sec};
        }
    }
    void parser()
    {
        QFETCH(QByteArrayList, lines);
        MplayerProcess process;
        EventLog log(process);
        for (const QByteArray &line : lines) {
            if (line == "exit")
                process.processFinished(0, QProcess::NormalExit);
            else
                process.parseLine(line);
        }
        QTEST(QStringList(log), "events");
    }

    void walk()
    {
        playerWnd &window = *new playerWnd;
        QSignalSpy finished(&window, &playerWnd::mplayerPlayFinished);
        QSignalSpy failed(&window, &playerWnd::mplayerFinishedWithError);
        // makes a file of the given length, plays it and waits for the player's first position
        const auto play = [&](const QString &name, int seconds) {
            const QString file = fixture.makeSound(name, seconds);
            QSignalSpy positions(window.process(), &MplayerProcess::receivedCurrentSec);
            window.startPlay(0, QFileInfo(file), playerWnd::formatTime(seconds), 0, 0);
            return !file.isEmpty() && positions.wait(runTimeout);
        };
        QVERIFY(play("seventy.mp3", 70));
        // pause, then the next position report plays again
        QSignalSpy paused(window.process(), &MplayerProcess::receivedPause);
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(paused.wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Paused);
        QSignalSpy positions(window.process(), &MplayerProcess::receivedCurrentSec);
        QTest::keyClick(&window, Qt::Key_Return);
        QVERIFY(positions.wait(runTimeout));
        QCOMPARE(window.state(), playerWnd::Playing);
        // F6 held to 50 %: the player goes on from within a second of 35 s
        QTest::keyPress(&window, Qt::Key_F6);
        QTRY_VERIFY_WITH_TIMEOUT(window.quickSeekPosition() >= 50, runTimeout);
        const int percent = window.quickSeekPosition();
        QTest::keyRelease(&window, Qt::Key_F6);
        QCOMPARE(percent, 50);
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
        // To the end: the audio output, then the first status line's four signals in order;
        // after them only positions rising to the file's end, then the exit and the end of file,
        // then the report with the action 0.
        EventLog log(*window.process());
        QVERIFY(play("end.wav", 2));
        QVERIFY(finished.wait(runTimeout));
        const int start = log.indexOf(QRegularExpression("start .*"));
        QVERIFY(start > 0 && log.mid(0, start).contains("ao null"));
        QCOMPARE(log.mid(start + 1, 2), QStringList({"loaded", "frame 0"}));
        const QStringList after = log.mid(start + 3, log.size() - start - 5);
        QVERIFY(after.size() > 10);
        double last = 0;
        for (const QString &event : after) {
            QVERIFY2(event.startsWith("sec ") && event.mid(4).toDouble() >= last,
                     qPrintable(event));
            last = event.mid(4).toDouble();
        }
        QVERIFY(qAbs(last - 2.0) < 0.2 && window.currentPosition() > 1.5);
        QCOMPARE(log.mid(log.size() - 2), QStringList({"exited", "eof"}));
        QCOMPARE(finished.takeFirst(), QVariantList{0});
        QCOMPARE(window.state(), playerWnd::Stopped);
        // This mplayer ends a file it cannot open as it ends any file (exit code 0), with no
        // position ever reported; the owner sees the end of a run that never played.
        window.startPlay(0, QFileInfo(fixture.root().path("/mnt/mmc/gone.mp3")), "00:10", 0, 0);
        QTRY_VERIFY_WITH_TIMEOUT(finished.count() + failed.count() == 1, runTimeout);
        QCOMPARE(window.currentPosition(), 0.0);
        QCOMPARE(window.state(), playerWnd::Stopped);
        // the window's end takes the player with it (checked by cleanup)
        QVERIFY(play("seventy.mp3", 70));
        QCOMPARE(childProcesses().size(), 1);
        playerWnd::destory();
    }

private:
    // one device root for all: each test makes the files it plays
    PlayerFixture fixture;
};

QTEST_MAIN(TestMplayerProcess)
#include "tst_mplayerprocess.moc"
