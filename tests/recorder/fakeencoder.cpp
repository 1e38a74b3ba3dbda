// Stand-in for the device's encoders in the capture engine's tests. It appends to
// $RECORDER_ROOT/encoder.log its pid and its argument vector on two lines, then "CONT" for each
// SIGCONT.
// FAKE_MODE 0: runs until killed; 1: exits at once; 2: aborts after 2 s.

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

static int logFd = -1;

int main(int argc, char **argv)
{
    const char *root = std::getenv("RECORDER_ROOT");
    logFd = open((std::string(root ? root : ".") + "/encoder.log").c_str(),
                 O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    std::signal(SIGCONT, [](int) {
        if (write(logFd, "CONT\n", 5) < 0)
            _exit(3);
    });
    // one write, so that a reader never sees half of it
    std::string line = std::to_string(getpid()) + '\n';
    for (int i = 0; i < argc; ++i)
        line += std::string(i ? " " : "") + argv[i];
    line += '\n';
    if (write(logFd, line.data(), line.size()) < 0)
        return 2;
    if (FAKE_MODE == 1)
        return 0;
    if (FAKE_MODE == 2) {
        sleep(2);
        std::abort();
    }
    for (;;)
        pause();
}
