// LanguageManager::init(): the language table /apps/config/scanlanguage.cfg, and the lookups
// that start-up and the recorder window make on what it loaded.
#include "fuzzinput.h"
#include "storage/languagemanager.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzDeviceFile("/apps/config/scanlanguage.cfg", data, size);
    LanguageManager *table = LanguageManager::Instance();
    table->init();
    const int last = qMax(table->getLanguageSize(), table->getShowLanSize());
    for (int id : {-1, 0, 1, last - 1, last}) {
        table->getIDByLanINT(table->getLanIntByID(id));
        table->getIntByID(id);
        table->getShowLanByID(id);
        table->getChnByID(id);
        table->getTTSFlagByID(id);
        languageInfo info;
        table->getInfoByID(id, info);
    }
    table->getDefaultShowLan();
    // the display rows are kept across loads: a fresh table for every input
    LanguageManager::quitFun();
    return 0;
}
