#include "shelllistener.h"

#include <QDeadlineTimer>

ShellListener::~ShellListener()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

bool ShellListener::start(const QString &channel, int timeoutMs)
{
    m_process.start(QStringLiteral(QCOP_BIN), {QStringLiteral("listen"), channel});
    if (!m_process.waitForStarted(10000))
        return false;
    const QDeadlineTimer deadline(timeoutMs);
    QByteArray said;
    while (!said.contains("qcop: listening")) {
        if (m_process.state() == QProcess::NotRunning || deadline.hasExpired())
            return false;
        m_process.waitForReadyRead(100);
        said += m_process.readAllStandardError();
    }
    return true;
}

QStringList ShellListener::lines()
{
    m_heard += m_process.readAllStandardOutput();
    return QString::fromLocal8Bit(m_heard).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}
