// The player's console output: cut into lines (carriage return and line feed each end one) and
// parsed into positions, pauses and the end of file, in chunks of the sizes a pipe may deliver.
#include "player/mplayerprocess.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    MplayerProcess player;
    // the first byte chooses where the output is cut into chunks, so the line cutter sees lines
    // split at every place
    const size_t chunk = size_t(data[0] % 61) + 1;
    const char *bytes = reinterpret_cast<const char *>(data + 1);
    for (size_t at = 0; at < size - 1; at += chunk)
        player.genericRead(QByteArray(bytes + at, int(qMin(chunk, size - 1 - at))));
    return 0;
}
