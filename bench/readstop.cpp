// How quickly a reading stops, whenever the stop comes: 100 readings of a half-minute text through
// the scan view and the host speech engine (writing its audio at the pace it is heard, as without
// a sound card), each stopped at a random moment from right after it was asked for to 60 ms later,
// while it is handed to the speech thread, while the engine starts, or while it speaks. The stop
// is, in turn, the view's own stop (a new scan stops reading so), Escape, or a new reading asked
// for at once. Measured: from the stop to the end of the speech thread, and the longest the GUI
// thread did not get to run its timers meanwhile.
#include "scanread/csoundthread.h"
#include "scanread/ocrpen.h"
#include "scanread/scanreadedit.h"
#include "scanread/ttsplayer.h"
#include "scanroot.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <random>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int readings = 100;
const char *const kinds[] = {"stop", "Escape", "new reading"};

double millis(Clock::duration length)
{
    return std::chrono::duration<double, std::milli>(length).count();
}

// runs the event loop until done() holds or the time is up; false on the time
template<typename Done> bool runUntil(Done done, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.hasExpired(timeoutMs))
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DEVSIM_SPEECH", "file");
    QTemporaryDir root;
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    QApplication app(argc, argv);
    qInstallMessageHandler(quiet);
    if (!makeScanRoot(root.path(), "[InfoListen]\nLan=1\n[SystemSet]\nSpeed=50\n"))
        return 1;

    std::vector<double> latencies[3];
    double worst = 0;
    double frozen = 0;
    int lost = 0;
    {
        ScanReadEdit view;
        view.Init();
        view.setFixedSize(256, 64);
        view.show();
        const QString text =
            QStringLiteral("The quick brown fox jumps over the lazy dog. ").repeated(12);
        view.setPlainText(text + "Hi.");
        // the speech thread's end, as the view learns it
        auto *thread = view.findChild<CSoundThread *>();
        Clock::time_point ended{};
        int ends = 0;
        QObject::connect(thread, &QThread::finished, &view, [&] {
            ended = Clock::now();
            ++ends;
        });
        // the GUI thread's longest gap between two ticks of a 2 ms timer
        Clock::time_point tick = Clock::now();
        QTimer ticker;
        ticker.setTimerType(Qt::PreciseTimer);
        QObject::connect(&ticker, &QTimer::timeout, [&] {
            const Clock::time_point now = Clock::now();
            frozen = std::max(frozen, millis(now - tick) - 2.0);
            tick = now;
        });

        std::mt19937 random(20261125);
        std::uniform_int_distribution<int> moment(-1, 60);
        for (int reading = 0; reading < readings; ++reading) {
            const int kind = reading % 3;
            const int after = moment(random);
            const int endsBefore = ends;
            Clock::time_point stopped{};
            QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            const auto stop = [&] {
                stopped = Clock::now();
                if (kind == 0)
                    view.StopTTS();
                else if (kind == 1)
                    QApplication::sendEvent(&view, &escape);
                else
                    view.readText(QStringLiteral("Hi."), text.size());
            };
            tick = Clock::now();
            ticker.start(2);
            view.readText(text, 0);
            if (after < 0)
                stop();
            else
                QTimer::singleShot(after, Qt::PreciseTimer, &view, stop);
            if (!runUntil([&] { return ends > endsBefore; }, 40000)) {
                ++lost;
                view.StopTTS();
            }
            ticker.stop();
            const double took = millis(ended - stopped);
            latencies[kind].push_back(took);
            if (took > 30)
                std::printf("reading %d (%s %d ms after it was asked for): %.1f ms\n", reading,
                            kinds[kind], after, took);
            worst = std::max(worst, took);
            // the new reading is let go before the next round
            if (kind == 2) {
                view.StopTTS();
                runUntil([&] { return !view.isReading(); }, 40000);
            }
        }
    }
    TTSPlayer::quitFun();
    OCRPen::quitFun();
    for (int kind = 0; kind < 3; ++kind)
        std::printf("%-12s %3zu readings: to the end of the speech thread median %.1f ms, max "
                    "%.1f ms\n",
                    kinds[kind], latencies[kind].size(), median(latencies[kind]),
                    *std::max_element(latencies[kind].begin(), latencies[kind].end()));
    std::printf("readings that did not stop: %d\n", lost);
    std::printf("longest the GUI thread was held meanwhile: %.1f ms (goal <= 100 ms)\n", frozen);
    std::printf("BENCH read_stop value=%.1fms goal<=50ms\n", lost ? 1e9 : worst);
    return lost == 0 && worst <= 50 && frozen <= 100 ? 0 : 1;
}
