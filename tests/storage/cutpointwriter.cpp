// One change of the recording list or of the settings, as the program makes it, with the file
// operations of that change (write and close of files and folders, fsync, fdatasync, rename)
// counted, and on request the Nth of them failed or the process killed right before it, as a
// power cut would.
//   cutpointwriter list|settings        in the device root of RECORDER_ROOT
//   CUT_AT=N (none when unset), CUT_MODE=fail|kill
// The list change adds /mnt/mmc/e_Recorder/new.mp3 at the head of the list; the settings change
// sets the quality to 2. Prints "steps: NAME ..." of the operations it counted.

#include "storage/configwidget.h"
#include "storage/devicepath.h"
#include "storage/recfilemanager.h"

#include <QCoreApplication>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::atomic<bool> armed{false};
std::atomic<int> counted{0};
int cutAt = 0;
bool killThere = false;
// the names of the operations counted, appended without allocating
char steps[8192];
std::atomic<size_t> stepsLength{0};

template<typename Function> Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool fileOrFolder(int fd)
{
    struct stat info;
    return fstat(fd, &info) == 0 && (S_ISREG(info.st_mode) || S_ISDIR(info.st_mode));
}

// Counts the operation; true when it is the one to fail (errno set). Kills the process instead
// when asked to.
bool cutHere(const char *name, int error)
{
    const int number = ++counted;
    const size_t length = std::strlen(name);
    const size_t at = stepsLength.fetch_add(length + 1);
    if (at + length + 1 < sizeof steps) {
        std::memcpy(steps + at, name, length);
        steps[at + length] = ' ';
    }
    if (number != cutAt)
        return false;
    if (killThere)
        raise(SIGKILL);
    errno = error;
    return true;
}

} // namespace

extern "C" {

ssize_t write(int fd, const void *bytes, size_t count)
{
    static const auto real = next<ssize_t (*)(int, const void *, size_t)>("write");
    if (armed && fileOrFolder(fd) && cutHere("write", ENOSPC))
        return -1;
    return real(fd, bytes, count);
}

int close(int fd)
{
    static const auto real = next<int (*)(int)>("close");
    if (armed && fileOrFolder(fd) && cutHere("close", EIO)) {
        real(fd); // a failed close releases the descriptor all the same
        return -1;
    }
    return real(fd);
}

int fsync(int fd)
{
    static const auto real = next<int (*)(int)>("fsync");
    if (armed && cutHere("fsync", EIO))
        return -1;
    return real(fd);
}

int fdatasync(int fd)
{
    static const auto real = next<int (*)(int)>("fdatasync");
    if (armed && cutHere("fdatasync", EIO))
        return -1;
    return real(fd);
}

int rename(const char *from, const char *to)
{
    static const auto real = next<int (*)(const char *, const char *)>("rename");
    if (armed && cutHere("rename", EIO))
        return -1;
    return real(from, to);
}

} // extern "C"

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    cutAt = qEnvironmentVariableIntValue("CUT_AT");
    killThere = qgetenv("CUT_MODE") == "kill";
    const QByteArray change = argc > 1 ? QByteArray(argv[1]) : QByteArray();
    if (change == "list") {
        RecFileManager list;
        if (list.init(0) != 0)
            return 2;
        armed = true;
        list.addNewFileToList(devicePath(QStringLiteral("/mnt/mmc/e_Recorder/new.mp3")));
        armed = false;
    } else if (change == "settings") {
        ConfigWidget settings;
        armed = true;
        settings.setFileQuality(2);
        armed = false;
    } else {
        std::fputs("usage: cutpointwriter list|settings\n", stderr);
        return 2;
    }
    std::printf("steps: %.*s\n", int(qMin(stepsLength.load(), sizeof steps)), steps);
    return 0;
}
