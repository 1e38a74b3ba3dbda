#include "storage/configwidget.h"

#include "storage/devicepath.h"

#include <QDebug>
#include <QSettings>

ConfigWidget *ConfigWidget::reader = nullptr;

namespace {
const char keyFormat[] = "RecorderSet/Format";
const char keyMode[] = "RecorderSet/Mode";
const char keyQuality[] = "RecorderSet/Quality";
const char keyLoopMode[] = "RecorderSet/LoopMode";
const char keyPlayVolume[] = "RecorderSet/PlayVolume";
} // namespace

ConfigWidget::ConfigWidget()
    : m_settings(std::make_unique<QSettings>(
          devicePath(QStringLiteral("/apps/config/recconfig.ini")), QSettings::IniFormat))
{
    init();
}

ConfigWidget::~ConfigWidget() = default;

void ConfigWidget::store(const char *key, int value)
{
    // at start-up a key the file already holds just so is left alone: the file is then not
    // rewritten and synced to the card with the very bytes it has, at every start
    if (m_loading && m_settings->value(QLatin1String(key)).toString() == QString::number(value))
        return;
    m_settings->setValue(QLatin1String(key), QVariant(value));
    // a setting is written at once: the pen may lose power at any moment
    if (!m_loading)
        m_settings->sync();
}

ConfigWidget *ConfigWidget::instance()
{
    if (!reader)
        reader = new ConfigWidget;
    return reader;
}

int ConfigWidget::init()
{
    qDebug() << "in ConfigWidget::init============";
    m_loading = true;
    // each read is written straight back, so that missing keys appear with their defaults
    setFileFormat(m_settings->value(QLatin1String(keyFormat), 0).toInt());
    setModeOption(m_settings->value(QLatin1String(keyMode), 0).toInt());
    setFileQuality(m_settings->value(QLatin1String(keyQuality), 1).toInt());
    setLoopMode(m_settings->value(QLatin1String(keyLoopMode), 0).toInt());
    m_playVolume = m_settings->value(QLatin1String(keyPlayVolume), 5).toInt();
    qDebug() << "playVolume======" << m_playVolume;
    setPlayVolume(m_playVolume);
    m_loading = false;
    m_settings->sync();
    return 0;
}

void ConfigWidget::setFileFormat(int format)
{
    m_fileFormat = format;
    store(keyFormat, format);
}

void ConfigWidget::setModeOption(int mode)
{
    m_modeOption = mode;
    store(keyMode, mode);
}

void ConfigWidget::setFileQuality(int quality)
{
    m_fileQuality = quality;
    store(keyQuality, quality);
}

void ConfigWidget::setLoopMode(int mode)
{
    m_loopMode = mode;
    store(keyLoopMode, mode);
}

void ConfigWidget::setPlayVolume(int volume)
{
    qDebug() << "in setPlayVolume ========" << volume;
    m_playVolume = volume;
    store(keyPlayVolume, volume);
}
