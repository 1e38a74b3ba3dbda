#include "storage/devicepath.h"

#include <QFile>

namespace {

// the folder below which the pen's file system lives; empty on the pen itself
QString deviceRoot()
{
    const QByteArray bytes = qgetenv("RECORDER_ROOT");
    QString root = QFile::decodeName(bytes);
    // the locale's codec (GBK in the program) cannot carry every byte sequence of a name
    static bool told = false;
    if (!told && QFile::encodeName(root) != bytes) {
        told = true;
        qWarning("RECORDER_ROOT %s cannot be named in the locale's codec: its files are "
                 "out of reach",
                 bytes.constData());
    }
    while (root.endsWith(QLatin1Char('/')))
        root.chop(1);
    return root;
}

} // namespace

QString devicePath(const QString &absolutePath)
{
    const QString root = deviceRoot();
    if (root.isEmpty() || !absolutePath.startsWith(QLatin1Char('/')) ||
        absolutePath.startsWith(root + QLatin1Char('/')))
        return absolutePath;
    return root + absolutePath;
}

QString penPath(const QString &path)
{
    const QString root = deviceRoot();
    if (!root.isEmpty() && path.startsWith(root + QLatin1Char('/')))
        return path.mid(root.size());
    return path;
}

QByteArray devicePathBytes(const char *absolutePath)
{
    // byte for byte: a root that is not valid in the locale's codec must not be decoded and
    // encoded again on the way
    QByteArray root = qgetenv("RECORDER_ROOT");
    while (root.endsWith('/'))
        root.chop(1);
    QByteArray path(absolutePath);
    if (root.isEmpty() || !path.startsWith('/') || path.startsWith(root + '/'))
        return path;
    return root + path;
}

QByteArray shellQuoted(const QString &path)
{
    QByteArray quoted = QFile::encodeName(path);
    quoted.replace('\'', "'\\''");
    return '\'' + quoted + '\'';
}
