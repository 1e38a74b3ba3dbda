// The installed recorder as a user meets it: a device root made by mkroot, a real X server, keys
// pressed with xdotool, the shell's channel heard through qcop, and the files on the card. The
// cases run in order on one card, each finding there what the one before recorded.

#include "recorderprocess.h"
#include "storage/audioinfo.h"
#include "testdeviceroot.h"
#include "xserver.h"

#include <QtTest>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace {

// A loaded machine may take a while to show a window: a minute for the first one.
constexpr int stepTimeoutMs = 20000;

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        for (const char *tool : {"Xvfb", "xdotool"})
            if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
                QSKIP(qPrintable(QStringLiteral("%1 is not installed (scripts/setup)").arg(tool)));
        // an encoder whose recorder was killed comes to this process, which can then reap it
        QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
        QVERIFY2(m_x.start(), "no Xvfb could be started");
        QCOMPARE(QProcess::execute("bash", {MKROOT, m_root.root(), BUILD_DIR}), 0);
        m_shell.start(QStringLiteral(QCOP_BIN), {"listen", "mainprocess"});
        QByteArray said;
        QTRY_VERIFY_WITH_TIMEOUT(
            (said += m_shell.readAllStandardError()).contains("qcop: listening"), stepTimeoutMs);

        m_recorder.showOn(m_x.display());
        m_recorder.setEnv(QStringLiteral("DEVSIM_SIGNAL"), QStringLiteral("generated"));
    }

    void init()
    {
        // a stop at start-up changes the card before the program starts
        if (QTest::currentTestFunction() != QLatin1String("shellStopEndsEveryState"))
            QVERIFY(startRecorder());
    }

    void cleanup()
    {
        if (QTest::currentTestFailed())
            qWarning("recorder said: %s", m_recorder.standardError().right(3000).constData());
        m_recorder.kill();
        // nothing a failed case started may record on into the next one
        // (an orphan is ours to reap, any other pid answers at once)
        for (qint64 pid : encoders(m_root.root()).keys()) {
            ::kill(pid_t(pid), SIGKILL);
            waitpid(pid_t(pid), nullptr, 0);
        }
    }

    void recordPauseResumeAndKeep()
    {
        QVERIFY(press("Return"));
        QTRY_COMPARE_WITH_TIMEOUT(encoders(m_root.root()).values(),
                                  QStringList{"shine -b 96 -s 24000 " + path(".mp3")},
                                  stepTimeoutMs);
        const qint64 encoder = encoders(m_root.root()).firstKey();
        QTRY_VERIFY_WITH_TIMEOUT(secondsOnCard(".mp3") >= 6, stepTimeoutMs);
        QVERIFY(press("Return"));
        QTRY_COMPARE_WITH_TIMEOUT(processState(encoder), 'T', stepTimeoutMs);
        QVERIFY(press("Return"));
        QTRY_VERIFY_WITH_TIMEOUT(processState(encoder) != 'T', stepTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(secondsOnCard(".mp3") >= 8, stepTimeoutMs);

        QVERIFY(press("Escape"));
        QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 2, stepTimeoutMs);
        QVERIFY(press("Return")); // the marked first answer is "Yes"
        // the confirmation goes away by itself after two seconds
        QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 1, stepTimeoutMs);
        QCOMPARE(m_root.recordingList(), QStringList{card(".mp3")});
        audioinfo info;
        QCOMPARE(getaudioinfo(path(".mp3").toLocal8Bit(), &info), 0);
        // six seconds recorded, then two more after the pause: nothing lost, nothing added
        QVERIFY2(qAbs(info.seconds - 8) <= 1.5, qPrintable(QString::number(info.seconds)));

        // an Escape while idle leaves the program
        QVERIFY(press("Escape"));
        QVERIFY(endedWell());
        // shown; no sleep while recording, nor after the pause; the idle time-outs back at the
        // stop and at the end
        const QString sleep = "mainprocess recorder(QString) disableAutoSleep";
        const QString shut = "mainprocess recorder(QString) enableAutoShut";
        QTRY_COMPARE_WITH_TIMEOUT(
            heard(),
            QStringList({"mainprocess Show(QString) record", sleep,
                         "mainprocess lrcplayer(QString) nosleepnew", sleep, shut, shut}),
            stepTimeoutMs);
    }

    void wavLowFromMenuThenShellStopsWhilePaused()
    {
        // options, a window over the recorder's: volume, format, quality; Right moves a row to its
        // next value
        QVERIFY(press("F12"));
        QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 2, stepTimeoutMs);
        for (const char *key : {"Down", "Right", "Down", "Right", "Escape"})
            QVERIFY(press(QLatin1String(key)));
        QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 1, stepTimeoutMs);

        QVERIFY(press("Return"));
        // the day's first recording is on the card already
        QTRY_COMPARE_WITH_TIMEOUT(encoders(m_root.root()).values(), wav("_1.wav"), stepTimeoutMs);
        const qint64 encoder = encoders(m_root.root()).firstKey();
        QTRY_VERIFY_WITH_TIMEOUT(secondsOnCard("_1.wav") >= 6, stepTimeoutMs); // to be kept
        QVERIFY(press("Return"));
        QTRY_COMPARE_WITH_TIMEOUT(processState(encoder), 'T', stepTimeoutMs);

        // the shell ends the program: the stopped encoder goes with it, the recording is kept
        QCOMPARE(QProcess::execute(QStringLiteral(QCOP_BIN),
                                   {"send", "recorderprocess", "execute(QString)", "stop"}),
                 0);
        QVERIFY(endedWell());
        QVERIFY(encoders(m_root.root()).isEmpty());
        QCOMPARE(m_root.recordingList(), QStringList({card("_1.wav"), card(".mp3")}));
    }

    void killedRecorderTakesItsEncoderAlong()
    {
        QVERIFY(press("Return"));
        // the format and quality chosen before are still in force
        QTRY_COMPARE_WITH_TIMEOUT(encoders(m_root.root()).values(), wav("_2.wav"), stepTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(secondsOnCard("_2.wav") >= 1, stepTimeoutMs);
        m_recorder.kill();
        QTRY_VERIFY_WITH_TIMEOUT(encoders(m_root.root()).isEmpty(), 1000);
        // listed when it started, so a crash does not lose it
        QVERIFY(m_root.exists(card("_2.wav")) && m_root.recordingList().value(0) == card("_2.wav"));
    }

    // The shell's stop ends the program whatever is on screen, modal dialogs included; a
    // recording asked about is kept unanswered.
    void shellStopEndsEveryState_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QByteArray>("word");
        QTest::newRow("save-question-stop-keeps-it") << "question" << QByteArray("stop");
        QTest::newRow("save-question-stoponly-keeps-it") << "question" << QByteArray("stoponly");
        QTest::newRow("saved-message-stop") << "saved" << QByteArray("stop");
        QTest::newRow("options-menu-stoponly") << "options" << QByteArray("stoponly");
        QTest::newRow("full-library-message-stop") << "full" << QByteArray("stop");
        QTest::newRow("no-space-at-start-up-stop") << "no-space" << QByteArray("stop");
    }

    void shellStopEndsEveryState()
    {
        QFETCH(QString, state);
        QFETCH(QByteArray, word);
        const QString list = "/apps/config/reclist.ini";
        const QByteArray listBefore = m_root.readFile(list);
        const QString esc = "mainprocess ESC(QString) escpressed";
        const int escBefore = heard().count(esc);
        const int unanswered = m_recorder.standardError().count("closed unanswered");
        const QString space = m_root.path("/mnt/mtdblock3");
        QStringList full;
        const auto restore = qScopeGuard([&] {
            QDir().mkpath(space);
            for (const QString &file : full)
                QFile::remove(m_root.path(file));
            if (!full.isEmpty())
                m_root.writeFile(list, listBefore);
        });
        if (state == "full") {
            QString lines;
            for (int i = 0; i < 1000; ++i) {
                full << QStringLiteral("/mnt/mmc/e_Recorder/full_%1.mp3").arg(i);
                QVERIFY(m_root.writeFile(full.last(), "x"));
                lines += full.last() + '\n';
            }
            QVERIFY(m_root.writeFile(
                list, "\xff\xfe" + QByteArray(reinterpret_cast<const char *>(lines.utf16()),
                                              lines.size() * 2)));
        }
        // no space measured at start-up: the message comes before anything else
        if (state == "no-space")
            QVERIFY(QDir(space).removeRecursively());
        const QStringList before = m_root.recordingList();
        QVERIFY(startRecorder(state == "no-space" ? 2 : 1));

        QString recorded;
        if (state == "question" || state == "saved") {
            QVERIFY(press("Return"));
            QTRY_COMPARE_WITH_TIMEOUT(encoders(m_root.root()).size(), 1, stepTimeoutMs);
            recorded = m_root.recordingList().value(0);
            // long enough to be asked about
            QTRY_VERIFY_WITH_TIMEOUT(secondsIn(m_root.path(recorded)) >= 6, stepTimeoutMs);
            QVERIFY(press("Escape"));
            QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 2, stepTimeoutMs);
            if (state == "saved") {
                const QString question = windows().last();
                QVERIFY(press("Return"));
                // the confirmation in the question's place; it goes by itself in two seconds
                QTRY_VERIFY_WITH_TIMEOUT(windows().size() == 2 && windows().last() != question,
                                         stepTimeoutMs);
            }
        } else if (state != "no-space") {
            QVERIFY(press(state == "options" ? "F12" : "Return"));
            QTRY_COMPARE_WITH_TIMEOUT(windows().size(), 2, stepTimeoutMs);
        }
        QElapsedTimer stopped;
        stopped.start();
        QCOMPARE(QProcess::execute(QStringLiteral(QCOP_BIN),
                                   {"send", "recorderprocess", "execute(QString)", word}),
                 0);
        QVERIFY(endedWell());
        qInfo("ended %lld ms after the %s", stopped.elapsed(), word.constData());
        QVERIFY(encoders(m_root.root()).isEmpty());
        // nothing lost; a recording asked about is kept, on the card and first in the list
        QCOMPARE(m_root.recordingList(),
                 recorded.isEmpty() ? before : QStringList(recorded) + before);
        QVERIFY(recorded.isEmpty() || secondsIn(m_root.path(recorded)) >= 6);
        // a dialog on screen was closed by the stop, not by its own time-out
        QCOMPARE(m_recorder.standardError().count("closed unanswered") - unanswered,
                 int(state != "options"));
        QTRY_COMPARE_WITH_TIMEOUT(heard().count(esc), escBefore + int(word == "stoponly"),
                                  stepTimeoutMs);
    }

private:
    bool startRecorder(int shown = 1)
    {
        return m_recorder.start() &&
               QTest::qWaitFor([&] { return windows().size() == shown; }, 60000);
    }
    QStringList windows() const { return m_x.visibleWindows(m_recorder.pid()); }
    bool press(const QString &key) const { return m_x.pressKey(m_recorder.pid(), key); }
    QString card(const QString &suffix) const { return "/mnt/mmc/e_Recorder/" + m_day + suffix; }
    QStringList wav(const QString &suffix) { return {"record2wav " + path(suffix) + " 11025"}; }
    QString path(const QString &suffix) const { return m_root.path(card(suffix)); }
    // a crash would give its signal as the exit code
    bool endedWell() { return m_recorder.waitForExit(stepTimeoutMs) && m_recorder.exitCode() == 0; }
    // Seconds of sound in the recording on the card so far, by its size: 96 kbit/s MP3 or 11025 Hz
    // 16-bit mono WAV after its 44-byte header. The encoders write as the sound comes.
    double secondsOnCard(const QString &suffix) const { return secondsIn(path(suffix)); }
    static double secondsIn(const QString &file)
    {
        const qint64 size = QFileInfo(file).size();
        return file.endsWith(".mp3") ? size / 12000.0 : (size - 44) / 22050.0;
    }
    // "CHANNEL MESSAGE DATA" of each message the shell has heard, oldest first
    QStringList heard() { return QString(m_shell.peek(1 << 20)).split('\n', Qt::SkipEmptyParts); }

    const QString m_day = QDate::currentDate().toString("yyMMdd");
    XServer m_x;
    TestDeviceRoot m_root;
    RecorderProcess m_recorder{m_root.root()};
    QProcess m_shell;
};

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
