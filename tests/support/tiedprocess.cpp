#include "tiedprocess.h"

#include <csignal>

#include <sys/prctl.h>
#include <unistd.h>

void TiedProcess::setupChildProcess()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // the test may have ended between fork and prctl
    if (getppid() == 1)
        _exit(127);
}
