#include "wavwriter.h"

#include <algorithm>

#include <fcntl.h>

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

} // namespace

bool WavWriter::open(const char *path, int rate)
{
    m_file.reset(::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    m_dataBytes = 0;
    unsigned char header[44];
    makeHeader(header, unsigned(rate));
    return m_file.isValid() && m_file.writeAll(header, sizeof header);
}

bool WavWriter::append(const int16_t *samples, int count)
{
    const unsigned bytes = unsigned(count) * sizeof(int16_t);
    // on a little-endian host the samples are already in WAV byte order
    if (!m_file.writeAll(samples, bytes))
        return false;
    m_dataBytes += bytes;
    unsigned char riff[4];
    unsigned char data[4];
    putLittleEndian(riff, 36 + m_dataBytes, 4);
    putLittleEndian(data, m_dataBytes, 4);
    return pwrite(m_file.get(), riff, 4, 4) == 4 && pwrite(m_file.get(), data, 4, 40) == 4;
}
