#pragma once

#include <QByteArray>
#include <QString>

// Every absolute path of the device goes through devicePath(): with RECORDER_ROOT set, the
// device's file system lives below that folder (a PC simulation or a test); unset, as on the
// pen, the paths stand as they are.
// A path already below the root is returned as it is, so mapping twice does no harm.
QString devicePath(const QString &absolutePath);

// The inverse: a path of this machine as the pen sees it (for files the pen's programs read).
QString penPath(const QString &path);

// The same on the bytes the POSIX calls take (open, opendir, statfs, execl ...), without any
// codec in between.
QByteArray devicePathBytes(const char *absolutePath);

// A path made safe for system(): single-quoted, inner quotes escaped.
QByteArray shellQuoted(const QString &path);
