// The player's own CPU use while it plays: the window and its slave player for a minute of a
// 70 s file. mplayer is a child process, so its work is not counted here (it is shown apart).

#include "app/startup.h"
#include "cpuseconds.h"
#include "player/playerwnd.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 60;
    QTemporaryDir root;
    const QString song = root.path() + "/mnt/mmc/e_Music/song.mp3";
    if (!root.isValid() || !QDir(root.path()).mkpath("usr/bin") ||
        !QDir(root.path()).mkpath("mnt/mmc/e_Music") || !QDir(root.path()).mkpath("apps/config") ||
        !QFile::copy(DEVSIM_SOURCE_DIR "/mplayer", root.path() + "/usr/bin/mplayer") ||
        QProcess::execute(
            "sox", {"-n", "-r", "22050", "-c", "1", song, "synth", "70", "sine", "440"}) != 0) {
        std::fprintf(stderr, "bench: no device root\n");
        return 1;
    }
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    qputenv("PATH", QByteArray(DEVSIM_BIN_DIR) + ':' + qgetenv("PATH"));
    qputenv("DEVSIM_AUDIO", "null");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setPalette(recorderPalette());
    // the player's trace lines are not what is measured
    std::freopen("/dev/null", "w", stderr);

    double ours = 0, elapsed = 0;
    {
        playerWnd window;
        window.show();
        QApplication::processEvents();
        const double before = cpuSeconds(RUSAGE_SELF);
        QElapsedTimer wall;
        wall.start();
        window.startPlay(0, QFileInfo(song), "01:10", 0, 0);
        QTimer::singleShot(seconds * 1000, &app, &QApplication::quit);
        QApplication::exec();
        elapsed = double(wall.elapsed()) / 1000.0;
        ours = cpuSeconds(RUSAGE_SELF) - before;
        std::printf("played %.1f s, reached %.1f s of the file\n", elapsed,
                    window.currentPosition());
        window.stopMplayer();
    }
    const double player = cpuSeconds(RUSAGE_CHILDREN);
    std::printf("mplayer (not counted): %.3f s CPU, %.2f%% of one core\n", player,
                100.0 * player / elapsed);
    std::printf("player: %.3f s CPU, %.2f%% of one core\n", ours, 100.0 * ours / elapsed);
    std::printf("BENCH player_cpu value=%.3f%% goal<=0.5%%\n", 100.0 * ours / elapsed);
    return 0;
}
