#include "testdeviceroot.h"

#include "widgets/penfonts.h"

#include <QDir>
#include <QGuiApplication>
#include <QProcess>
#include <QTextCodec>

#include <sys/stat.h>

TestDeviceRoot::TestDeviceRoot(const QByteArray &folderName)
{
    // (the temporary folder itself is there already)
    m_root += folderName.isEmpty() ? QByteArray() : '/' + folderName;
    ::mkdir(m_root.constData(), 0755);
    for (const char *sub :
         {"apps/config", "apps/res/pics", "apps/res/fonts", "mnt/mmc", "mnt/mtdblock3"})
        QDir(root()).mkpath(sub);
    qputenv("RECORDER_ROOT", m_root);
    qputenv("PATH", DEVSIM_BIN_DIR ":" + qgetenv("PATH"));
    // the pen's fonts as mkroot lays them out, taken up by the test's widgets as by the program
    const QDir fonts(DEVSIM_FONTS_DIR);
    for (const QString &font : fonts.entryList(QDir::Files))
        QFile::link(fonts.filePath(font), path("/apps/res/fonts/") + font);
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        loadPenFonts();
}

TestDeviceRoot::~TestDeviceRoot()
{
    m_oldRoot.isNull() ? qunsetenv("RECORDER_ROOT") : qputenv("RECORDER_ROOT", m_oldRoot);
    qputenv("PATH", m_oldPath);
}

bool TestDeviceRoot::writeFile(const QString &devicePath, const QByteArray &bytes) const
{
    QDir().mkpath(QFileInfo(path(devicePath)).absolutePath());
    QFile file(path(devicePath));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray TestDeviceRoot::readFile(const QString &devicePath) const
{
    QFile file(path(devicePath));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TestDeviceRoot::installEngines() const
{
    return QProcess::execute(DEVSIM_SOURCE_DIR "/engineres", {root()}) == 0;
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
    const QString text = QTextCodec::codecForName("UTF-16LE")->toUnicode(bytes.mid(2));
    return bytes.startsWith("\xff\xfe") ? text.split('\n', Qt::SkipEmptyParts) : QStringList();
}

QString screensDir()
{
    QDir().mkpath(SCREENS_DIR);
    return SCREENS_DIR;
}
