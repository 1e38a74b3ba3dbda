#include "player/filemanager.h"

#include "storage/audioinfo.h"
#include "storage/devicepath.h"
#include "storage/timetext.h"
#include "storage/tracelog.h"

#include <QFile>

#include <sys/stat.h>

int FileManager::load()
{
    m_files.clear();
    QFile list(devicePath(QStringLiteral("/apps/config/musiclist.txt")));
    if (!list.open(QIODevice::ReadOnly)) {
        LOGW("no music list: %s", qPrintable(list.fileName()));
        return -1;
    }
    QByteArray text = list.readAll();
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    // names are the card's bytes, as the scan found them: blanks belong to them
    for (QByteArray &line : text.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        if (!line.isEmpty())
            m_files.append(line);
    }
    LOGI("music list: %d files", static_cast<int>(m_files.size()));
    return m_files.size();
}

QByteArray FileManager::filePath(int index) const
{
    return devicePathBytes(at(index).constData());
}

bool FileManager::exists(int index) const
{
    struct stat info = {};
    return index >= 0 && index < m_files.size() &&
           ::stat(filePath(index).constData(), &info) == 0 && S_ISREG(info.st_mode);
}

QString FileManager::lengthText(const QByteArray &path)
{
    if (path.toLower().endsWith(".wav")) {
        char text[32] = {};
        return getWaveDuration(path.constData(), text) == 0 ? QString::fromLatin1(text) : QString();
    }
    audioinfo info;
    initaudioinfo(&info);
    return getaudioinfo(path.constData(), &info) == 0 ? QString::fromLatin1(info.play_time)
                                                      : QString();
}
