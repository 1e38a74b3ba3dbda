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
    m_held.clear();
    m_played = 0;
    m_lastStart = 0;
    m_reports.clear();
    espeak_Synth(wide.data(), wide.size() * sizeof(wchar_t), 0, POS_CHARACTER, 0, espeakCHARS_WCHAR,
                 nullptr, this);
    // the synthesiser is done: the last word needs no word after it
    if (release(m_played + (long long)m_held.size())) {
        for (; !m_reports.empty() && sink.waitUntilHeard(m_reports.front().due);)
            reportHeard();
        sink.drain();
    }
    m_sink = nullptr;
    m_held.clear();
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
    if (samples && count > 0)
        m_held.insert(m_held.end(), samples, samples + count);
    for (const espeak_EVENT *event = events; event && event->type != espeakEVENT_LIST_TERMINATED;
         ++event) {
        if (event->type != espeakEVENT_WORD)
            continue;
        // positions count from 1
        const int first = std::clamp(event->text_position - 1, 0, m_utf16Index.size() - 1);
        const int last = std::clamp(first + event->length, 0, m_utf16Index.size() - 1);
        const long long start =
            std::max(m_lastStart, (long long)event->audio_position * KOSCAN_TTS_SAMPLE_RATE / 1000);
        // told as the word before it starts to be heard
        m_reports.push_back(Report{m_lastStart, start, m_utf16Index.at(first),
                                   m_utf16Index.at(last) - m_utf16Index.at(first)});
        m_lastStart = start;
    }
    // the last word reached may be told only once the synthesiser knows where the next starts
    return release(m_lastStart);
}

bool SpeechEngine::release(long long limit)
{
    limit = std::min(limit, m_played + (long long)m_held.size());
    const long long from = m_played;
    while (m_played < limit && !m_stop) {
        long long end = std::min(limit, m_played + m_sink->sliceSamples());
        // a slice ends where a report is due, so that the report is made as that sample is heard
        for (const Report &report : m_reports)
            if (report.due > m_played && report.due < end)
                end = report.due;
        if (!m_sink->write(m_held.data() + (m_played - from), int(end - m_played)))
            return false;
        m_played = end;
        reportHeard();
    }
    m_held.erase(m_held.begin(), m_held.begin() + (m_played - from));
    return !m_stop;
}

void SpeechEngine::reportHeard()
{
    const long long heard = m_sink->heard();
    while (!m_reports.empty() && m_reports.front().due <= heard && !m_stop) {
        const Report report = m_reports.front();
        m_reports.pop_front();
        if (const KOSCAN_TTS_ProgressCallBack callback = m_callback)
            callback(m_context, report.position, report.length, int(report.start));
    }
}
