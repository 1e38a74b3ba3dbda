#pragma once

#include "koscansdk.h"

#include <QString>
#include <QVector>

#include <espeak-ng/speak_lib.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <vector>

class AudioSink;

// The host's speech engine: espeak-ng synthesises, an AudioSink plays. One per process, as the
// engine library itself is. Settings change from any thread and apply from the next play().
//
// Each word is reported one word ahead of the audio: as the word before it starts to be heard
// (the first word as the audio starts), with the sample at which the word itself starts. To know
// where a word starts before the word ahead of it is heard, the audio from the start of the last
// word the synthesiser has reached is held back until it reaches the next one.
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
    // ends the play in progress within a slice of audio
    void stop() { m_stop = true; }

    // espeak-ng's voice for our numbers; null when unknown
    static const char *voiceFor(int number);
    // The engine's speed scale, 0 to 100, in espeak-ng's words a minute: 50 is espeak-ng's
    // normal pace of 175 words a minute, and every 50 steps double or halve it. The reading
    // speed steps' 30, 50 and 65 give 133, 175 and 215; 0 gives 88 and 100 gives 350.
    static int rateFor(int speed);

private:
    SpeechEngine() = default;
    static int synthesised(short *samples, int count, espeak_EVENT *events);
    bool take(const short *samples, int count, const espeak_EVENT *events);
    // plays the held audio up to sample limit, reporting each word as its time comes
    bool release(long long limit);
    void reportHeard();

    // a word to report once the sample due is heard; start is where the word's audio begins
    struct Report
    {
        long long due;
        long long start;
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
    QVector<int> m_utf16Index;   // code unit of each character handed to the synthesiser
    std::vector<int16_t> m_held; // synthesised, not yet played: from sample m_played on
    long long m_played = 0;
    long long m_lastStart = 0;    // where the last word reached starts
    std::deque<Report> m_reports; // in the order spoken
};
