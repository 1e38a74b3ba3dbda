#include "spokentext.h"

#include <QFile>

#include <espeak-ng/speak_lib.h>

namespace {

constexpr int sampleRate = 22050;
// the text being synthesised: espeak-ng runs one synthesis at a time
SpokenText *spoken = nullptr;

int collect(short *samples, int count, espeak_EVENT *events)
{
    if (samples && count > 0)
        spoken->samples.insert(spoken->samples.end(), samples, samples + count);
    for (; events && events->type != espeakEVENT_LIST_TERMINATED; ++events)
        if (events->type == espeakEVENT_WORD)
            spoken->words.append({events->text_position - 1, events->length,
                                  (long long)events->audio_position * sampleRate / 1000});
    return 0;
}

} // namespace

bool SpokenText::synthesise(const QString &dataDir, const char *voice, int rate, int volume,
                            const QString &text)
{
    if (espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 20, QFile::encodeName(dataDir).constData(),
                          0) != sampleRate)
        return false;
    espeak_SetSynthCallback(collect);
    espeak_SetVoiceByName(voice);
    espeak_SetParameter(espeakRATE, rate, 0);
    espeak_SetParameter(espeakVOLUME, volume, 0);
    const QVector<uint> characters = text.toUcs4();
    std::vector<wchar_t> wide(characters.begin(), characters.end());
    wide.push_back(0);
    words.clear();
    samples.clear();
    spoken = this;
    espeak_Synth(wide.data(), wide.size() * sizeof(wchar_t), 0, POS_CHARACTER, 0, espeakCHARS_WCHAR,
                 nullptr, nullptr);
    spoken = nullptr;
    espeak_Terminate();
    return !samples.empty();
}
