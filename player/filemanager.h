#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// The music list the start-up scan writes to /apps/config/musiclist.txt: one device path a line,
// in the scan's order, each name the card's own bytes. Loaded for playing; the list file itself is
// never changed here. A byte-order mark at its head and CRLF line ends are taken as an editor
// leaves them.
class FileManager
{
public:
    // Reads the list again; the number of entries, or -1 when the list file cannot be read.
    int load();

    int count() const { return m_files.size(); }
    // The entry as the pen names it ("/mnt/mmc/e_Music/..."), byte for byte.
    QByteArray at(int index) const { return m_files.value(index); }
    // Where the entry's file is on this machine (through the device root).
    QByteArray filePath(int index) const;
    // Whether the entry is a file that is there (the scan also lists folders named like music).
    bool exists(int index) const;

    // "hh:mm:ss" or "mm:ss" of an MP3 or WAV file; empty when it cannot be measured.
    static QString lengthText(const QByteArray &path);

private:
    QList<QByteArray> m_files;
};
