#include "testdeviceroot.h"

#include "widgets/penfonts.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>

#include <sys/stat.h>

TestDeviceRoot::TestDeviceRoot() : TestDeviceRoot(QByteArray()) {}

TestDeviceRoot::TestDeviceRoot(const QByteArray &folderName)
    : m_root(QFile::encodeName(m_dir.path())), m_oldRoot(qgetenv("RECORDER_ROOT")),
      m_oldPath(qgetenv("PATH")), m_hadRoot(qEnvironmentVariableIsSet("RECORDER_ROOT"))
{
    if (!folderName.isEmpty()) {
        m_root += '/' + folderName;
        ::mkdir(m_root.constData(), 0755);
    }
    const QDir dir(root());
    for (const char *sub :
         {"apps/config", "apps/res/pics", "apps/res/fonts", "mnt/mmc", "mnt/mtdblock3"})
        dir.mkpath(QLatin1String(sub));
    qputenv("RECORDER_ROOT", m_root);
    qputenv("PATH", QByteArray(DEVSIM_BIN_DIR) + ':' + m_oldPath);
    // the pen's fonts as mkroot lays them out, taken up by the test's widgets as by the program
    const QDir fonts(QStringLiteral(DEVSIM_FONTS_DIR));
    for (const QString &font : fonts.entryList(QDir::Files))
        QFile::link(fonts.filePath(font), path("/apps/res/fonts/") + font);
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        loadPenFonts();
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
    return root() + devicePath;
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

bool TestDeviceRoot::installEncoders(const QString &standIn) const
{
    bool ok = QDir().mkpath(path("/mnt/mmc/e_Recorder")) && QDir().mkpath(path("/usr/sbin"));
    for (const QString encoder : {"shine", "record2wav"}) {
        QFile::remove(path("/usr/sbin/" + encoder));
        ok = ok && QFile::copy(standIn.isEmpty() ? DEVSIM_BIN_DIR "/" + encoder : standIn,
                               path("/usr/sbin/" + encoder));
    }
    return ok;
}

bool TestDeviceRoot::installLanguageTable() const
{
    QFile::remove(path("/apps/config/scanlanguage.cfg"));
    return QFile::copy(DEVSIM_SOURCE_DIR "/scanlanguage.cfg",
                       path("/apps/config/scanlanguage.cfg"));
}

QStringList TestDeviceRoot::recordingList() const
{
    const QByteArray bytes = readFile("/apps/config/reclist.ini");
    if (!bytes.startsWith("\xff\xfe"))
        return {};
    return QString::fromUtf16(reinterpret_cast<const char16_t *>(bytes.constData() + 2),
                              (bytes.size() - 2) / 2)
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
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
