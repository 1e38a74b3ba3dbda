// The raw records that are not INI files despite their names: the 16-byte space record
// (/apps/config/space.ini) and the 8-byte sound configuration (/apps/config/sndcfg.ini).
#include "fuzzinput.h"
#include "storage/storagespace.h"
#include "storage/volume.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzDeviceFile("/apps/config/space.ini", data, size);
    fuzzDeviceFile("/apps/config/sndcfg.ini", data, size);
    long space = 0;
    readSpaceRecord(&space);
    vol_strcut sound;
    readCfg(&sound);
    return 0;
}
