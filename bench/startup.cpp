// The recorder's start-up and shut-down as the shell sees them: from starting the process to its
// "Show(QString)" announcement, then "stop" and until the process is gone. The floor is a bare Qt
// program that shows the same window and speaks the same two messages. Both run in a device
// root made by mkroot, on the offscreen platform, several times in turns; medians are compared.

#include "app/qcopchannel.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QVector>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

constexpr int runs = 10;
constexpr int timeoutMs = 60000;

struct Measure
{
    double seconds = 0;
    double peakMb = 0;
    bool ok = false;
};

// A started program, its output thrown away. Reaped with wait4() so that its own peak memory
// can be read; killed and reaped on destruction when it is still there.
class Child
{
public:
    explicit Child(const QByteArray &program)
    {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        QByteArray name = program;
        char *argv[] = {name.data(), nullptr};
        if (posix_spawn(&m_pid, program.constData(), &actions, nullptr, argv, environ) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Child()
    {
        if (m_pid <= 0 || m_ended)
            return;
        ::kill(m_pid, SIGKILL);
        while (waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    bool started() const { return m_pid > 0; }

    // true once the program has ended; peakKb then holds its largest resident size
    bool ended(long *peakKb)
    {
        if (m_ended)
            return true;
        rusage usage{};
        int status = 0;
        if (wait4(m_pid, &status, WNOHANG, &usage) != m_pid)
            return false;
        m_ended = true;
        *peakKb = usage.ru_maxrss;
        return true;
    }

private:
    pid_t m_pid = -1;
    bool m_ended = false;
};

void pump()
{
    QCoreApplication::processEvents();
    usleep(1000);
}

// shown is set by the shell's channel when the program announces itself
Measure measure(const QByteArray &program, bool &shown)
{
    Measure result;
    shown = false;
    QElapsedTimer wall;
    wall.start();
    Child child(program);
    if (!child.started())
        return result;
    const QDeadlineTimer deadline(timeoutMs);
    long peakKb = 0;
    while (!shown) {
        if (child.ended(&peakKb) || deadline.hasExpired())
            return result;
        pump();
    }
    QCopChannel::send(QStringLiteral("recorderprocess"), QStringLiteral("execute(QString)"),
                      "stop");
    while (!child.ended(&peakKb)) {
        if (deadline.hasExpired())
            return result;
        pump();
    }
    result.seconds = double(wall.nsecsElapsed()) / 1e9;
    result.peakMb = double(peakKb) / 1024.0;
    result.ok = true;
    return result;
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    const int n = values.size();
    return n % 2 ? values.at(n / 2) : (values.at(n / 2 - 1) + values.at(n / 2)) / 2;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (!QDBusConnection::sessionBus().isConnected()) {
        std::fputs("bench: no session bus (run it under dbus-run-session)\n", stderr);
        return 1;
    }
    QTemporaryDir root;
    QProcess mkroot;
    mkroot.setProcessChannelMode(QProcess::ForwardedChannels);
    mkroot.start(QStringLiteral("bash"),
                 {QStringLiteral(MKROOT), root.path(), QStringLiteral(BUILD_DIR)});
    if (!root.isValid() || !mkroot.waitForFinished(timeoutMs) || mkroot.exitCode() != 0) {
        std::fputs("bench: no device root\n", stderr);
        return 1;
    }
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    qputenv("PATH", QByteArray(DEVSIM_BIN_DIR) + ':' + qgetenv("PATH"));
    qputenv("QT_QPA_PLATFORM", "offscreen");

    bool shown = false;
    QCopChannel shell(QStringLiteral("mainprocess"));
    QObject::connect(&shell, &QCopChannel::received,
                     [&shown](const QString &message, const QByteArray &) {
                         if (message == QLatin1String("Show(QString)"))
                             shown = true;
                     });
    QCopChannel::flush();

    const QByteArray recorder = QFile::encodeName(root.path()) + "/apps/bin/recorder";
    const QByteArray bare = BARE_WINDOW_BIN;
    // one untimed round first: the disk cache is then as warm for both
    measure(recorder, shown);
    measure(bare, shown);

    QVector<double> ourTime, ourMemory, floorTime, floorMemory;
    std::printf("run  recorder: s     MB   bare Qt: s     MB\n");
    for (int i = 1; i <= runs; ++i) {
        const Measure ours = measure(recorder, shown);
        const Measure floor = measure(bare, shown);
        if (!ours.ok || !floor.ok) {
            std::fprintf(stderr, "bench: run %d did not finish (recorder %d, bare %d)\n", i,
                         ours.ok, floor.ok);
            return 1;
        }
        ourTime << ours.seconds;
        ourMemory << ours.peakMb;
        floorTime << floor.seconds;
        floorMemory << floor.peakMb;
        std::printf("%3d  %11.3f %6.1f  %10.3f %6.1f\n", i, ours.seconds, ours.peakMb,
                    floor.seconds, floor.peakMb);
    }
    const double time = median(ourTime) / median(floorTime);
    const double memory = median(ourMemory) / median(floorMemory);
    std::printf("median recorder %.3f s %.1f MB, bare Qt %.3f s %.1f MB\n", median(ourTime),
                median(ourMemory), median(floorTime), median(floorMemory));
    std::printf("BENCH startup_time ratio=%.2f goal<=1.5\n", time);
    std::printf("BENCH startup_memory ratio=%.2f goal<=1.3\n", memory);
    return 0;
}
