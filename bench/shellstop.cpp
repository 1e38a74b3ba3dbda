// The shell's "stop" (or "stoponly") at random moments of the recorder's life, as when the pen is
// switched off: idle, starting a recording, recording, paused, with the options menu open,
// during the save question and during the "saved" message. Each cycle starts the installed recorder
// in one device root under Xvfb, drives it with xdotool into a state chosen at random, waits a
// random time there, sends the stop and measures until the process has ended. After each cycle no
// encoder may be left and the list may have lost nothing: every recording listed before is still
// listed, and one of 5 s or more (asked about, or about to be) is kept.
//   bench_shell_stop [CYCLES]       (50 by default; BENCH_SEED=N repeats a run)
// The figure is the longest time from the stop to the process gone; the goal is 2 s.

#include "recorderprocess.h"
#include "testdeviceroot.h"
#include "xserver.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

constexpr qint64 goalMs = 2000;
constexpr int stepMs = 30000;

const char *const phases[] = {"idle",    "starting", "recording", "paused",
                              "options", "question", "saved"};

bool waitFor(const std::function<bool()> &done, int timeoutMs = stepMs)
{
    return QTest::qWaitFor(done, timeoutMs);
}

// seconds of sound in the recording on the card so far, by its size (MP3 at 96 kbit/s)
double secondsIn(const QString &file)
{
    return QFileInfo(file).size() / 12000.0;
}

struct Cycle
{
    QString phase;
    int pauseMs = 0;
    QByteArray word;
    qint64 endedMs = -1;
    QString fault;
};

class Bench
{
public:
    bool setUp()
    {
        if (!m_x.start() || QProcess::execute("bash", {MKROOT, m_root.root(), BUILD_DIR}) != 0)
            return false;
        m_recorder.showOn(m_x.display());
        m_recorder.setEnv(QStringLiteral("DEVSIM_SIGNAL"), QStringLiteral("generated"));
        return true;
    }

    Cycle run(QRandomGenerator &random)
    {
        Cycle cycle;
        cycle.phase = QLatin1String(phases[random.bounded(int(std::size(phases)))]);
        cycle.pauseMs = random.bounded(cycle.phase == "saved" ? 1500 : 3000);
        if (cycle.phase == "starting") // before, while or just after the encoder starts
            cycle.pauseMs = random.bounded(600);
        cycle.word = random.bounded(2) ? "stop" : "stoponly";
        const QStringList before = m_root.recordingList();
        if (!m_recorder.start() || !waitFor([&] { return windows().size() == 1; })) {
            cycle.fault = "no window";
            return cycle;
        }
        QString recording;
        if (!drive(cycle.phase, recording)) {
            cycle.fault = "could not reach the state";
            m_recorder.kill();
            return cycle;
        }
        QTest::qWait(cycle.pauseMs); // the random moment within the state
        QElapsedTimer stopped;
        stopped.start();
        QProcess::execute(QStringLiteral(QCOP_BIN),
                          {"send", "recorderprocess", "execute(QString)", cycle.word});
        if (m_recorder.waitForExit(10000))
            cycle.endedMs = stopped.elapsed();
        else
            m_recorder.kill();

        const QStringList after = m_root.recordingList();
        const bool kept = after.contains(recording);
        QStringList lost;
        for (const QString &entry : before)
            if (!after.contains(entry))
                lost << entry;
        if (cycle.endedMs < 0)
            cycle.fault = "still running 10 s after the stop";
        else if (m_recorder.exitCode() != 0)
            cycle.fault = QStringLiteral("exit code %1").arg(m_recorder.exitCode());
        else if (!encoders(m_root.root()).isEmpty())
            cycle.fault = "an encoder left running";
        else if (!lost.isEmpty())
            cycle.fault = "lost from the list: " + lost.join(' ');
        else if ((cycle.phase == "question" || cycle.phase == "saved") && !kept)
            cycle.fault = "the recording asked about was not kept";
        else if (kept && !QFileInfo::exists(m_root.path(recording)))
            cycle.fault = "listed but not on the card";
        return cycle;
    }

private:
    QStringList windows() const { return m_x.visibleWindows(m_recorder.pid()); }
    bool press(const char *key) const { return m_x.pressKey(m_recorder.pid(), QLatin1String(key)); }

    // Brings the recorder from idle into the phase; `recording` is the pen path of the recording
    // made on the way, if any.
    bool drive(const QString &phase, QString &recording)
    {
        if (phase == "idle")
            return true;
        if (phase == "options")
            return press("F12") && waitFor([&] { return windows().size() == 2; });
        if (phase == "starting")
            return press("Return");
        if (!press("Return") || !waitFor([&] { return encoders(m_root.root()).size() == 1; }))
            return false;
        recording = m_root.recordingList().value(0);
        if (phase == "recording")
            return true;
        if (phase == "paused")
            return press("Return") && waitFor([&] {
                       const QList<qint64> pids = encoders(m_root.root()).keys();
                       return !pids.isEmpty() && processState(pids.first()) == 'T';
                   });
        // long enough to be asked about
        if (!waitFor([&] { return secondsIn(m_root.path(recording)) >= 6; }) || !press("Escape") ||
            !waitFor([&] { return windows().size() == 2; }))
            return false;
        if (phase == "question")
            return true;
        const QString question = windows().last();
        return press("Return") &&
               waitFor([&] { return windows().size() == 2 && windows().last() != question; });
    }

    XServer m_x;
    TestDeviceRoot m_root;
    RecorderProcess m_recorder{m_root.root()};
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int cycles = argc > 1 ? QByteArray(argv[1]).toInt() : 50;
    const quint32 seed = qEnvironmentVariableIsSet("BENCH_SEED")
                             ? quint32(qEnvironmentVariableIntValue("BENCH_SEED"))
                             : QRandomGenerator::system()->generate();
    QRandomGenerator random(seed);
    std::printf("shell stop at random moments: %d cycles, seed %u\n", cycles, seed);
    Bench bench;
    if (!bench.setUp()) {
        std::puts("no Xvfb or no device root: nothing measured");
        return 1;
    }
    QList<qint64> times;
    int faults = 0;
    for (int i = 1; i <= cycles; ++i) {
        const Cycle cycle = bench.run(random);
        std::printf("cycle %2d: %-9s +%4d ms, %-8s ended after %5lld ms%s%s\n", i,
                    qPrintable(cycle.phase), cycle.pauseMs, cycle.word.constData(), cycle.endedMs,
                    cycle.fault.isEmpty() ? "" : "  FAULT: ", qPrintable(cycle.fault));
        std::fflush(stdout);
        if (!cycle.fault.isEmpty())
            ++faults;
        if (cycle.endedMs >= 0)
            times << cycle.endedMs;
    }
    std::sort(times.begin(), times.end());
    const qint64 longest = faults ? 10000 : times.value(times.size() - 1, 10000);
    std::printf(
        "ended: median %lld ms, longest %lld ms, over %lld: %lld; faults: %d\n",
        times.value(times.size() / 2, -1), times.value(times.size() - 1, -1), goalMs,
        qint64(std::count_if(times.begin(), times.end(), [](qint64 t) { return t > goalMs; })),
        faults);
    std::printf("BENCH shell_stop value=%lldms goal<=%lld\n", longest, goalMs);
    return faults == 0 && longest <= goalMs ? 0 : 1;
}
