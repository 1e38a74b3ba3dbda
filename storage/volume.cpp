#include "storage/volume.h"

#include "storage/devicepath.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void runMixer(const char *control, long percent)
{
    char command[128];
    std::memset(command, 0, sizeof command);
    std::snprintf(command, sizeof command, "amixer set %s %ld%%", control, percent);
    // a missing amixer or an unknown control leaves the level as it was
    [[maybe_unused]] const int status = std::system(command);
}

} // namespace

long set_volume(long percent)
{
    runMixer("Speaker", percent);
    runMixer("Headphone", percent);
    return 0;
}

int readCfg(vol_strcut *cfg)
{
    cfg->speaker_volume = 60;
    cfg->mic_volume = 60;
    FILE *file = std::fopen(devicePathBytes("/apps/config/sndcfg.ini").constData(), "r");
    if (!file) {
        std::perror("open file\n");
        return -1;
    }
    const size_t blocks = std::fread(cfg, sizeof(vol_strcut), 1, file);
    std::fclose(file);
    if (blocks != 1) {
        std::perror("read file error\n");
        return -1;
    }
    return 0;
}

int writeCfg(vol_strcut *cfg)
{
    FILE *file = std::fopen(devicePathBytes("/apps/config/sndcfg.ini").constData(), "w");
    if (!file) {
        std::perror("open error\n");
        return -1;
    }
    const size_t blocks = std::fwrite(cfg, sizeof(vol_strcut), 1, file);
    const bool closed = std::fclose(file) == 0;
    if (blocks != 1 || !closed) {
        std::perror("write file error\n");
        return -1;
    }
    return 0;
}

long getSpeakerVolume()
{
    return 0;
}

long getMicVolume()
{
    return 0;
}

long setSpeakerVolume(long)
{
    return 0;
}

long setMicVolume(long)
{
    return 0;
}
