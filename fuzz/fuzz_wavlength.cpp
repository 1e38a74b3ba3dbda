// getWaveDuration(): the play length of a WAV recording from its header and size.
#include "fuzzinput.h"
#include "storage/timetext.h"

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray path = fuzzDeviceFile("/mnt/mmc/e_Recorder/input.wav", data, size);
    // room for the longest length a 32-bit size and rate can give ("1193046:28:15")
    char clock[16];
    std::memset(clock, 'x', sizeof clock);
    getWaveDuration(path.constData(), clock);
    if (!std::memchr(clock, '\0', sizeof clock))
        std::abort();
    return 0;
}
