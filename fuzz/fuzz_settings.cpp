// The INI files: the recorder settings (ConfigWidget on /apps/config/recconfig.ini) and the
// system configuration's language (/apps/config/config.ini), both read by QSettings.
#include "app/startup.h"
#include "fuzzinput.h"
#include "storage/configwidget.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzDeviceFile("/apps/config/recconfig.ini", data, size);
    fuzzDeviceFile("/apps/config/config.ini", data, size);
    {
        ConfigWidget settings;
        settings.getPlayVolume();
    }
    readSystemLanguage();
    return 0;
}
