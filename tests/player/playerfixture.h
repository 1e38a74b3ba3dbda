#pragma once

#include "recorderprocess.h"
#include "testdeviceroot.h"

// What the player tests share: a device root with the pen's /usr/bin/mplayer (the device
// simulation's stand-in, or a small script that plays a part), and a look at this process's
// children (childProcesses()).
class PlayerFixture
{
public:
    PlayerFixture();
    ~PlayerFixture();

    TestDeviceRoot &root() { return m_root; }
    // The device simulation's stand-in, driving the host's mplayer with a null audio output.
    bool installStandIn();
    // A scripted player (for runs no real player can give on demand): notes its process id in
    // /pids, each file it is given in /played and each command in /commands; a file named *ends*
    // reports one position and ends (exit 0), one named *hangs* never reads its commands, any
    // other runs until "quit".
    bool installScriptedPlayer();
    // recconfig.ini holding these [RecorderSet] lines, and its text.
    bool writeSettings(const QByteArray &lines)
    {
        return m_root.writeFile("/apps/config/recconfig.ini", "[RecorderSet]\n" + lines + '\n');
    }
    QByteArray settings() const { return m_root.readFile("/apps/config/recconfig.ini"); }
    // The lines of a device file of the root.
    QStringList lines(const QString &devicePath) const
    {
        return QString::fromLocal8Bit(m_root.readFile(devicePath)).split('\n', Qt::SkipEmptyParts);
    }

private:
    TestDeviceRoot m_root;
};
