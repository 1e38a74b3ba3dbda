#pragma once

#include "testdeviceroot.h"

#include <QFile>
#include <QString>
#include <QStringList>

// The translation files of the start-up table, in its order (language list positions 0..7 of
// the sample language table choose them in this order too).
inline QStringList translationNames()
{
    return {"zh_CN", "en_US", "Ger", "Fre", "Ita", "Rus", "zh_TW", "Spa"};
}

inline QString builtTranslation(const QString &name)
{
    return QStringLiteral(QM_DIR "/recorder_") + name + QStringLiteral(".qm");
}

// Puts the built translations and the pictures where the device keeps them.
inline bool installResources(const TestDeviceRoot &root)
{
    bool ok = true;
    for (const QString &name : translationNames()) {
        ok &= QFile::copy(builtTranslation(name), root.path("/apps/res/recorder_" + name + ".qm"));
    }
    ok &= QFile::copy(QStringLiteral(RES_SOURCE_DIR "/pics/settings2.png"),
                      root.path("/apps/res/pics/settings2.png"));
    return ok;
}
