#include "recorder/recordthread.h"

#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>
#include <QTime>
#include <QVector>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <pthread.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

std::atomic<bool> bRecording{false};
std::atomic<int> bRecPause{RECSOUND_STOPPED};
std::atomic<bool> isRecord2Mp3{true};
// the settings store's default quality is the middle one
std::atomic<const char *> bitrate{"96"};
std::atomic<const char *> samplerate{"22050"};
std::atomic<bool> g_setRecoderVolume{false};

namespace {

// engines started by startRecordThread and not yet ended
std::mutex engineMutex;
std::condition_variable engineEnded;
int runningEngines = 0;

void engineFinished()
{
    // notified under the lock: whoever then finds no engine running knows that the ended one is
    // done with the lock and the condition too, which may be gone once the program ends
    const std::lock_guard<std::mutex> lock(engineMutex);
    if (runningEngines > 0)
        --runningEngines;
    engineEnded.notify_all();
}

// The engine's trace lines carry no text, only the place they come from.
void engineTrace(TraceLevel level, int line, const char *function)
{
    traceLog(level, __FILE__, line, function, "%s", "");
}

const char *sourceBaseName()
{
    const char *slash = std::strrchr(__FILE__, '/');
    return slash ? slash + 1 : __FILE__;
}

// A trace line prepared before fork(): the child may only make async-signal-safe calls, so it
// merely fills in its own process id and writes the bytes.
class ChildTrace
{
public:
    ChildTrace(TraceLevel level, int line, const char *function)
    {
        static const char marker[] = "PID:-1 TID:-1";
        const QByteArray text =
            traceLine(level, QTime::currentTime(), -1, -1, __FILE__, line, function, QByteArray());
        const int at = text.indexOf(marker);
        m_head = text.left(at);
        m_tail = text.mid(at + int(sizeof marker) - 1);
    }

    // async-signal-safe
    void write() const
    {
        char pid[24];
        const int pidLength = formatNumber(getpid(), pid);
        char line[1024];
        size_t length = 0;
        append(line, length, m_head.constData(), size_t(m_head.size()));
        append(line, length, "PID:", 4);
        append(line, length, pid, size_t(pidLength));
        append(line, length, " TID:", 5); // the child has a single thread: its id is the pid
        append(line, length, pid, size_t(pidLength));
        append(line, length, m_tail.constData(), size_t(m_tail.size()));
        const ssize_t ignored = ::write(STDERR_FILENO, line, length);
        (void)ignored;
    }

private:
    static void append(char *line, size_t &length, const char *bytes, size_t count)
    {
        for (size_t i = 0; i < count && length < 1024; ++i)
            line[length++] = bytes[i];
    }

    static int formatNumber(long value, char *out)
    {
        char reversed[24];
        int count = 0;
        do {
            reversed[count++] = char('0' + value % 10);
            value /= 10;
        } while (value > 0 && count < 23);
        for (int i = 0; i < count; ++i)
            out[i] = reversed[count - 1 - i];
        return count;
    }

    QByteArray m_head;
    QByteArray m_tail;
};

// Everything the child needs, built in the parent before fork().
struct EncoderLaunch
{
    QByteArray program;
    QList<QByteArray> arguments;
    QVector<char *> argv;

    EncoderLaunch(const QByteArray &path, const QList<QByteArray> &args)
        : program(path), arguments(args)
    {
        for (QByteArray &argument : arguments)
            argv.append(argument.data());
        argv.append(nullptr);
    }
    // argv points into arguments
    EncoderLaunch(const EncoderLaunch &) = delete;
    EncoderLaunch &operator=(const EncoderLaunch &) = delete;
};

// The started encoder. A reaped child's pid may already belong to another process, so it is
// never signalled again; a child not yet reaped when this goes out of scope is killed and reaped.
class EncoderChild
{
public:
    explicit EncoderChild(pid_t pid) : m_pid(pid) {}
    ~EncoderChild()
    {
        if (m_reaped)
            return;
        ::kill(m_pid, SIGKILL);
        while (waitpid(m_pid, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    EncoderChild(const EncoderChild &) = delete;
    EncoderChild &operator=(const EncoderChild &) = delete;

    int signal(int number) const
    {
        if (m_reaped) {
            errno = ESRCH;
            return -1;
        }
        return ::kill(m_pid, number);
    }

    // 0 while running, m_pid once it has ended (and is reaped), -1 on a passing error
    pid_t poll()
    {
        const pid_t result = waitpid(m_pid, nullptr, WNOHANG);
        if (result == m_pid) {
            m_reaped = true;
        } else if (result < 0 && errno != EINTR) {
            // someone else reaped it (SIGCHLD ignored): it has ended all the same
            m_reaped = true;
            return m_pid;
        }
        return result;
    }

    // blocks until the child has ended; returns the wait status
    int reap()
    {
        int status = 0;
        pid_t result;
        do {
            result = waitpid(m_pid, &status, 0);
        } while (result < 0 && errno == EINTR);
        m_reaped = true;
        return status;
    }

private:
    pid_t m_pid;
    bool m_reaped = false;
};

// Runs in the forked child of a multithreaded process: async-signal-safe calls only.
[[noreturn]] void runEncoder(const EncoderLaunch &launch, pid_t parent, const ChildTrace *before,
                             const ChildTrace &failed, const ChildTrace &ending)
{
    // an encoder must never record on after the recorder has died
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(1);

    // give the recorder's screen time to switch before the encoder takes the sound device
    timespec delay{0, 300000000L};
    while (nanosleep(&delay, &delay) < 0 && errno == EINTR) {
    }
    if (before)
        before->write();
    execv(launch.program.constData(), launch.argv.data());
    failed.write();
    ending.write();
    _exit(127);
}

} // namespace

const char *setBitRate(int quality)
{
    switch (quality) {
    case 0:
        bitrate = "128";
        samplerate = "44100";
        break;
    case 1:
        bitrate = "96";
        samplerate = "22050";
        break;
    case 2:
        bitrate = "64";
        samplerate = "11025";
        break;
    default:
        break;
    }
    return samplerate;
}

int RecordToFile(const char *fileName, std::atomic<bool> *recording, std::atomic<int> *state,
                 const char *bitrate, bool mp3)
{
    if (!fileName || !recording) {
        std::printf("RecordToFile:: filename is %s,line =%d return -1\n",
                    fileName ? fileName : "(null)", 72);
        std::fflush(stdout);
        return -1;
    }

    if (!g_setRecoderVolume.exchange(true))
        std::system("amixer set \"Input PGA\" 63%");

    // the window may pass the pen's path or one already mapped: devicePath takes both
    const QByteArray path = devicePathBytes(fileName);
    const EncoderLaunch launch =
        mp3 ? EncoderLaunch(devicePathBytes("/usr/sbin/shine"),
                            {"shine", "-b", QByteArray(bitrate ? bitrate : ::bitrate.load()), "-s",
                             "24000", path})
            : EncoderLaunch(devicePathBytes("/usr/sbin/record2wav"),
                            {"record2wav", path, QByteArray(samplerate.load())});
    const ChildTrace wavStart(TraceLevel::Debug, 106, __func__);
    const ChildTrace execFailed(TraceLevel::Debug, 128, __func__);
    const ChildTrace childEnds(TraceLevel::Debug, 224, __func__);
    const pid_t parent = getpid();

    // the child must not write out what the parent has buffered
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t pid = fork();
    if (pid == 0)
        runEncoder(launch, parent, mp3 ? nullptr : &wavStart, execFailed, childEnds);
    if (pid < 0) {
        LOGW("fork failed: %s", std::strerror(errno));
        if (state)
            *state = RECSOUND_STOPPED;
        *recording = false;
        return 1;
    }

    EncoderChild child(pid);
    int result = 0;
    bool killed = false;
    for (;;) {
        if (!*recording) {
            result = 0;
            killed = child.signal(SIGKILL) == 0;
            break;
        }
        const pid_t polled = child.poll();
        if (polled != 0 && polled != pid)
            continue;
        if (polled == pid) {
            // ended by itself, for example on a full card
            result = 1;
            killed = child.signal(SIGKILL) == 0;
            break;
        }
        if (state) {
            int now = *state;
            if (now == RECSOUND_CONTINUE) {
                child.signal(SIGCONT);
                now = *state;
            }
            if (now == RECSOUND_PAUSED)
                child.signal(SIGSTOP);
        }
        usleep(100000);
    }

    if (killed) {
        const int status = child.reap();
        if ((status & 0x7f) == 0)
            std::puts("child process normal terminate~~~~~~");
        else
            std::puts("child process abnormal terminate !!!!!!!!");
        std::fflush(stdout);
        engineTrace(TraceLevel::Debug, 211, __func__);
    } else {
        std::printf(" %s  %s  %d kill(%d, SIGTERM) != 0\n", sourceBaseName(), __func__, 215,
                    int(pid));
        std::fflush(stdout);
    }

    if (state)
        *state = RECSOUND_STOPPED;
    *recording = false;
    engineTrace(TraceLevel::Debug, 220, __func__);
    return result;
}

void *Record_Thread(void *fileName)
{
    char *name = static_cast<char *>(fileName);
    engineTrace(TraceLevel::Info, 230, __func__);
    RecordToFile(name, &bRecording, &bRecPause, bitrate, isRecord2Mp3);
    engineTrace(TraceLevel::Debug, 232, __func__);
    std::free(name);
    engineTrace(TraceLevel::Info, 239, __func__);
    engineFinished();
    pthread_exit(nullptr);
}

int startRecordThread(const QString &path)
{
    // the bytes the file system knows the path by: the engine maps them as they are
    char *copy = strdup(QFile::encodeName(path).constData());
    if (!copy)
        return -1;
    {
        const std::lock_guard<std::mutex> lock(engineMutex);
        ++runningEngines;
    }
    pthread_t thread;
    if (pthread_create(&thread, nullptr, Record_Thread, copy) != 0) {
        std::free(copy);
        engineFinished();
        LOGW("no recording thread for %s", path.toUtf8().constData());
        return -1;
    }
    pthread_detach(thread);
    return 0;
}

bool waitForEngine(int timeoutMs)
{
    std::unique_lock<std::mutex> lock(engineMutex);
    return engineEnded.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                [] { return runningEngines == 0; });
}
