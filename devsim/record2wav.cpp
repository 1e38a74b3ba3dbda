// record2wav FILE RATE: records 16-bit mono PCM at RATE Hz into a WAV file until it is killed.

#include "audiosource.h"
#include "wavwriter.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: record2wav FILE RATE\n");
        return 2;
    }
    const int rate = std::atoi(argv[2]);
    if (rate < 8000 || rate > 192000) {
        std::fprintf(stderr, "record2wav: bad sample rate %s\n", argv[2]);
        return 2;
    }
    WavWriter file;
    if (!file.open(argv[1], rate)) {
        std::fprintf(stderr, "record2wav: cannot write %s: %s\n", argv[1], std::strerror(errno));
        return 1;
    }

    AudioSource::stopOnTermination();

    AudioSource source(rate);
    std::vector<int16_t> block(size_t(rate / 10)); // 100 ms
    while (!AudioSource::stopRequested()) {
        if (!source.read(block.data(), int(block.size())))
            return 1;
        if (!file.append(block.data(), int(block.size())))
            return 1; // the card is full: end, as the device's encoder does
    }
    return 0;
}
