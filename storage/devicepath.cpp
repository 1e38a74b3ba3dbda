#include "storage/devicepath.h"

#include <QFile>

QString devicePath(const QString &absolutePath)
{
    const QByteArray root = qgetenv("RECORDER_ROOT");
    if (root.isEmpty() || !absolutePath.startsWith(QLatin1Char('/')))
        return absolutePath;
    QString mapped = QFile::decodeName(root);
    while (mapped.endsWith(QLatin1Char('/')))
        mapped.chop(1);
    return mapped + absolutePath;
}

QByteArray devicePathBytes(const char *absolutePath)
{
    return QFile::encodeName(devicePath(QFile::decodeName(absolutePath)));
}

QByteArray shellQuoted(const QString &path)
{
    QByteArray quoted = QFile::encodeName(path);
    quoted.replace('\'', "'\\''");
    return '\'' + quoted + '\'';
}
