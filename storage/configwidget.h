#pragma once

#include <memory>

class QSettings;

// The recorder's and player's five persistent settings, mirrored into
// /apps/config/recconfig.ini (group "RecorderSet"). One process-wide instance lives in
// ConfigWidget::reader; every user creates it when the pointer is still null.
class ConfigWidget
{
public:
    ConfigWidget();
    ~ConfigWidget();
    ConfigWidget(const ConfigWidget &) = delete;
    ConfigWidget &operator=(const ConfigWidget &) = delete;

    // Loads all five values; a key missing from the file is written back with its default.
    int init();

    int getFileFormat() const { return m_fileFormat; }
    int getModeOption() const { return m_modeOption; }
    int getFileQuality() const { return m_fileQuality; }
    int getLoopMode() const { return m_loopMode; }
    int getPlayVolume() const { return m_playVolume; }

    void setFileFormat(int format);
    void setModeOption(int mode);
    void setFileQuality(int quality);
    void setLoopMode(int mode);
    void setPlayVolume(int volume);

    // the shared instance, created on first use
    static ConfigWidget *instance();
    static ConfigWidget *reader;

private:
    void store(const char *key, int value);
    // writes all five values to the file, replacing it whole
    void save();

    int m_fileFormat = 0;
    int m_modeOption = 0;
    int m_fileQuality = 1;
    int m_loopMode = 0;
    int m_playVolume = 5;
    bool m_loading = false; // init() writes the file once, at its end
    bool m_unsaved = false; // a value differs from the file
    std::unique_ptr<QSettings> m_settings;
};
