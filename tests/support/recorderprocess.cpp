#include "recorderprocess.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <unistd.h>

RecorderProcess::RecorderProcess(const QString &deviceRoot)
    : m_env(QProcessEnvironment::systemEnvironment())
{
    m_env.insert(QStringLiteral("RECORDER_ROOT"), deviceRoot);
    m_env.insert(QStringLiteral("PATH"),
                 QStringLiteral(DEVSIM_BIN_DIR ":") + m_env.value(QStringLiteral("PATH")));
}

RecorderProcess::~RecorderProcess()
{
    kill();
}

void RecorderProcess::setEnv(const QString &name, const QString &value)
{
    m_env.insert(name, value);
}

void RecorderProcess::showOn(const QString &display)
{
    setEnv(QStringLiteral("DISPLAY"), display);
    setEnv(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    // the screen is painted in software; the GL libraries Qt would load and unload again leave
    // allocations behind that no leak report can place
    setEnv(QStringLiteral("QT_XCB_GL_INTEGRATION"), QStringLiteral("none"));
    // Qt's xcb plugin hands strndup() an X reply that has no terminating zero; in a sanitizer
    // build that would end the program before its window ever shows
    setEnv(QStringLiteral("ASAN_OPTIONS"),
           qgetenv("ASAN_OPTIONS") + QStringLiteral(":strict_string_checks=0"));
}

bool RecorderProcess::start(const QStringList &arguments)
{
    m_process.setProcessEnvironment(m_env);
    m_process.setStandardOutputFile(QProcess::nullDevice()); // its log goes to standard error
    if (m_wrapper.isEmpty())
        m_process.start(m_program, arguments);
    else
        m_process.start(m_wrapper.first(), m_wrapper.mid(1) + QStringList(m_program) + arguments);
    return m_process.waitForStarted(10000);
}

void RecorderProcess::drain()
{
    m_err += m_process.readAllStandardError();
}

bool RecorderProcess::waitForError(const QByteArray &text, int timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        drain();
        if (m_err.contains(text))
            return true;
        if (m_process.state() == QProcess::NotRunning || timer.elapsed() > timeoutMs)
            return false;
        m_process.waitForReadyRead(50);
    }
}

bool RecorderProcess::waitForExit(int timeoutMs)
{
    const bool ended =
        m_process.state() == QProcess::NotRunning || m_process.waitForFinished(timeoutMs);
    drain();
    return ended;
}

void RecorderProcess::kill()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(10000);
    }
    drain();
}

QByteArray RecorderProcess::standardError()
{
    drain();
    return m_err;
}

char processState(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    const QByteArray tail = stat.open(QIODevice::ReadOnly) ? stat.readAll().split(')').last() : "";
    return tail.size() > 1 ? tail.at(1) : 0;
}

QList<qint64> childProcesses()
{
    // "pid (name) state ppid ...": the name may hold blanks, so count from its end
    QList<qint64> children;
    const QByteArray me = QByteArray::number(::getpid());
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile stat(QStringLiteral("/proc/") + entry + QStringLiteral("/stat"));
        const QByteArray line = stat.open(QIODevice::ReadOnly) ? stat.readAll() : QByteArray();
        if (line.mid(line.lastIndexOf(')') + 2).split(' ').value(1) == me)
            children << entry.toLongLong();
    }
    return children;
}
