#include "speechengine.h"

#include "audiosink.h"
#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QDir>
#include <QFile>

#include <espeak-ng/speak_lib.h>

#include <algorithm>
#include <cmath>

SpeechEngine &SpeechEngine::instance()
{
    static SpeechEngine engine;
    return engine;
}

const char *SpeechEngine::voiceFor(int number)
{
    switch (number) {
    case 1:
    case 2:
        return "cmn"; // Mandarin reads both simplified and traditional characters
    case 101:
        return "en";
    case 103:
        return "fr";
    case 104:
        return "de";
    case 105:
        return "es";
    case 106:
        return "it";
    case 151:
        return "ru";
    default:
        return nullptr;
    }
}

int SpeechEngine::rateFor(int speed)
{
    // 50 is espeak-ng's normal pace; every 50 steps doubles or halves it
    const double rate = espeakRATE_NORMAL * std::pow(2.0, (speed - 50) / 50.0);
    return std::clamp(int(std::lround(rate)), espeakRATE_MINIMUM, espeakRATE_MAXIMUM);
}

int SpeechEngine::initialize(const QString &dataDir)
{
    if (m_initialized)
        return 0;
    const QByteArray path = QFile::encodeName(devicePath(dataDir));
    if (!QDir(QFile::decodeName(path) + QStringLiteral("/espeak-ng-data")).exists()) {
        LOGW("no speech data in %s", path.constData());
        return -1;
    }
    if (espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 20, path.constData(), 0) !=
        KOSCAN_TTS_SAMPLE_RATE) {
        LOGW("speech engine failed to start on %s", path.constData());
        return -1;
    }
    espeak_SetSynthCallback(&SpeechEngine::synthesised);
    m_voiceLanguage = 0;
    m_initialized = true;
    return 0;
}

void SpeechEngine::uninitialize()
{
    if (m_initialized.exchange(false))
        espeak_Terminate();
}

int SpeechEngine::setLanguage(int number)
{
    if (!voiceFor(number))
        return -1;
    m_language = number;
    return 0;
}

void SpeechEngine::setProgressCallback(void *context, KOSCAN_TTS_ProgressCallBack callback)
{
    m_context = context;
    m_callback = callback;
}

int SpeechEngine::play(const unsigned short *text, int units)
{
    if (!m_initialized || !text || units < 0)
        return -1;
    m_stop = false;
    // loading a voice takes a while: only when it changed
    const int language = m_language;
    if (language != m_voiceLanguage && espeak_SetVoiceByName(voiceFor(language)) == EE_OK)
        m_voiceLanguage = language;
    espeak_SetParameter(espeakRATE, rateFor(m_speed), 0);
    // espeak-ng's 100 is its normal level, which is our full volume
    espeak_SetParameter(espeakVOLUME, std::clamp(int(m_volume), 0, 100), 0);

    // the synthesiser counts characters, the caller UTF-16 code units
    const QString utf16 = QString::fromUtf16(reinterpret_cast<const char16_t *>(text), units);
    const QVector<uint> characters = utf16.toUcs4();
    m_utf16Index.clear();
    for (int unit = 0; unit < utf16.size(); ++unit) {
        m_utf16Index.append(unit);
        if (utf16.at(unit).isHighSurrogate() && unit + 1 < utf16.size())
            ++unit;
    }
    m_utf16Index.append(utf16.size());
    std::vector<wchar_t> wide(characters.begin(), characters.end());
    wide.push_back(0);

    AudioSink sink(KOSCAN_TTS_SAMPLE_RATE, m_stop);
    if (!sink.open())
        return -1;
    m_sink = &sink;
    m_haveWord = false;
    m_made = 0;
    espeak_Synth(wide.data(), wide.size() * sizeof(wchar_t), 0, POS_CHARACTER, 0, espeakCHARS_WCHAR,
                 nullptr, this);
    if (!m_stop) {
        // the last word ends with the audio
        reportWordsEndingBy(m_made);
        sink.drain();
    }
    m_sink = nullptr;
    return 0;
}

int SpeechEngine::synthesised(short *samples, int count, espeak_EVENT *events)
{
    // returning 1 ends the synthesis
    return instance().take(samples, count, events) ? 0 : 1;
}

bool SpeechEngine::take(const short *samples, int count, const espeak_EVENT *events)
{
    if (m_stop || !m_sink)
        return false;
    QVector<std::pair<long long, Word>> starts;
    for (const espeak_EVENT *event = events; event && event->type != espeakEVENT_LIST_TERMINATED;
         ++event) {
        if (event->type != espeakEVENT_WORD)
            continue;
        // positions count from 1
        const int first = std::clamp(event->text_position - 1, 0, m_utf16Index.size() - 1);
        const int last = std::clamp(first + event->length, 0, m_utf16Index.size() - 1);
        const long long sample = (long long)event->audio_position * KOSCAN_TTS_SAMPLE_RATE / 1000;
        starts.append(
            {sample, Word{m_utf16Index.at(first), m_utf16Index.at(last) - m_utf16Index.at(first)}});
    }
    // the audio in slices, so that each word is reported as its last sample is heard
    const long long base = m_made;
    int done = 0;
    for (const auto &start : starts) {
        const int upTo = int(std::clamp(start.first - base, (long long)(done), (long long)(count)));
        if (upTo > done && !m_sink->write(samples + done, upTo - done))
            return false;
        done = upTo;
        m_made = base + done;
        reportWordsEndingBy(m_made);
        m_word = start.second;
        m_haveWord = true;
    }
    if (count > done && !m_sink->write(samples + done, count - done))
        return false;
    m_made = base + count;
    return !m_stop;
}

void SpeechEngine::reportWordsEndingBy(long long sample)
{
    if (!m_haveWord)
        return;
    m_haveWord = false;
    if (const KOSCAN_TTS_ProgressCallBack callback = m_callback)
        callback(m_context, m_word.position, m_word.length, int(sample));
}
