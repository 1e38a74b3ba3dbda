// Prints an MP3 file's length in seconds, as `soxi -D` does, for whole-process comparisons.
#include "storage/audioinfo.h"

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    audioinfo info;
    if (getaudioinfo(argv[1], &info) != 0)
        return 1;
    std::printf("%d\n", info.seconds);
    return 0;
}
