#include "scanread/configreader.h"

#include "scanread/ocrpen.h"
#include "scanread/ttsplayer.h"
#include "storage/devicepath.h"
#include "storage/languagemanager.h"
#include "storage/volume.h"

#include <QDebug>
#include <QSettings>

ConfigReader *ConfigReader::reader = nullptr;

namespace {

OCRPen *ocr()
{
    if (!OCRPen::ocr)
        OCRPen::ocr = new OCRPen;
    return OCRPen::ocr;
}

TTSPlayer *player()
{
    if (!TTSPlayer::player)
        TTSPlayer::player = new TTSPlayer;
    return TTSPlayer::player;
}

// the speech engine's speed for the three reading speed steps; other values pass as they are
int speedOfStep(int step)
{
    switch (step) {
    case 0:
        return 30;
    case 1:
        return 50;
    case 2:
        return 65;
    default:
        return step;
    }
}

// a value that is not a number counts as missing
int intValue(const QSettings &settings, const char *key, int fallback)
{
    bool ok = false;
    const int value = settings.value(QLatin1String(key)).toInt(&ok);
    return ok ? value : fallback;
}

} // namespace

ConfigReader::ConfigReader()
    : m_settings(new QSettings(devicePath(QStringLiteral("/apps/config/config.ini")),
                               QSettings::IniFormat))
{
    init();
}

int ConfigReader::init()
{
    qDebug() << "====init";
    setLanInfo(intValue(*m_settings, "InfoListen/Lan", 0));
    m_scanDirect = intValue(*m_settings, "InfoListen/ScanDirect", 0);
    // whether each scanned line is read aloud at once; off unless the pen is set so
    m_readControl = intValue(*m_settings, "InfoListen/ReadControl", 0);
    setReadSpeedInfo(m_readSpeed);
    setVolumInfo(m_volume);
    qDebug() << "====init end";
    return 0;
}

void ConfigReader::setLanInfo(int id)
{
    qDebug() << "in ConfigReader::setLanInfo---------" << id;
    m_language = id;
    m_settings->setValue(QStringLiteral("InfoListen/Lan"), id);

    const int lanInt = LanguageManager::Instance()->getIntByID(id);
    int languages[] = {getEngineID(lanInt), -1};
    ocr()->setLan(languages);
    player()->setLan(lanInt);

    const int volume = intValue(*m_settings, "InfoListen/Volum", 3);
    player()->setVolume(volume * 20);
    const int speed = speedOfStep(intValue(*m_settings, "InfoListen/ReadSpeed", 1));
    player()->setSpeed(speed);
    qDebug() << "speedValue------" << speed;
    qDebug() << "setLanInfo end";
}

void ConfigReader::setReadSpeedInfo(int speed)
{
    m_readSpeed = speed;
    qDebug() << "ConfigReader::setReadSpeedInfo";
    player()->setSpeed(intValue(*m_settings, "SystemSet/Speed", 1));
}

void ConfigReader::setVolumInfo(int volume)
{
    m_volume = volume;
    player()->setVolume(int(getSpeakerVolume()));
}

int ConfigReader::getVolumInfo()
{
    qDebug() << "volumeInfo";
    return m_volume;
}

int ConfigReader::getHandLR()
{
    m_hand = intValue(*m_settings, "SystemSet/HandLR", 0);
    return m_hand;
}

int ConfigReader::getEngineID(int lanInt)
{
    if (lanInt == 1)
        return 1;
    if (lanInt == 151)
        return 3;
    return 2;
}

void ConfigReader::quitFun()
{
    if (!reader)
        return;
    delete reader->m_settings;
    delete reader;
}
