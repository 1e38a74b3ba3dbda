// getaudioinfo(): MP3 frame headers (libmad), Xing/Info frames and ID3 tags of a file on the card.
#include "fuzzinput.h"
#include "storage/audioinfo.h"

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray path = fuzzDeviceFile("/mnt/mmc/e_Recorder/input.mp3", data, size);
    audioinfo info;
    getaudioinfo(path.constData(), &info);
    // the list shows these texts: they must end inside their fields
    if (!std::memchr(info.name, '\0', sizeof info.name) ||
        !std::memchr(info.Artist, '\0', sizeof info.Artist) ||
        !std::memchr(info.play_time, '\0', sizeof info.play_time))
        std::abort();
    return 0;
}
