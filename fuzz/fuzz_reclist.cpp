// RecFileManager::init(): the recording list /apps/config/reclist.ini, and the next file name,
// which continues the sequence number of the newest listed recording.
#include "fuzzinput.h"
#include "storage/recfilemanager.h"

#include <QDate>

namespace {

// the recordings that the seed lists name, so that their lines load
bool makeRecordings()
{
    for (const char *name : {"/mnt/mmc/e_Recorder/240131.mp3", "/mnt/mmc/e_Recorder/240131_1.wav",
                             "/mnt/mmc/e_Recorder/240131_4.mp3", "/mnt/mmc/e_Recorder/240130.wav"})
        fuzzDeviceFile(name, nullptr, 0);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const bool made = makeRecordings();
    Q_UNUSED(made);
    fuzzDeviceFile("/apps/config/reclist.ini", data, size);
    RecFileManager list;
    list.init();
    list.newFileName(QDate(2024, 1, 31));
    list.getLatestFile();
    return 0;
}
