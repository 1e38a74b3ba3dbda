#pragma once

class QSettings;

// The reader's view of /apps/config/config.ini: reading language, scan direction, hand, speed,
// volume and whether scanned lines are read at once ("InfoListen/ReadControl"). Applying a language
// sets up both engines at once. One shared instance, ConfigReader::reader, created on first use by
// its users.
class ConfigReader
{
public:
    ConfigReader();

    int init();
    // Stores and writes the language, then gives both engines its languages, volume and speed.
    void setLanInfo(int id);
    // Stores speed; the speech engine gets the raw "SystemSet/Speed" value instead.
    void setReadSpeedInfo(int speed);
    // Stores volume; the speech engine gets the speaker volume of the sound record instead.
    void setVolumInfo(int volume);
    int getVolumInfo();
    // re-read at every call
    int getHandLR();
    // OCR engine number for a language number
    static int getEngineID(int lanInt);

    int getLanInfo() const { return m_language; }
    int getTTSInfo() const { return m_ttsInfo; }
    int getScanDirectInfo() const { return m_scanDirect; }
    int getReadControlInfo() const { return m_readControl; }
    int getScanDirectDict() const { return m_scanDirectDict; }
    int getSpanishInfo() const { return m_spanishInfo; }
    int getTalkingMenuInfo() const { return m_talkingMenu; }
    int getReadSpeedInfo() const { return m_readSpeed; }

    // Deletes the settings and the shared instance; to be called once, at the end.
    static void quitFun();

    static ConfigReader *reader;

private:
    int m_hand = 0;
    int m_ttsInfo = 0;
    int m_language = 0;
    int m_scanDirect = 0;
    int m_readControl = 0;
    int m_scanDirectDict = 0;
    QSettings *m_settings;
    int m_talkingMenu = 0;
    int m_volume = 0;
    int m_readSpeed = 0;
    int m_spanishInfo = 0;
};
