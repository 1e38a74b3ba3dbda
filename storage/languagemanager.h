#pragma once

#include <QString>
#include <QVector>

// One row of /apps/config/scanlanguage.cfg.
struct languageInfo
{
    QString lanName;
    QString lanInt; // numeric code, kept as text
    QString chnName;
    int fileFlag = 0;
    int ttsFlag = 0;
    int showFlag = 0;
    int defaultFlag = 0;
    int fileIndex = 0; // rows in fileInfos when this row was parsed
};

// The device's language table: seven tab-separated columns per line. Lookups take a position in
// fileInfos (recognition side) or showLanInfos (display side). One instance per process.
class LanguageManager
{
public:
    static LanguageManager *Instance();
    static void quitFun();

    // 0 on success (a missing file is created empty), -1 when the file cannot be had or a line
    // does not hold exactly seven columns; rows read before such a line stay loaded.
    int init();

    int getLanguageSize() const { return m_fileInfos.size(); }
    int getShowLanSize() const { return m_showLanInfos.size(); }

    // for an id outside showLanInfos: "id erroe" and 0 (no language)
    int getLanIntByID(int id) const;
    int getIntByID(int id) const;
    QString getShowLanByID(int id) const;
    QString getChnByID(int id) const;
    int getTTSFlagByID(int id) const;
    bool getInfoByID(int id, languageInfo &info) const;
    int getIDByLanINT(int lanInt) const;
    // the first fileInfos row flagged default; 0 when none is
    int getDefaultShowLan() const;

    static LanguageManager *manager;

private:
    LanguageManager() = default;

    QVector<languageInfo> m_fileInfos;
    QVector<languageInfo> m_showLanInfos;
};

// Creates the table if needed and loads it: the result of init().
int languageInit();
