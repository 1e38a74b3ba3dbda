#pragma once

#include <QString>
#include <QVector>

#include <cstdint>
#include <vector>

// A text spoken by espeak-ng itself, as the host speech engine speaks it with the same voice, rate
// and level: where each word starts, and the samples. It tells what is heard independently of
// the engine's own reports. espeak-ng's output depends a little on what it spoke before, and it
// cannot start again in a process that stopped it: one call a process, compared with the engine's
// first reading in its own.
class SpokenText
{
public:
    struct Word
    {
        int position; // in the text, in characters
        int length;
        long long sample; // where its audio starts
    };

    // dataDir holds espeak-ng-data (a real path); false when espeak-ng cannot start on it
    bool synthesise(const QString &dataDir, const char *voice, int rate, int volume,
                    const QString &text);

    QVector<Word> words;
    std::vector<int16_t> samples;
};
