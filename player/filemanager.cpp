#include "player/filemanager.h"

#include "storage/audioinfo.h"
#include "storage/devicepath.h"
#include "storage/timetext.h"
#include "storage/tracelog.h"

#include <QFile>
#include <QFileInfo>

int FileManager::load()
{
    m_files.clear();
    QFile list(devicePath(QStringLiteral("/apps/config/musiclist.txt")));
    if (!list.open(QIODevice::ReadOnly)) {
        LOGW("no music list: %s", qPrintable(list.fileName()));
        return -1;
    }
    // names are the card's bytes, as the scan found them
    for (const QByteArray &line : list.readAll().split('\n')) {
        const QByteArray name = line.trimmed();
        if (!name.isEmpty())
            m_files.append(QFile::decodeName(name));
    }
    LOGI("music list: %d files", static_cast<int>(m_files.size()));
    return m_files.size();
}

QString FileManager::filePath(int index) const
{
    return devicePath(at(index));
}

bool FileManager::exists(int index) const
{
    return index >= 0 && index < m_files.size() && QFileInfo(filePath(index)).isFile();
}

QString FileManager::lengthText(const QString &path)
{
    const QByteArray bytes = QFile::encodeName(path);
    if (path.endsWith(QLatin1String(".wav"), Qt::CaseInsensitive)) {
        char text[32] = {};
        return getWaveDuration(bytes.constData(), text) == 0 ? QString::fromLatin1(text)
                                                             : QString();
    }
    audioinfo info;
    initaudioinfo(&info);
    return getaudioinfo(bytes.constData(), &info) == 0 ? QString::fromLatin1(info.play_time)
                                                       : QString();
}
