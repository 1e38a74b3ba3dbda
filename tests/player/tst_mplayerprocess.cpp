// The slave player's process: the line cutter, argument splitting, the output parser on typed
// lines and on a transcript recorded from the real mplayer (through the device simulation's
// stand-in). A player that cannot be started: tst_playerwnd. Real runs in a window: tst_playerreal.
#include "player/mplayerprocess.h"
#include "playerfixture.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

// The parser's signals as short texts, in the order they came.
struct EventLog
{
    explicit EventLog(MplayerProcess &p)
    {
        const auto note = [this](const char *name) { return [this, name] { events << name; }; };
        const auto with = [this](const char *name) {
            return [this, name](const QVariant &v) { events << name + (' ' + v.toString()); };
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
    QStringList events;
};

} // namespace

class TestMplayerProcess : public QObject
{
    Q_OBJECT

private slots:
    // chunks as they arrive, split at '|'; the lines given, joined by '|'
    void lineCutter_data()
    {
        QTest::addColumn<QByteArray>("chunks");
        QTest::addColumn<QByteArray>("lines");
        QTest::newRow("joined-over-three-chunks")
            << QByteArray("A:  1|.5 of 3.0|\r") << QByteArray("A:  1.5 of 3.0");
        QTest::newRow("crlf-gives-an-empty-line")
            << QByteArray("first\r\nsecond\n") << QByteArray("first||second");
        QTest::newRow("break-opens-a-chunk") << QByteArray("one|\rtwo\n") << QByteArray("one|two");
        QTest::newRow("partial-line-waits") << QByteArray("x\ry|z") << QByteArray("x");
    }
    void lineCutter()
    {
        QFETCH(QByteArray, chunks);
        MyProcess process;
        QSignalSpy spy(&process, &MyProcess::lineAvailable);
        for (const QByteArray &chunk : chunks.split('|'))
            process.genericRead(chunk);
        QByteArrayList got;
        for (const QList<QVariant> &args : spy)
            got << args.at(0).toByteArray();
        QTEST(got.join('|'), "lines");
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

    void splitArguments_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("pieces");
        QTest::newRow("quoted-piece-keeps-quotes")
            << "a \"b c\" d" << QStringList{"a", "\"b c\"", "d"};
        QTest::newRow("two-spaces-empty-piece") << "a  b" << QStringList{"a", "", "b"};
        QTest::newRow("trailing-space-empty-last") << "a " << QStringList{"a", ""};
        QTest::newRow("empty") << "" << QStringList{};
    }
    void splitArguments()
    {
        QFETCH(QString, text);
        QTEST(MyProcess::splitArguments(text), "pieces");
    }

    // What a real audio run does not show (its own order is checked on the recorded transcript);
    // "exit" stands for the child's exit.
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
    }
    // The position read off a status line is the number toDouble reads from the same text,
    // also where the quick path for the usual "123.4" does not apply.
    void statusPosition_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text :
             {"0.0", "3599.9", "007.5", "12.", "0.1234567", "123456789012.3", "1234567890123456.7",
              "88888888888888888888888.8", "-0.4", "1,5", "01:02.3", "1.2.3"})
            QTest::newRow(text) << QString::fromLatin1(text);
    }
    void statusPosition()
    {
        QFETCH(QString, text);
        MplayerProcess process;
        QSignalSpy sec(&process, &MplayerProcess::receivedCurrentSec);
        process.parseLine(("A: " + text + " (00.0) of 10.0 (10.0)  0.1% ").toLatin1());
        QCOMPARE(sec.size(), 1);
        // to the last bit: a fuzzy comparison would hide a misrounded position
        QCOMPARE(QByteArray::number(sec.at(0).at(0).toDouble(), 'g', 17),
                 QByteArray::number(text.toDouble(), 'g', 17));
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
        QTEST(log.events, "events");
    }

    // The parser fed, in odd-sized chunks, what the real player printed for a whole file (stdin
    // held open, as by the window).
    void recordedTranscript()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.installStandIn());
        const QString file = fixture.makeSound("two.mp3", 2);
        QVERIFY(!file.isEmpty());
        QProcess player;
        player.setProcessChannelMode(QProcess::MergedChannels);
        player.start(fixture.root().path("/usr/bin/mplayer"),
                     {"-identify", "-slave", file, "-ss", "0"});
        QVERIFY(player.waitForFinished(60000));
        const QByteArray transcript = player.readAll();
        QVERIFY2(transcript.contains("ID_EXIT=EOF"), transcript.right(300).constData());

        MplayerProcess process;
        EventLog log(process);
        for (int at = 0; at < transcript.size(); at += 97)
            process.genericRead(transcript.mid(at, 97));
        process.processFinished(0, QProcess::NormalExit);

        // the audio output, then the first status line's four signals in order; after them only
        // positions rising to the file's end, then the exit and the end of file
        const QStringList &e = log.events;
        const int start = e.indexOf(QRegularExpression("start .*"));
        QVERIFY(start > 0 && e.mid(0, start).contains("ao null"));
        QCOMPARE(e.mid(start + 1, 2), QStringList({"loaded", "frame 0"}));
        const QStringList after = e.mid(start + 3, e.size() - start - 5);
        QVERIFY(after.size() > 10);
        double last = 0;
        for (const QString &event : after) {
            QVERIFY2(event.startsWith("sec ") && event.mid(4).toDouble() >= last,
                     qPrintable(event));
            last = event.mid(4).toDouble();
        }
        QVERIFY(qAbs(last - 2.0) < 0.2);
        QCOMPARE(e.mid(e.size() - 2), QStringList({"exited", "eof"}));
    }
};

QTEST_GUILESS_MAIN(TestMplayerProcess)
#include "tst_mplayerprocess.moc"
