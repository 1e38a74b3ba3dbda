#include "storage/recfilemanager.h"

#include "storage/atomicfile.h"
#include "storage/audioinfo.h"
#include "storage/configwidget.h"
#include "storage/devicepath.h"
#include "storage/timetext.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QTextCodec>
#include <QTextStream>

#include <cstdio>
#include <unistd.h>

RecFileManager *RecFileManager::manager = nullptr;

namespace {

const QString unknownDuration = QStringLiteral("null");

QString listFile()
{
    return devicePath(QStringLiteral("/apps/config/reclist.ini"));
}

QString recordingsFolder()
{
    return QDir::cleanPath(devicePath(QStringLiteral("/mnt/mmc/e_Recorder")));
}

// The first free name for a copy of the list file beside it.
QString backupName()
{
    QString name = listFile() + QStringLiteral(".bak");
    for (int i = 1; QFileInfo::exists(name); ++i)
        name = listFile() + QStringLiteral(".bak%1").arg(i);
    return name;
}

} // namespace

RecFileManager *RecFileManager::instance()
{
    if (!manager)
        manager = new RecFileManager;
    return manager;
}

int RecFileManager::init(int)
{
    qDebug() << "in RecFileManager::init";
    m_files.clear();
    m_durations.clear();
    m_curIndex = 0;

    m_loadedWhole = true;

    QFile file(listFile());
    if (!file.open(QIODevice::ReadOnly)) {
        // a list that exists but cannot be read is left as it is
        if (file.exists())
            return -1;
        QFile create(listFile());
        return create.open(QIODevice::WriteOnly | QIODevice::NewOnly) ? 0 : -1;
    }
    const QByteArray bytes = file.readAll();
    // UTF-16 without its byte-order mark reads as 8-bit text full of NULs: nothing of it loads
    if (!bytes.startsWith("\xff\xfe") && !bytes.startsWith("\xfe\xff") && bytes.contains('\0'))
        m_loadedWhole = false;
    // no Text mode: it would drop 0x0D bytes, which are halves of UTF-16 characters here
    QTextStream in(bytes);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (line.isEmpty())
            continue;
        qDebug() << "fullname is not null";
        const QStringList parts = line.split(QLatin1Char('\t'), Qt::KeepEmptyParts);
        qDebug() << "list1.size:" << parts.size();
        if (parts.size() != 1) {
            m_loadedWhole = false;
            return -1;
        }
        const QFileInfo info(devicePath(line));
        qDebug() << "info.absoluteFilePath():" << info.absoluteFilePath();
        // a recording deleted behind our back leaves the list at the next flush()
        if (info.exists()) {
            m_files.append(info);
            m_durations.append(unknownDuration);
        }
    }
    return 0;
}

int RecFileManager::flush()
{
    // what did not load would be gone with this write: the original is kept beside it once
    if (!m_loadedWhole && QFileInfo::exists(listFile())) {
        const QString backup = backupName();
        if (!QFile::copy(listFile(), backup)) {
            qWarning() << "list not backed up to" << backup << ": not written";
            return -1;
        }
        qWarning() << "list not loaded whole, original kept as" << backup;
    }
    m_loadedWhole = true;
    QString text;
    for (const QFileInfo &info : qAsConst(m_files))
        text += penPath(info.absoluteFilePath()) + QLatin1Char('\n');
    // power lost mid-write leaves one whole list or the other
    QTextCodec::ConverterState noMark(QTextCodec::IgnoreHeader);
    const QByteArray bytes =
        QByteArray("\xff\xfe", 2) +
        QTextCodec::codecForName("UTF-16LE")->fromUnicode(text.constData(), text.size(), &noMark);
    if (writeFileAtomically(listFile(), bytes) != 0)
        return -1;
    ::sync();
    return 0;
}

int RecFileManager::addNewFileToList(const QString &path)
{
    m_files.prepend(QFileInfo(devicePath(path)));
    m_durations.prepend(unknownDuration);
    flush();
    return 0;
}

int RecFileManager::removeAt(int index)
{
    qDebug() << "remove at:" << index;
    if (index < 0 || index >= m_files.size())
        return -1;
    const QString path = QDir::cleanPath(m_files.at(index).absoluteFilePath());
    qDebug("removed file name is %s\n", path.toLocal8Bit().constData());
    // a list line may name anything: only recordings are ever deleted
    if (!path.startsWith(recordingsFolder() + QLatin1Char('/'))) {
        std::puts("remove fail");
        return -1;
    }
    // a file that is already gone (a recording stopped before its encoder made it) is removed
    if (!QFile::remove(path) && QFileInfo::exists(path)) {
        std::puts("remove fail");
        return -1;
    }
    m_files.remove(index);
    m_durations.remove(index);
    if (m_files.isEmpty())
        m_curIndex = 0;
    // removing the only entry leaves -1 here: the window reads that as "nothing selected"
    if (index == m_curIndex)
        m_curIndex = m_files.size() - 1;
    qDebug() << "fileInfos size:::" << m_files.size();
    flush();
    return 0;
}

int RecFileManager::renameRecFile(int index, const QString &name)
{
    // a recording never leaves its folder; a NUL would cut the name short on disk
    if (index < 0 || index >= m_files.size() || name.contains(QLatin1Char('/')) ||
        name.contains(QChar(0)))
        return 1;
    const QFileInfo &info = m_files.at(index);
    const QString folder = info.absolutePath() + QLatin1Char('/');
    const QString suffix = QLatin1Char('.') + info.suffix();
    if (QFileInfo::exists(folder + name.toLower() + suffix))
        return 2;
    const QString target = folder + name + suffix;
    if (!QFile::rename(info.absoluteFilePath(), target))
        return 1;
    m_files[index] = QFileInfo(target);
    if (flush() != 0) {
        // the list on disk still names the old file: keep the two in step
        m_files[index] = info;
        QFile::rename(target, info.absoluteFilePath());
        return 1;
    }
    return 0;
}

QString RecFileManager::newFileName()
{
    return newFileName(QDate::currentDate());
}

QString RecFileManager::newFileName(const QDate &today)
{
    const QString date = today.toString(QStringLiteral("yyMMdd"));
    // 64 bits: the number after the largest int goes on counting instead of turning negative
    qint64 number = 0;
    if (!m_files.isEmpty()) {
        const QString newest = m_files.first().baseName();
        // the number follows "yyMMdd_"; a name without one (or beyond 64 bits) reads as 0
        if (newest.contains(date))
            number = qMax<qint64>(newest.mid(7).toLongLong(), 0) + 1;
    }
    const QString folder = QStringLiteral("/mnt/mmc/e_Recorder/");
    const QString extension = QLatin1String(getExtendName());
    for (;;) {
        const QString name = number == 0 ? date : QStringLiteral("%1_%2").arg(date).arg(number);
        const QString path = folder + name + extension;
        if (!QFileInfo::exists(devicePath(path)))
            return devicePath(path);
        std::printf("file %s exists\n", path.toLocal8Bit().constData());
        ++number;
    }
}

QString RecFileManager::getFileDuration(int index)
{
    if (index < 0 || index >= m_files.size())
        return unknownDuration;
    if (m_durations.at(index) != unknownDuration)
        return m_durations.at(index);
    const QFileInfo &info = m_files.at(index);
    const QString name = info.fileName();
    const QByteArray path = QFile::encodeName(info.absoluteFilePath());
    QString text = unknownDuration;
    if (name.contains(QLatin1String(".mp3"), Qt::CaseInsensitive)) {
        audioinfo audio;
        getaudioinfo(path.constData(), &audio);
        if (audio.seconds > 3600) {
            text = QString::fromLatin1(audio.play_time);
        } else if (audio.seconds < 1) {
            text = QStringLiteral(" ");
        } else {
            char clock[16];
            text = QString::fromLatin1(sec2string(audio.seconds, clock));
        }
    } else if (name.contains(QLatin1String(".wav"), Qt::CaseInsensitive)) {
        char clock[32] = " ";
        getWaveDuration(path.constData(), clock);
        text = QString::fromLatin1(clock);
    }
    m_durations[index] = text;
    return text;
}

bool RecFileManager::exceedMaxNum() const
{
    return m_files.size() < maxFiles;
}

void RecFileManager::setCurFileIndex(int i)
{
    if (i >= 0 && i < m_files.size())
        m_curIndex = i;
}

int RecFileManager::getCurFileIndex() const
{
    return m_files.size() - m_curIndex - 1;
}

bool RecFileManager::getCurInfo(QFileInfo &info) const
{
    return getInfoByID(m_curIndex, info);
}

bool RecFileManager::getInfoByID(int index, QFileInfo &info) const
{
    if (index < 0 || index >= m_files.size())
        return false;
    info = m_files.at(index);
    return true;
}

QString RecFileManager::getLatestFile() const
{
    return m_files.isEmpty() ? QString() : m_files.last().fileName();
}

bool RecFileManager::getLatestFile(QFileInfo &info) const
{
    if (m_files.isEmpty())
        return false;
    info = m_files.last();
    return true;
}

void RecFileManager::getInfoList(QVector<QFileInfo> &list) const
{
    list += m_files;
}

const char *RecFileManager::getExtendName()
{
    return ConfigWidget::instance()->getFileFormat() == 0 ? ".mp3" : ".wav";
}

bool RecFileManager::judgeFileTypeByExtendName(const QString &name, const QString &ext) const
{
    return name.contains(ext, Qt::CaseInsensitive) ||
           name.contains(QLatin1String(".wav"), Qt::CaseInsensitive);
}

bool RecFileManager::FindFile(const QString &, QVector<QFileInfo> &list, const char *dir)
{
    const QDir folder(devicePath(QString::fromLocal8Bit(dir)));
    if (!folder.exists())
        return false;
    const QDir::SortFlags order = qstrcmp(dir, "/mnt/mmc/recorder/") == 0
                                      ? QDir::SortFlags(QDir::Time | QDir::Reversed)
                                      : QDir::SortFlags(QDir::Name);
    const QFileInfoList entries = folder.entryInfoList(QDir::Files | QDir::NoDotAndDotDot, order);
    for (const QFileInfo &entry : entries) {
        if (judgeFileTypeByExtendName(entry.fileName(), QStringLiteral(".mp3")))
            list.append(entry);
    }
    return true;
}
