// Texts the player takes from outside: a command line cut into arguments, and a song's length
// text ("hh:mm:ss" or "mm:ss" anywhere in it) read as hundredths of a second and shown again.
#include "player/myprocess.h"
#include "player/playerwnd.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromLocal8Bit(reinterpret_cast<const char *>(data), int(size));
    const QStringList pieces = MyProcess::splitArguments(text);
    // cutting keeps every character but the separating blanks
    int kept = 0;
    for (const QString &piece : pieces)
        kept += piece.size();
    if (kept > text.size())
        std::abort();
    const int hundredths = playerWnd::strTimeNumber(text);
    if (hundredths < 0)
        std::abort();
    playerWnd::formatTime(hundredths / 100);
    return 0;
}
