#include "xserver.h"

#include <QFile>
#include <QImage>

#include <unistd.h>

void XServer::stop()
{
    // asked politely first, so that the server takes its socket away
    m_xvfb.terminate();
    if (!m_xvfb.waitForFinished(5000))
        m_xvfb.kill();
    m_xvfb.waitForFinished(5000);
    QFile::remove(m_lockFile);
    m_lockFile.clear();
}

bool XServer::start()
{
    // A display of our own, well away from a person's :0. Xvfb started with -displayfd takes no
    // lock file, so the number is claimed here the way X servers do it (a lock file made only if
    // none exists, holding a live pid); a server without a lock on it still holds its socket and
    // makes ours fail to start, and the next number is tried.
    for (int display = 200 + int(getpid() % 300); display < 600; ++display) {
        QFile lock(QStringLiteral("/tmp/.X%1-lock").arg(display));
        if (QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(display)) ||
            !lock.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            continue;
        lock.write(QByteArray::number(qint64(getpid())).rightJustified(10, ' ') + '\n');
        lock.close();
        m_lockFile = lock.fileName();
        m_display = QStringLiteral(":%1").arg(display);
        m_xvfb.setStandardErrorFile(QProcess::nullDevice());
        // -displayfd: the number is written, in one write, once the server takes connections.
        // -noreset: by default the server resets when its last client leaves (the probe below, or
        // xdotool looking for windows before the recorder has any) and drops a client that
        // connected meanwhile: "could not connect to display" on a busy machine.
        m_xvfb.start("Xvfb", {m_display, "-displayfd", "1", "-noreset", "-screen", "0",
                              "640x480x24", "-nolisten", "tcp", "-fbdir", m_frameBuffer.path()});
        if (m_xvfb.waitForReadyRead(30000) && run({"xdpyinfo"}))
            return true;
        stop();
    }
    return false;
}

std::optional<QByteArray> XServer::run(const QStringList &command) const
{
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", m_display);
    tool.setProcessEnvironment(environment);
    tool.setStandardErrorFile(QProcess::nullDevice());
    tool.start(command.first(), command.mid(1));
    // one that hangs is killed and reaped when it goes out of scope
    if (!tool.waitForFinished(20000) || tool.exitStatus() != QProcess::NormalExit ||
        tool.exitCode() != 0)
        return std::nullopt;
    return tool.readAllStandardOutput();
}

QImage XServer::grab() const
{
    // Xvfb keeps its screen in the file as an X window dump; netpbm makes a picture of it
    return QImage::fromData(run({"xwdtopnm", m_frameBuffer.filePath("Xvfb_screen0")}).value_or(""),
                            "PPM");
}

QStringList XServer::visibleWindows(qint64 pid) const
{
    // xdotool ends with 1 when nothing matches: that is an empty list, not a failure
    const QByteArray found =
        run({"xdotool", "search", "--onlyvisible", "--pid", QString::number(pid)}).value_or("");
    return QString(found).split('\n', Qt::SkipEmptyParts);
}

bool XServer::pressKey(qint64 pid, const QString &key) const
{
    const QStringList windows = visibleWindows(pid);
    // without a window manager nobody hands the keyboard to a new window: do it as one would
    return !windows.isEmpty() && run({"xdotool", "windowfocus", "--sync", windows.last()}) &&
           run({"xdotool", "key", key});
}
