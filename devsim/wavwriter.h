#pragma once

#include "uniquefd.h"

#include <cstdint>

// A 16-bit mono PCM WAV file whose RIFF and data sizes follow every block appended, so that the
// file is valid whenever its writer ends, even by SIGKILL.
class WavWriter
{
public:
    // false when the file cannot be created or its header written
    bool open(const char *path, int rate);
    // false on a write error (a full card)
    bool append(const int16_t *samples, int count);
    unsigned dataBytes() const { return m_dataBytes; }

private:
    UniqueFd m_file;
    unsigned m_dataBytes = 0;
};
