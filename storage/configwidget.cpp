#include "storage/configwidget.h"

#include "storage/atomicfile.h"
#include "storage/devicepath.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>

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
    m_unsaved = true;
    // a setting is written at once: the pen may lose power at any moment
    if (!m_loading)
        save();
}

void ConfigWidget::save()
{
    const char *const keys[] = {keyFormat, keyMode, keyQuality, keyLoopMode, keyPlayVolume};
    const int values[] = {m_fileFormat, m_modeOption, m_fileQuality, m_loopMode, m_playVolume};
    QStringList others = m_settings->allKeys();
    for (const char *key : keys)
        others.removeAll(QLatin1String(key));
    if (others.isEmpty()) {
        // The file as QSettings writes this group (its keys in Qt's order, plain numbers), put
        // in place whole. QSettings' own write renames its new file over the old one even when
        // a write failed as the last bytes went out, leaving the settings empty.
        const QByteArray text = "[RecorderSet]\nFormat=" + QByteArray::number(m_fileFormat) +
                                "\nLoopMode=" + QByteArray::number(m_loopMode) +
                                "\nMode=" + QByteArray::number(m_modeOption) +
                                "\nPlayVolume=" + QByteArray::number(m_playVolume) +
                                "\nQuality=" + QByteArray::number(m_fileQuality) + "\n";
        // as QSettings does, a missing folder is made
        const QString file = m_settings->fileName();
        if (!QDir().mkpath(QFileInfo(file).absolutePath()) || writeFileAtomically(file, text) != 0)
            return;
    } else {
        // entries of another program's are kept as QSettings keeps them
        for (int i = 0; i < 5; ++i)
            m_settings->setValue(QLatin1String(keys[i]), QVariant(values[i]));
        m_settings->sync();
        if (m_settings->status() != QSettings::NoError || syncFolderOf(m_settings->fileName()) != 0)
            return;
    }
    m_unsaved = false;
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
    if (m_unsaved)
        save();
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
