#include "xserver.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QImage>

#include <unistd.h>

XServer::~XServer()
{
    // asked politely first, so that the server takes its lock file and socket away
    m_xvfb.terminate();
    if (!m_xvfb.waitForFinished(5000)) {
        m_xvfb.kill();
        m_xvfb.waitForFinished(5000);
    }
}

bool XServer::start()
{
    // A display of our own, well away from a person's :0 and from other tests' servers: with
    // -displayfd alone Xvfb takes the lowest free number and leaves no lock file, so servers
    // started side by side could take each other's socket.
    for (int display = 200 + int(getpid() % 300); display < 600; ++display) {
        const QString socket = QStringLiteral("/tmp/.X11-unix/X%1").arg(display);
        if (QFile::exists(socket) || QFile::exists(QStringLiteral("/tmp/.X%1-lock").arg(display)))
            continue;
        m_xvfb.setStandardErrorFile(QProcess::nullDevice());
        // -displayfd: the number is written once the server takes connections
        m_xvfb.start(QStringLiteral("Xvfb"),
                     {QStringLiteral(":%1").arg(display), "-displayfd", "1", "-screen", "0",
                      "640x480x24", "-nolisten", "tcp", "-fbdir", m_frameBuffer.path()});
        const QDeadlineTimer deadline(30000);
        QByteArray announced;
        while (!announced.contains('\n') && m_xvfb.waitForReadyRead(int(deadline.remainingTime())))
            announced += m_xvfb.readAllStandardOutput();
        m_display = QStringLiteral(":%1").arg(display);
        bool answers = false;
        if (announced.contains('\n'))
            run({QStringLiteral("xdpyinfo")}, &answers);
        if (answers)
            return true;
        // taken meanwhile by another server: try the next number
        m_xvfb.kill();
        m_xvfb.waitForFinished(5000);
    }
    return false;
}

QByteArray XServer::run(const QStringList &command, bool *ok) const
{
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), m_display);
    tool.setProcessEnvironment(environment);
    tool.setStandardErrorFile(QProcess::nullDevice());
    tool.start(command.first(), command.mid(1));
    // one that hangs is killed and reaped when it goes out of scope
    const bool finished = tool.waitForFinished(20000);
    if (ok)
        *ok = finished && tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0;
    return tool.readAllStandardOutput();
}

QImage XServer::grab() const
{
    // Xvfb keeps its screen in the file as an X window dump; netpbm makes a picture of it
    return QImage::fromData(run({"xwdtopnm", m_frameBuffer.filePath("Xvfb_screen0")}), "PPM");
}

QStringList XServer::visibleWindows(qint64 pid) const
{
    // xdotool ends with 1 when nothing matches: that is an empty list, not a failure
    return QString::fromLatin1(
               run({"xdotool", "search", "--onlyvisible", "--pid", QString::number(pid)}))
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool XServer::pressKey(qint64 pid, const QString &key) const
{
    const QStringList windows = visibleWindows(pid);
    bool done = !windows.isEmpty();
    // without a window manager nobody hands the keyboard to a new window: do it as one would
    if (done)
        run({"xdotool", "windowfocus", "--sync", windows.last()}, &done);
    if (done)
        run({"xdotool", "key", key}, &done);
    return done;
}
