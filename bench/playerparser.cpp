// The slave player's output parser over one hour of mplayer output, beside a bare loop that only
// cuts the same bytes into lines and matches the status pattern on each.
// The hour is generated from a recording of the real program (a minute at -speed 100, through
// the device simulation's stand-in): its start and end as they came, and in between the status
// line of every 25 ms (40 a second, as mplayer prints them while it plays) in the recorded format.

#include "player/mplayerprocess.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegExp>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int chunkSize = 4096;

QByteArray recordMinute(const QTemporaryDir &dir)
{
    const QString file = dir.filePath("minute.mp3");
    if (QProcess::execute(
            "sox", {"-n", "-r", "22050", "-c", "1", file, "synth", "60", "sine", "440"}) != 0)
        return {};
    qputenv("DEVSIM_AUDIO", "null");
    QProcess player;
    player.setProcessChannelMode(QProcess::MergedChannels);
    player.start(DEVSIM_SOURCE_DIR "/mplayer",
                 {"-identify", "-slave", "-speed", "100", file, "-ss", "0"});
    player.waitForFinished(120000);
    return player.readAll();
}

// "mm:ss.s" or "ss.s" as mplayer writes a time in its status line
QByteArray clock(double t)
{
    const int minutes = int(t) / 60;
    const double seconds = t - minutes * 60;
    return (minutes > 0 ? QString::asprintf("%02d:%04.1f", minutes, seconds)
                        : QString::asprintf("%04.1f", seconds))
        .toLatin1();
}

QByteArray hourFrom(const QByteArray &recording)
{
    const int first = recording.indexOf("A:");
    const int last = recording.lastIndexOf("A:");
    const int tail = recording.indexOf('\n', last);
    if (first < 0 || tail < 0)
        return {};
    QByteArray hour = recording.left(first);
    hour.reserve(8 * 1024 * 1024);
    for (int n = 0; n < 3600 * 40; ++n) {
        const double t = n * 0.025;
        hour += QString::asprintf("A:%6.1f (", t).toLatin1() + clock(t) +
                ") of 3600.0 (01:00:00.0)  0.1% \x1b[J\r";
    }
    return hour + recording.mid(tail);
}

double parseWithPlayer(const QByteArray &bytes, double *last)
{
    MplayerProcess process;
    QObject::connect(&process, &MplayerProcess::receivedCurrentSec,
                     [last](double sec) { *last = sec; });
    QElapsedTimer timer;
    timer.start();
    for (int at = 0; at < bytes.size(); at += chunkSize)
        process.genericRead(bytes.mid(at, chunkSize));
    return timer.nsecsElapsed() / 1e6;
}

double bareLoop(const QByteArray &bytes, int *seconds)
{
    QRegExp status(QLatin1String("^[AV]: *([0-9,:.-]+)"));
    int count = 0;
    QByteArray rest;
    QElapsedTimer timer;
    timer.start();
    for (int at = 0; at < bytes.size(); at += chunkSize) {
        const QByteArray data = rest + bytes.mid(at, chunkSize);
        int start = 0;
        for (int n = 0; n < data.size(); ++n) {
            if (data[n] != '\n' && data[n] != '\r')
                continue;
            if (status.indexIn(QString::fromLocal8Bit(data.constData() + start, n - start)) > -1)
                ++count;
            start = n + 1;
        }
        rest = data.mid(start);
    }
    const double ms = timer.nsecsElapsed() / 1e6;
    *seconds = count;
    return ms;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QByteArray hour = hourFrom(recordMinute(dir));
    if (hour.isEmpty()) {
        std::fprintf(stderr, "bench: no mplayer output recorded\n");
        return 1;
    }
    // the parser's trace of the few text lines would dominate a terminal, not the parsing
    std::freopen("/dev/null", "w", stderr);
    double ours = 1e12, floor = 1e12;
    int floorLines = 0;
    double last = 0;
    for (int round = 0; round < 9; ++round) {
        ours = std::min(ours, parseWithPlayer(hour, &last));
        floor = std::min(floor, bareLoop(hour, &floorLines));
    }
    std::printf("one hour of output: %lld bytes, %d status lines, last position %.1f s\n",
                static_cast<long long>(hour.size()), floorLines, last);
    std::printf("parser: %.1f ms, bare loop: %.1f ms (best of 9)\n", ours, floor);
    std::printf("BENCH player_parser ratio=%.2f goal<=1.5\n", ours / floor);
    return 0;
}
