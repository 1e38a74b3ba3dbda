// Stand-in for the device's encoders in the capture engine's tests. It appends to
// $RECORDER_ROOT/encoder.log its pid, its argument vector and one line per SIGCONT it gets.
// FAKE_MODE 0: runs until killed; 1: exits at once; 2: aborts after 2 s.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <string>
#include <unistd.h>

namespace {

int logFd = -1;

void logLine(const std::string &line)
{
    const std::string text = line + '\n';
    if (write(logFd, text.data(), text.size()) < 0)
        std::_Exit(3);
}

void continued(int)
{
    static const char line[] = "CONT\n";
    if (write(logFd, line, sizeof line - 1) < 0)
        _exit(3);
}

} // namespace

int main(int argc, char **argv)
{
    const char *root = std::getenv("RECORDER_ROOT");
    const std::string log = std::string(root ? root : ".") + "/encoder.log";
    logFd = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (logFd < 0)
        return 2;

    struct sigaction onContinue = {};
    onContinue.sa_handler = continued;
    sigaction(SIGCONT, &onContinue, nullptr);

    logLine("pid " + std::to_string(getpid()));
    for (int i = 0; i < argc; ++i)
        logLine("arg " + std::string(argv[i]));
    logLine("ready");

    if (FAKE_MODE == 1)
        return 0;
    if (FAKE_MODE == 2) {
        sleep(2);
        std::abort();
    }
    for (;;)
        pause();
}
