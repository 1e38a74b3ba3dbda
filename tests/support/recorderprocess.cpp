#include "recorderprocess.h"

#include <QElapsedTimer>

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

bool RecorderProcess::start(const QStringList &arguments)
{
    m_process.setProcessEnvironment(m_env);
    if (m_wrapper.isEmpty())
        m_process.start(QStringLiteral(RECORDER_BIN), arguments);
    else
        m_process.start(m_wrapper.first(),
                        m_wrapper.mid(1) + QStringList(QStringLiteral(RECORDER_BIN)) + arguments);
    return m_process.waitForStarted(10000);
}

void RecorderProcess::drain()
{
    m_err += m_process.readAllStandardError();
    m_out += m_process.readAllStandardOutput();
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

QByteArray RecorderProcess::standardOutput()
{
    drain();
    return m_out;
}
