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
    // the most a write() takes at once, in samples: a stop, and anything timed by what is
    // heard, is seen at least this often
    int sliceSamples() const { return m_rate / 100; }

    bool open();
    // Plays count samples; returns when they have been taken (false when stopped or on an error).
    // The file is written a slice at a time, each when it starts to be heard.
    bool write(const int16_t *samples, int count);
    // The samples heard so far: those written, less what the sound card still holds.
    long long heard();
    // Waits until sample has started to be heard (or all that was written has), unless stopped.
    bool waitUntilHeard(long long sample);
    // Waits until everything written has been heard, unless stopped.
    void drain();

private:
    bool openDevice();
    bool writeDevice(const int16_t *samples, int count);
    bool waitForRealTime(long long until);
    long long timeOf(long long sample) const;

    int m_rate;
    const std::atomic<bool> &m_stop;
    snd_pcm_t *m_pcm = nullptr;
    WavWriter m_wav;
    // when the file's first sample is heard: the first write, since nothing is heard before it
    long long m_startNanos = -1;
    long long m_written = 0;
};
