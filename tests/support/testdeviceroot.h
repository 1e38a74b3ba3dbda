#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A private device root for one test: a temporary folder with the device's skeleton
// (apps/config, apps/res, mnt/mmc), RECORDER_ROOT pointing at it and the device simulation's
// stand-ins (amixer ...) first on PATH. The previous environment comes back on destruction.
class TestDeviceRoot
{
public:
    TestDeviceRoot();
    ~TestDeviceRoot();
    TestDeviceRoot(const TestDeviceRoot &) = delete;
    TestDeviceRoot &operator=(const TestDeviceRoot &) = delete;

    bool isValid() const { return m_dir.isValid(); }
    QString root() const { return m_dir.path(); }
    // the real location of a device path such as "/apps/config/recconfig.ini"
    QString path(const QString &devicePath) const;

    bool writeFile(const QString &devicePath, const QByteArray &bytes) const;
    QByteArray readFile(const QString &devicePath) const;
    bool exists(const QString &devicePath) const;

    // lays out the scan-and-read engines' resources (devsim/engineres): OCR models, speech
    // data, the scanner stand-in's folder
    bool installEngines() const;

    // command lines the amixer stand-in has received, oldest first
    QStringList amixerCalls() const;

private:
    QTemporaryDir m_dir;
    QByteArray m_oldRoot;
    QByteArray m_oldPath;
    bool m_hadRoot;
};

// Folder for the pictures the tests take of every screen.
QString screensDir();
