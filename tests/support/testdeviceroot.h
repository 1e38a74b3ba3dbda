#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A private device root for one test: a temporary folder with the device's skeleton
// (apps/config, apps/res, mnt/mmc), RECORDER_ROOT pointing at it and the device simulation's
// stand-ins (amixer ...) first on PATH, the stand-ins for the pen's fonts in apps/res/fonts (taken
// up at once when a GUI application runs). The previous environment comes back on destruction.
class TestDeviceRoot
{
public:
    // the root in a folder of that name (raw bytes, as a shell would make it) in the temporary one
    explicit TestDeviceRoot(const QByteArray &folderName = {});
    ~TestDeviceRoot();

    QString root() const { return QFile::decodeName(m_root); }
    QByteArray rootBytes() const { return m_root; }
    // the real location of a device path such as "/apps/config/recconfig.ini"
    QString path(const QString &devicePath) const { return root() + devicePath; }

    bool writeFile(const QString &devicePath, const QByteArray &bytes) const;
    QByteArray readFile(const QString &devicePath) const;
    bool exists(const QString &devicePath) const { return QFileInfo::exists(path(devicePath)); }

    // lays out the scan-and-read engines' resources (devsim/engineres): OCR models, speech
    // data, the scanner stand-in's folder
    bool installEngines() const;
    // the device's encoders in /usr/sbin (shine and record2wav: the simulation's, or both the
    // given stand-in) and the recordings folder
    bool installEncoders(const QString &standIn = QString()) const;
    // the simulation's sample language table, eight languages, as /apps/config/scanlanguage.cfg
    bool installLanguageTable() const;

    // the recording list as the program writes it (FF FE, then UTF-16LE lines); empty without
    // the byte-order mark
    QStringList recordingList() const;

    // command lines the amixer stand-in has received, oldest first
    QStringList amixerCalls() const
    {
        return QString(readFile("/amixer.log")).split('\n', Qt::SkipEmptyParts);
    }

private:
    // as they were; a null root: none was set
    const QByteArray m_oldRoot = qgetenv("RECORDER_ROOT");
    const QByteArray m_oldPath = qgetenv("PATH");
    QTemporaryDir m_dir;
    QByteArray m_root = QFile::encodeName(m_dir.path());
};

// Folder for the pictures the tests take of every screen.
QString screensDir();
