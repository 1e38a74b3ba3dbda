#pragma once

#include "tiedprocess.h"

#include <QTemporaryDir>

#include <optional>

class QImage;

// A private X server (Xvfb) for driving the recorder as a user would: keys through xdotool,
// pictures from the server's frame buffer. The server is ended and reaped with this object.
class XServer
{
public:
    ~XServer() { stop(); }
    // Starts Xvfb on a display it finds free itself; false when none came up in time.
    bool start();
    QString display() const { return m_display; }
    // The whole screen as it stands; a null image when it cannot be read.
    QImage grab() const;
    // The program's mapped windows, bottom of the stack first.
    QStringList visibleWindows(qint64 pid) const;
    // Gives the program's topmost window the keyboard and presses one key ("Return", "F12").
    bool pressKey(qint64 pid, const QString &key) const;

private:
    // what the tool run on this display to its end wrote, when it ended with 0
    std::optional<QByteArray> run(const QStringList &command) const;
    void stop();

    QTemporaryDir m_frameBuffer;
    TiedProcess m_xvfb;
    QString m_display;
    QString m_lockFile;
};
