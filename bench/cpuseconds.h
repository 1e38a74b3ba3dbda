#pragma once

#include <sys/resource.h>

// User and system CPU seconds of this process (RUSAGE_SELF) or of its reaped children
// (RUSAGE_CHILDREN).
inline double cpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}
