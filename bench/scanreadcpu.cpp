// The scan view's own CPU use while it reads a 500-word text aloud with the words highlighted:
// the GUI thread, where the view schedules and draws each highlight. The speech engine works on
// the speech thread and is shown apart, not counted.
#include "cpuseconds.h"
#include "scanread/configreader.h"
#include "scanread/ocrpen.h"
#include "scanread/scanreadedit.h"
#include "scanread/ttsplayer.h"
#include "scanroot.h"
#include "storage/devicepath.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <ctime>

namespace {

double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
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
    // English at the fastest pace, so that 500 words take about a minute
    if (!makeScanRoot(root.path(), "[InfoListen]\nLan=1\n[SystemSet]\nSpeed=100\n"))
        return 1;

    const QStringList words =
        QStringLiteral(
            "the pen reads every line it is drawn over and speaks each word as it is lit")
            .split(' ');
    QStringList text;
    for (int i = 0; i < 500; ++i)
        text << words.at(i % words.size());

    double ours = 0, all = 0, elapsed = 0;
    int highlighted = 0;
    {
        ScanReadEdit view;
        view.Init();
        view.setFixedSize(256, 64);
        view.show();
        view.appendScanText(text.join(' ') + '.');
        QObject::connect(&view, &QTextEdit::selectionChanged, [&] { ++highlighted; });
        QApplication::processEvents();
        const double before = threadSeconds();
        const double beforeAll = cpuSeconds(RUSAGE_SELF);
        QElapsedTimer wall;
        wall.start();
        QTimer done;
        QObject::connect(&done, &QTimer::timeout, &app, [&] {
            if (!view.isReading())
                app.quit();
        });
        view.PressEnter();
        done.start(100);
        QApplication::exec();
        elapsed = double(wall.elapsed()) / 1000.0;
        ours = threadSeconds() - before;
        all = cpuSeconds(RUSAGE_SELF) - beforeAll;
    }
    TTSPlayer::quitFun();
    OCRPen::quitFun();
    std::printf("read 500 words in %.1f s, %d highlights\n", elapsed, highlighted);
    std::printf("speech engine (not counted): %.2f s CPU\n", all - ours);
    std::printf("view: %.3f s CPU, %.2f%% of one core\n", ours, 100.0 * ours / elapsed);
    std::printf("BENCH scan_read_cpu value=%.3f%% goal<=2%%\n", 100.0 * ours / elapsed);
    return 0;
}
