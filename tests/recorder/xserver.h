#pragma once

#include <QByteArray>
#include <QImage>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A private X server (Xvfb) for driving the recorder as a user would: keys through xdotool,
// pictures straight from the server's frame buffer. The server is killed and reaped on
// destruction, whatever happened in between.
class XServer
{
public:
    XServer();
    ~XServer();
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    // Starts Xvfb on the first free display from firstDisplay on and waits until it takes
    // connections; false when no server could be started within timeoutMs.
    bool start(int firstDisplay = 90, int timeoutMs = 30000);
    // ":93"; empty until started
    QString display() const { return m_display; }

    // The whole screen as it stands; a null image when the frame buffer cannot be read.
    QImage grab() const;
    // The program's mapped windows, bottom of the stack first.
    QStringList visibleWindows(qint64 pid) const;
    // Gives the program's topmost window the keyboard and presses one key ("Return", "F12").
    bool pressKey(qint64 pid, const QString &key) const;

private:
    bool tryDisplay(int number, int timeoutMs);
    bool runTool(const QStringList &command, QByteArray *output = nullptr) const;

    QTemporaryDir m_frameBuffer;
    QProcess m_xvfb;
    QString m_display;
};
