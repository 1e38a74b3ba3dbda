// The recorder's own CPU use while it records: the capture engine supervising the simulated MP3
// encoder for a minute. The encoder is a child process, so its work is not counted here.

#include "cpuseconds.h"
#include "recorder/recordthread.h"

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

int main(int argc, char **argv)
{
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 60;
    QTemporaryDir root;
    if (!root.isValid() || !QDir(root.path()).mkpath(QStringLiteral("usr/sbin")) ||
        !QDir(root.path()).mkpath(QStringLiteral("mnt/mmc/e_Recorder")) ||
        !QFile::link(QStringLiteral(DEVSIM_BIN_DIR "/shine"), root.path() + "/usr/sbin/shine")) {
        std::fprintf(stderr, "bench: no device root\n");
        return 1;
    }
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    qputenv("PATH", QByteArray(DEVSIM_BIN_DIR) + ':' + qgetenv("PATH"));
    qputenv("DEVSIM_SIGNAL", "generated");

    std::atomic<bool> recording{true};
    std::atomic<int> state{RECSOUND_RECING};
    const double before = cpuSeconds(RUSAGE_SELF);
    QElapsedTimer wall;
    wall.start();
    std::thread worker(
        [&] { RecordToFile("/mnt/mmc/e_Recorder/bench.mp3", &recording, &state, "128", true); });
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    recording = false;
    worker.join();
    const double elapsed = double(wall.elapsed()) / 1000.0;
    const double ours = cpuSeconds(RUSAGE_SELF) - before;
    const double encoder = cpuSeconds(RUSAGE_CHILDREN);

    const qint64 size = QFileInfo(root.path() + "/mnt/mmc/e_Recorder/bench.mp3").size();
    std::printf("recorded %.1f s, %lld bytes of MP3\n", elapsed, static_cast<long long>(size));
    std::printf("encoder (not counted): %.3f s CPU, %.2f%% of one core\n", encoder,
                100.0 * encoder / elapsed);
    std::printf("recorder: %.3f s CPU, %.2f%% of one core\n", ours, 100.0 * ours / elapsed);
    std::printf("BENCH recorder_cpu value=%.3f%% goal<=1%%\n", 100.0 * ours / elapsed);
    return 0;
}
