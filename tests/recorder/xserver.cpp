#include "xserver.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QImage>

#include <unistd.h>

XServer::~XServer()
{
    stop();
}

void XServer::stop()
{
    // asked politely first, so that the server takes its socket away
    m_xvfb.terminate();
    if (!m_xvfb.waitForFinished(5000)) {
        m_xvfb.kill();
        m_xvfb.waitForFinished(5000);
    }
    if (!m_lockFile.isEmpty())
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
        if (QFile::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(display)))
            continue;
        QFile lock(QStringLiteral("/tmp/.X%1-lock").arg(display));
        if (!lock.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            continue;
        lock.write(QByteArray::number(qint64(getpid())).rightJustified(10, ' ') + '\n');
        lock.close();
        m_lockFile = lock.fileName();
        m_xvfb.setStandardErrorFile(QProcess::nullDevice());
        // -displayfd: the number is written once the server takes connections. -noreset: by
        // default the server resets when its last client leaves (the probe below, or xdotool
        // looking for windows before the recorder has any) and drops a client that connected
        // meanwhile: "could not connect to display" on a busy machine.
        m_xvfb.start(QStringLiteral("Xvfb"),
                     {QStringLiteral(":%1").arg(display), "-displayfd", "1", "-noreset", "-screen",
                      "0", "640x480x24", "-nolisten", "tcp", "-fbdir", m_frameBuffer.path()});
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
        stop();
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
