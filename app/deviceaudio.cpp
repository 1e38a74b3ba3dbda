#include "app/deviceaudio.h"

#include <atomic>

namespace {
std::atomic<int> recordMode{-1};
}

int Set_mic_record_mode(int mode)
{
    recordMode.store(mode, std::memory_order_relaxed);
    return 0;
}

int micRecordMode()
{
    return recordMode.load(std::memory_order_relaxed);
}
