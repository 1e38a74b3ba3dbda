#pragma once

#include <QString>
#include <QStringList>

// The music list the start-up scan writes to /apps/config/musiclist.txt: one device path a line,
// in the scan's order. Loaded for playing; the list file itself is never changed here.
class FileManager
{
public:
    // Reads the list again; the number of entries, or -1 when the list file cannot be read.
    int load();

    int count() const { return m_files.size(); }
    bool isEmpty() const { return m_files.isEmpty(); }
    // The entry as the pen names it ("/mnt/mmc/e_Music/...").
    QString at(int index) const { return m_files.value(index); }
    // Where the entry's file is on this machine (through the device root).
    QString filePath(int index) const;
    bool exists(int index) const;

    // "hh:mm:ss" or "mm:ss" of an MP3 or WAV file; empty when it cannot be measured.
    static QString lengthText(const QString &path);

private:
    QStringList m_files;
};
