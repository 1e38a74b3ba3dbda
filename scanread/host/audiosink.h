#pragma once

#include "wavwriter.h"

#include <atomic>
#include <cstdint>
#include <ctime>

#include <alsa/asoundlib.h>

// Where spoken audio goes: the default sound device when the machine has one (and DEVSIM_SPEECH
// is not "file"), otherwise a WAV file in the device root written at the pace it would be heard,
// so that the time speech takes is the same either way. Writes give up as soon as stop is set.
class AudioSink
{
public:
    AudioSink(int rate, const std::atomic<bool> &stop);
    ~AudioSink();
    AudioSink(const AudioSink &) = delete;
    AudioSink &operator=(const AudioSink &) = delete;

    // the file used when there is no sound device, as a device path
    static const char *wavPath();

    bool open();
    // Plays count samples; returns when they have been taken (false when stopped or on an error).
    bool write(const int16_t *samples, int count);
    // Waits until everything written has been heard, unless stopped.
    void drain();

private:
    bool openDevice();
    bool writeDevice(const int16_t *samples, int count);
    bool waitForRealTime(long long until);

    int m_rate;
    const std::atomic<bool> &m_stop;
    snd_pcm_t *m_pcm = nullptr;
    WavWriter m_wav;
    long long m_startNanos = 0;
    long long m_written = 0;
};
