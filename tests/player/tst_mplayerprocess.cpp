// The slave player's process: the line cutter, argument splitting, the output parser on typed
// lines and on a transcript recorded from the real mplayer (through the device simulation's
// stand-in), and a player that cannot be started. Real runs in a window: tst_playerreal.
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

// Real mplayer output of a short file, as the stand-in gives it (stdin held open, as by the
// window).
QByteArray recordTranscript(const QString &mplayer, const QString &file)
{
    QProcess player;
    player.setProcessChannelMode(QProcess::MergedChannels);
    player.start(mplayer, {"-identify", "-slave", file, "-ss", "0"});
    player.waitForFinished(60000);
    return player.readAll();
}

} // namespace

class TestMplayerProcess : public QObject
{
    Q_OBJECT

private slots:
    void lineCutter_data()
    {
        QTest::addColumn<QList<QByteArray>>("chunks");
        QTest::addColumn<QList<QByteArray>>("lines");
        QTest::addColumn<int>("beforeLastChunk");
        QTest::newRow("joined-over-three-chunks") << QList<QByteArray>{"A:  1", ".5 of 3.0", "\r"}
                                                  << QList<QByteArray>{"A:  1.5 of 3.0"} << 0;
        QTest::newRow("crlf-gives-an-empty-line") << QList<QByteArray>{"first\r\nsecond\n"}
                                                  << QList<QByteArray>{"first", "", "second"} << 0;
        QTest::newRow("break-opens-a-chunk")
            << QList<QByteArray>{"one", "\rtwo\n"} << QList<QByteArray>{"one", "two"} << 0;
        QTest::newRow("partial-line-waits")
            << QList<QByteArray>{"x\ry", "z"} << QList<QByteArray>{"x"} << 1;
    }
    void lineCutter()
    {
        QFETCH(QList<QByteArray>, chunks);
        QFETCH(QList<QByteArray>, lines);
        QFETCH(int, beforeLastChunk);
        MyProcess process;
        QSignalSpy spy(&process, &MyProcess::lineAvailable);
        for (int n = 0; n < chunks.size(); ++n) {
            if (n == chunks.size() - 1)
                QCOMPARE(spy.count(), beforeLastChunk);
            process.genericRead(chunks.at(n));
        }
        QList<QByteArray> got;
        for (const QList<QVariant> &args : spy)
            got << args.at(0).toByteArray();
        QCOMPARE(got, lines);
    }

    // A real child: its last line without a break is dropped at exit.
    void partialLineAtExitDropped()
    {
        MyProcess process;
        QSignalSpy lines(&process, &MyProcess::lineAvailable);
        QSignalSpy finished(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished));
        process.addArgument("/bin/sh");
        process.addArgument("-c");
        process.addArgument("printf 'whole\\npartial'");
        QCOMPARE(process.arguments(), QStringList({"/bin/sh", "-c", "printf 'whole\\npartial'"}));
        process.start();
        QVERIFY(finished.wait(10000));
        QCOMPARE(lines.count(), 1);
        QCOMPARE(lines.at(0).at(0).toByteArray(), QByteArray("whole"));
        process.clearArguments();
        QCOMPARE(process.arguments(), QStringList{QString()});
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
        QFETCH(QStringList, pieces);
        QCOMPARE(MyProcess::splitArguments(text), pieces);
    }

    void parser_data()
    {
        QTest::addColumn<QList<QByteArray>>("lines");
        QTest::addColumn<QStringList>("events");
        const QByteArray status = "A:   3.0 (03.0) of 10.0 (10.0)  0.1% ";
        const QStringList first{"start 3", "loaded", "frame 0", "sec 3"};
        QTest::newRow("first-status-line") << QList<QByteArray>{status} << first;
        QTest::newRow("second-status-line-only-sec")
            << QList<QByteArray>{status, "A:   3.5 (03.4) of 10.0 (10.0)  0.1% "}
            << first + QStringList{"sec 3.5"};
        QTest::newRow("video-frame-number")
            << QList<QByteArray>{"V:   1.0  25/ 25  1%  0%  0.0% 0 0"}
            << QStringList{"start 1", "loaded", "frame 0", "sec 1", "frame 25"};
        QTest::newRow("ao-before-playback")
            << QList<QByteArray>{"AO: [null] 22050Hz 2ch s16le"} << QStringList{"ao null"};
        QTest::newRow("ao-after-playback-ignored")
            << QList<QByteArray>{status, "AO: [null] 22050Hz 2ch s16le"} << first;
        QTest::newRow("pause-before-playback")
            << QList<QByteArray>{"ID_PAUSED"} << QStringList{"pause"};
        QTest::newRow("pause-while-playing")
            << QList<QByteArray>{status, "ID_PAUSED"} << first + QStringList{"pause"};
        QTest::newRow("end-before-playback-loads")
            << QList<QByteArray>{"ID_EXIT=EOF", "Exiting... (End of file)"}
            << QStringList{"loaded"};
        QTest::newRow("screenshot") << QList<QByteArray>{"*** screenshot 'shot0001.png' ***"}
                                    << QStringList{"shot shot0001.png"};
    }
    void parser()
    {
        QFETCH(QList<QByteArray>, lines);
        QFETCH(QStringList, events);
        MplayerProcess process;
        EventLog log(process);
        for (const QByteArray &line : lines)
            process.parseLine(line);
        QCOMPARE(log.events, events);
    }

    // The end of file is told only with the exit, and only when the child announced it.
    void endReportedAtExit_data()
    {
        QTest::addColumn<bool>("announced");
        QTest::newRow("announced") << true;
        QTest::newRow("killed-or-quit") << false;
    }
    void endReportedAtExit()
    {
        QFETCH(bool, announced);
        MplayerProcess process;
        EventLog log(process);
        process.parseLine("A:   1.0 (01.0) of 1.0 (01.0)  0.1% ");
        if (announced)
            process.parseLine("ID_EXIT=EOF");
        process.processFinished(0, QProcess::NormalExit);
        QCOMPARE(log.events.mid(4),
                 announced ? QStringList({"exited", "eof"}) : QStringList({"exited"}));
    }

    // The parser fed, in odd-sized chunks, what the real player printed for a whole file.
    void recordedTranscript()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.installStandIn());
        const QString file = fixture.makeSound("two.mp3", 2);
        QVERIFY(!file.isEmpty());
        const QByteArray transcript =
            recordTranscript(fixture.root().path("/usr/bin/mplayer"), file);
        QVERIFY2(transcript.contains("ID_EXIT=EOF"), transcript.right(300).constData());

        MplayerProcess process;
        EventLog log(process);
        for (int at = 0; at < transcript.size(); at += 97)
            process.genericRead(transcript.mid(at, 97));
        process.processFinished(0, QProcess::NormalExit);

        const QStringList &e = log.events;
        const int start = e.indexOf(QRegularExpression("start .*"));
        QVERIFY(start > 0);
        QVERIFY(e.mid(0, start).contains("ao null"));
        QCOMPARE(e.mid(start + 1, 2), QStringList({"loaded", "frame 0"}));
        QVERIFY(e.at(start + 3).startsWith("sec "));
        // after the start only positions, rising to the file's end, then the exit and the end
        const QStringList after = e.mid(start + 3, e.size() - start - 5);
        QVERIFY(after.size() > 10);
        double last = 0;
        for (const QString &event : after) {
            QVERIFY2(event.startsWith("sec "), qPrintable(event));
            QVERIFY(event.mid(4).toDouble() >= last);
            last = event.mid(4).toDouble();
        }
        QVERIFY(qAbs(last - 2.0) < 0.2);
        QCOMPARE(e.mid(e.size() - 2), QStringList({"exited", "eof"}));
    }

    void unstartable()
    {
        qRegisterMetaType<QProcess::ProcessError>();
        MplayerProcess process;
        QSignalSpy errors(&process, &QProcess::errorOccurred);
        process.addArgument("/nonexistent/mplayer");
        QVERIFY(!process.start());
        QCOMPARE(errors.count(), 1);
        QCOMPARE(errors.at(0).at(0).value<QProcess::ProcessError>(), QProcess::FailedToStart);
    }
};

QTEST_GUILESS_MAIN(TestMplayerProcess)
#include "tst_mplayerprocess.moc"
