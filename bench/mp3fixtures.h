#pragma once

#include <QString>

// One-hour MP3 files for the benchmarks, made once from a generated signal and kept in a
// folder below the system's temporary folder, so later runs reuse them.
struct Mp3Fixtures
{
    QString cbr128;  // 24 kHz mono, shineenc 128 kbit/s
    QString cbr64;   // 24 kHz mono, shineenc 64 kbit/s
    QString vbrXing; // 44.1 kHz stereo, lame -V2
    QString vbrBare; // the same without the Xing/Info frame (lame -t)
    bool ok = false;
};

Mp3Fixtures makeMp3Fixtures();
