#include "testdeviceroot.h"

#include <QDir>
#include <QFile>
#include <QProcess>

TestDeviceRoot::TestDeviceRoot()
    : m_oldRoot(qgetenv("RECORDER_ROOT")), m_oldPath(qgetenv("PATH")),
      m_hadRoot(qEnvironmentVariableIsSet("RECORDER_ROOT"))
{
    const QDir dir(m_dir.path());
    for (const char *sub : {"apps/config", "apps/res/pics", "mnt/mmc", "mnt/mtdblock3"})
        dir.mkpath(QLatin1String(sub));
    qputenv("RECORDER_ROOT", QFile::encodeName(m_dir.path()));
    qputenv("PATH", QByteArray(DEVSIM_BIN_DIR) + ':' + m_oldPath);
}

TestDeviceRoot::~TestDeviceRoot()
{
    if (m_hadRoot)
        qputenv("RECORDER_ROOT", m_oldRoot);
    else
        qunsetenv("RECORDER_ROOT");
    qputenv("PATH", m_oldPath);
}

QString TestDeviceRoot::path(const QString &devicePath) const
{
    return m_dir.path() + devicePath;
}

bool TestDeviceRoot::writeFile(const QString &devicePath, const QByteArray &bytes) const
{
    const QString real = path(devicePath);
    QDir().mkpath(QFileInfo(real).absolutePath());
    QFile file(real);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

QByteArray TestDeviceRoot::readFile(const QString &devicePath) const
{
    QFile file(path(devicePath));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TestDeviceRoot::exists(const QString &devicePath) const
{
    return QFileInfo::exists(path(devicePath));
}

bool TestDeviceRoot::installEngines() const
{
    return QProcess::execute(QStringLiteral(DEVSIM_SOURCE_DIR "/engineres"), {root()}) == 0;
}

QStringList TestDeviceRoot::amixerCalls() const
{
    const QString log = QString::fromLocal8Bit(readFile(QStringLiteral("/amixer.log")));
    return log.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QString screensDir()
{
    QDir().mkpath(QStringLiteral(SCREENS_DIR));
    return QStringLiteral(SCREENS_DIR);
}
