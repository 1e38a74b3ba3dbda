// record2wav FILE RATE: records 16-bit mono PCM at RATE Hz into a WAV file until it is killed.

#include "audiosource.h"
#include "uniquefd.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

void putLittleEndian(unsigned char *at, unsigned value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        at[i] = static_cast<unsigned char>(value >> (8 * i));
}

void makeHeader(unsigned char *header, unsigned rate)
{
    std::copy_n("RIFF", 4, header);
    putLittleEndian(header + 4, 36, 4);
    std::copy_n("WAVEfmt ", 8, header + 8);
    putLittleEndian(header + 16, 16, 4);       // size of the fmt chunk
    putLittleEndian(header + 20, 1, 2);        // PCM
    putLittleEndian(header + 22, 1, 2);        // mono
    putLittleEndian(header + 24, rate, 4);     // samples per second
    putLittleEndian(header + 28, rate * 2, 4); // bytes per second
    putLittleEndian(header + 32, 2, 2);        // bytes per frame
    putLittleEndian(header + 34, 16, 2);       // bits per sample
    std::copy_n("data", 4, header + 36);
    putLittleEndian(header + 40, 0, 4);
}

// the file may end at any moment (SIGKILL), so the sizes follow every block of audio
bool updateSizes(int fd, unsigned dataBytes)
{
    unsigned char riff[4];
    unsigned char data[4];
    putLittleEndian(riff, 36 + dataBytes, 4);
    putLittleEndian(data, dataBytes, 4);
    return pwrite(fd, riff, 4, 4) == 4 && pwrite(fd, data, 4, 40) == 4;
}

} // namespace

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
    const UniqueFd file(open(argv[1], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!file.isValid()) {
        std::fprintf(stderr, "record2wav: cannot write %s: %s\n", argv[1], std::strerror(errno));
        return 1;
    }
    unsigned char header[44];
    makeHeader(header, unsigned(rate));
    if (!file.writeAll(header, size_t(sizeof header)))
        return 1;

    AudioSource::stopOnTermination();

    AudioSource source(rate);
    std::vector<int16_t> block(size_t(rate / 10)); // 100 ms
    unsigned dataBytes = 0;
    while (!AudioSource::stopRequested()) {
        if (!source.read(block.data(), int(block.size())))
            return 1;
        const size_t bytes = block.size() * sizeof(int16_t);
        // on a little-endian host the samples are already in WAV byte order
        if (!file.writeAll(block.data(), size_t(bytes)))
            return 1; // the card is full: end, as the device's encoder does
        dataBytes += unsigned(bytes);
        if (!updateSizes(file.get(), dataBytes))
            return 1;
    }
    return 0;
}
