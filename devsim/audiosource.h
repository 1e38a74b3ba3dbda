#pragma once

#include <cstdint>
#include <ctime>

#include <alsa/asoundlib.h>

// The microphone of the simulated device: the default ALSA capture device when the machine has
// a sound card (and DEVSIM_SIGNAL is not "generated"), otherwise a generated test signal
// delivered at real-time pace. Either way a stopped process (SIGSTOP) records nothing: after
// SIGCONT the audio goes on from where it stopped, without catching up the time in between.
class AudioSource
{
public:
    explicit AudioSource(int rate);
    ~AudioSource();
    AudioSource(const AudioSource &) = delete;
    AudioSource &operator=(const AudioSource &) = delete;

    // Fills frames mono samples, returning once they have been "recorded"; false on a capture
    // error that cannot be recovered.
    bool read(int16_t *samples, int frames);

    bool isCapturing() const { return m_pcm != nullptr; }

    // SIGTERM and SIGINT ask the encoder to finish its file; SIGKILL ends it without asking.
    static void stopOnTermination();
    static bool stopRequested();

    // whether the machine has a sound card at all (ALSA's card list)
    static bool soundCardPresent();

private:
    bool openCapture();
    bool readCapture(int16_t *samples, int frames);
    void generate(int16_t *samples, int frames);
    void waitForRealTime(int frames);

    int m_rate;
    snd_pcm_t *m_pcm = nullptr;
    double m_phase = 0.0;
    long long m_generated = 0;
    timespec m_deadline{};
};
