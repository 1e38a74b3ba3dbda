#pragma once

#include "koscansdk.h"

#include <QString>
#include <QVector>

#include <espeak-ng/speak_lib.h>

#include <atomic>
#include <cstdint>

class AudioSink;

// The host's speech engine: espeak-ng synthesises, an AudioSink plays. One per process, as the
// engine library itself is. Settings change from any thread and apply from the next play().
class SpeechEngine
{
public:
    static SpeechEngine &instance();

    // dataDir holds espeak-ng-data (a device path); 0 or -1
    int initialize(const QString &dataDir);
    void uninitialize();
    bool isInitialized() const { return m_initialized; }

    // language table numbers; -1 for one without a voice
    int setLanguage(int number);
    void setSpeed(int speed) { m_speed = speed; }
    void setVolume(int volume) { m_volume = volume; }
    void setProgressCallback(void *context, KOSCAN_TTS_ProgressCallBack callback);

    // blocks until spoken or stopped; 0, or -1 when not initialised or nothing can be heard
    int play(const unsigned short *text, int units);
    void stop() { m_stop = true; }

    // espeak-ng's voice and rate (words a minute) for our numbers; null voice when unknown
    static const char *voiceFor(int number);
    static int rateFor(int speed);

private:
    SpeechEngine() = default;
    static int synthesised(short *samples, int count, espeak_EVENT *events);
    bool take(const short *samples, int count, const espeak_EVENT *events);
    void reportWordsEndingBy(long long sample);

    struct Word
    {
        int position;
        int length;
    };

    std::atomic<bool> m_initialized{false};
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_language{101};
    std::atomic<int> m_speed{50};
    std::atomic<int> m_volume{100};
    std::atomic<void *> m_context{nullptr};
    std::atomic<KOSCAN_TTS_ProgressCallBack> m_callback{nullptr};

    // state of the play in progress, touched by its thread only
    AudioSink *m_sink = nullptr;
    int m_voiceLanguage = 0;
    QVector<int> m_utf16Index; // code unit of each character handed to the synthesiser
    bool m_haveWord = false;
    Word m_word{0, 0};
    long long m_made = 0;
};
