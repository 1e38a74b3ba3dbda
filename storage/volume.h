#pragma once

// The sound configuration record /apps/config/sndcfg.ini: these 8 bytes, native byte order.
struct vol_strcut
{
    int speaker_volume = 60;
    int mic_volume = 60;
};

// Sets the output level of the speaker and the headphones through amixer; always 0.
long set_volume(long percent);

// 0, or -1 when the record cannot be read whole (cfg then holds 60/60 or a part read).
int readCfg(vol_strcut *cfg);
// 0, or -1 when the record cannot be written whole.
int writeCfg(vol_strcut *cfg);

long getSpeakerVolume();
long getMicVolume();
long setSpeakerVolume(long volume);
long setMicVolume(long volume);
