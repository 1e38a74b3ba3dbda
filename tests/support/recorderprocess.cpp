#include "recorderprocess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>

#include <unistd.h>

RecorderProcess::RecorderProcess(const QString &deviceRoot)
{
    setEnv("RECORDER_ROOT", deviceRoot);
    setEnv("PATH", DEVSIM_BIN_DIR ":" + m_env.value("PATH"));
}

void RecorderProcess::showOn(const QString &display)
{
    setEnv("DISPLAY", display);
    setEnv("QT_QPA_PLATFORM", "xcb");
    // the screen is painted in software; the GL libraries Qt would load and unload again leave
    // allocations behind that no leak report can place
    setEnv("QT_XCB_GL_INTEGRATION", "none");
    // Qt's xcb plugin hands strndup() an X reply that has no terminating zero; in a sanitizer
    // build that would end the program before its window ever shows
    setEnv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":strict_string_checks=0");
}

bool RecorderProcess::start(const QStringList &arguments)
{
    m_process.setProcessEnvironment(m_env);
    m_process.setStandardOutputFile(QProcess::nullDevice()); // its log goes to standard error
    const QStringList command = m_wrapper + QStringList(m_program) + arguments;
    m_process.start(command.first(), command.mid(1));
    return m_process.waitForStarted(10000);
}

bool RecorderProcess::waitForError(const QByteArray &text, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!standardError().contains(text)) {
        if (!isRunning() || deadline.hasExpired())
            return false;
        m_process.waitForReadyRead(50);
    }
    return true;
}

namespace {

// "pid (name) state ppid ...": the name may hold blanks, so count from its end
QList<QByteArray> statFields(const QString &pid)
{
    QFile stat("/proc/" + pid + "/stat");
    const QByteArray line = stat.open(QIODevice::ReadOnly) ? stat.readAll() : QByteArray();
    return line.mid(line.lastIndexOf(')') + 2).split(' ');
}

} // namespace

char processState(qint64 pid)
{
    return *statFields(QString::number(pid)).value(0).constData();
}

QMap<qint64, QString> encoders(const QString &deviceRoot)
{
    const QString sbin = QDir(deviceRoot + "/usr/sbin").canonicalPath() + '/';
    QMap<qint64, QString> found;
    for (const QString &pid : QDir("/proc").entryList(QDir::Dirs)) {
        QFile arguments("/proc/" + pid + "/cmdline");
        if (QFile::symLinkTarget("/proc/" + pid + "/exe").startsWith(sbin) &&
            arguments.open(QIODevice::ReadOnly))
            found.insert(pid.toLongLong(), arguments.readAll().replace('\0', ' ').trimmed());
    }
    return found;
}

QList<qint64> childProcesses()
{
    QList<qint64> children;
    for (const QString &entry : QDir("/proc").entryList(QDir::Dirs)) {
        if (statFields(entry).value(1) == QByteArray::number(::getpid()))
            children << entry.toLongLong();
    }
    return children;
}
