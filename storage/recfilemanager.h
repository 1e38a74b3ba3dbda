#pragma once

#include <QDate>
#include <QFileInfo>
#include <QString>
#include <QVector>

// The user's recordings, newest first, persisted in /apps/config/reclist.ini (FF FE, then one
// UTF-16LE line per recording holding its path on the pen). Every change is written back at
// once. Paths handed in and out are paths of this machine (devicePath() applied); the list
// file holds the pen's paths.
class RecFileManager
{
public:
    RecFileManager() = default;

    // loads the list file; -1 when it is unreadable (it is then left alone) or missing and
    // cannot be created, or at a line holding a tab (the lines above it stay loaded)
    int init(int unused = 0);
    // replaces the list file as a whole, then syncs; -1 when it cannot be written. Before the
    // first write over a list that did not load whole, the original is copied beside it
    // (reclist.ini.bak, or .bak1 ... when that exists).
    int flush();
    int addNewFileToList(const QString &path);
    // deletes the recording's file and drops the entry (a file already gone counts as deleted);
    // -1 for a bad index, a failed delete or a file outside the recordings folder
    int removeAt(int index);
    // 0 renamed, 1 refused or failed (a name with a '/' or a NUL is always refused; a list that
    // cannot be written undoes the rename), 2 a file of that name in lower case already exists
    int renameRecFile(int index, const QString &name);
    // the path for the next recording, named after today's date and a sequence number
    QString newFileName();
    QString newFileName(const QDate &today);
    // the play length text, computed on first use and cached; "null" for an unknown type
    QString getFileDuration(int index);
    // true while there is room for another recording (fewer than 1000 listed)
    bool exceedMaxNum() const;
    int getFileNum() const { return m_files.size(); }
    void setCurFileIndex(int i);
    // counted from the oldest end: entries - current index - 1
    int getCurFileIndex() const;
    bool getCurInfo(QFileInfo &info) const;
    bool getInfoByID(int index, QFileInfo &info) const;
    QString getLatestFile() const;
    bool getLatestFile(QFileInfo &info) const;
    void getInfoList(QVector<QFileInfo> &list) const;
    static const char *getExtendName();
    bool judgeFileTypeByExtendName(const QString &name, const QString &ext) const;
    bool FindFile(const QString &path, QVector<QFileInfo> &list, const char *dir);

    static constexpr int maxFiles = 1000;

    // the shared instance, created on first use
    static RecFileManager *instance();
    static RecFileManager *manager;

private:
    QVector<QFileInfo> m_files;
    QVector<QString> m_durations;
    int m_curIndex = 0;
    // false after a load that stopped early or could not read the file's text
    bool m_loadedWhole = true;
};
