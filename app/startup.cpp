#include "app/startup.h"

#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QPalette>
#include <QSettings>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>
#include <dirent.h>

namespace {

struct TranslationRow
{
    int number;
    const char *logLine;
    const char *file;
};

const TranslationRow translationTable[] = {
    {1, "lan is chinese", "/apps/res/recorder_zh_CN.qm"},
    {101, "lan is english", "/apps/res/recorder_en_US.qm"},
    {104, "lan is KO_LANG_GREMAN", "/apps/res/recorder_Ger.qm"},
    {103, "lan is KO_LANG_FRENCH", "/apps/res/recorder_Fre.qm"},
    {106, "lan is KO_LANG_ITALIAN", "/apps/res/recorder_Ita.qm"},
    {151, "lan is KO_LANG_RUSSIAN", "/apps/res/recorder_Rus.qm"},
    {2, "lan is KO_LANG_TRADITIONAL", "/apps/res/recorder_zh_TW.qm"},
    {105, "lan is KO_LANG_SPANISH", "/apps/res/recorder_Spa.qm"},
};

} // namespace

int ensureMediaFolder(const char *folder, const char *presentLine)
{
    const QByteArray path = devicePathBytes(folder);
    if (DIR *dir = opendir(path.constData())) {
        if (closedir(dir) == -1)
            LOGD("close dir falied in main");
        return 0;
    }
    LOGD("recorder is null");
    // -p: in a simulated device root the card's mount point may not exist yet
    const QByteArray command = "mkdir -p " + shellQuoted(QFile::decodeName(path));
    if (std::system(command.constData()) == -1) {
        LOGD("mkdir failed ");
        return -1;
    }
    LOGD("%s", presentLine);
    return 0;
}

QPalette recorderPalette()
{
    const QBrush white(Qt::white, Qt::SolidPattern);
    const QBrush black(Qt::black, Qt::SolidPattern);
    // WindowText, Button, Light, Dark, Mid, Text, BrightText, Base, Window
    QPalette palette(white, black, black, black, black, white, black, black, black);
    palette.setBrush(QPalette::All, QPalette::Highlight, white);
    palette.setBrush(QPalette::All, QPalette::HighlightedText, black);
    return palette;
}

int readSystemLanguage()
{
    const QSettings config(devicePath(QStringLiteral("/apps/config/config.ini")),
                           QSettings::IniFormat);
    const int lan = config.value(QStringLiteral("SystemSet/Lan"), 0).toInt();
    qDebug() << "lanInfo:" << lan;
    return lan;
}

QString translationFileFor(int languageNumber)
{
    for (const TranslationRow &row : translationTable) {
        if (row.number == languageNumber)
            return devicePath(QLatin1String(row.file));
    }
    return QString();
}

void applyTranslation(QApplication &app, QTranslator &translator, int languageNumber)
{
    for (const TranslationRow &row : translationTable) {
        if (row.number != languageNumber)
            continue;
        qDebug() << row.logLine;
        const bool loaded = translator.load(devicePath(QLatin1String(row.file)));
        app.installTranslator(&translator);
        if (row.number == 1) {
            std::puts(loaded ? "qm file loaded correctly" : "qm load error");
            std::fflush(stdout);
        }
    }
}
