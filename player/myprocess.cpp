#include "player/myprocess.h"

#include <cstring>

MyProcess::MyProcess(QObject *parent) : QProcess(parent)
{
    setProcessChannelMode(QProcess::MergedChannels);
    connect(this, &QProcess::readyReadStandardOutput, this, &MyProcess::readStdOut);
    connect(this, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &MyProcess::procFinished);
}

void MyProcess::addArgument(const QString &argument)
{
    if (m_program.isEmpty())
        m_program = argument;
    else
        m_arguments.append(argument);
}

void MyProcess::clearArguments()
{
    m_program = QString();
    m_arguments.clear();
}

QStringList MyProcess::arguments() const
{
    QStringList all;
    all.reserve(m_arguments.size() + 1);
    all.append(m_program);
    all.append(m_arguments);
    return all;
}

QStringList MyProcess::splitArguments(const QString &text)
{
    QStringList pieces;
    if (text.isEmpty())
        return pieces;
    bool inQuotes = false;
    int pieceStart = 0;
    for (int n = 0; n < text.size(); ++n) {
        const QChar c = text.at(n);
        if (c != QLatin1Char(' ') || inQuotes) {
            if (c == QLatin1Char('"'))
                inQuotes = !inQuotes;
        } else {
            pieces.append(text.mid(pieceStart, n - pieceStart));
            pieceStart = n + 1;
        }
    }
    pieces.append(text.mid(pieceStart));
    return pieces;
}

void MyProcess::start()
{
    m_remainder.clear();
    QProcess::start(m_program, m_arguments, QIODevice::ReadWrite);
}

bool MyProcess::isRunning() const
{
    return state() == QProcess::Running;
}

int MyProcess::canReadLine(const QByteArray &data, int from)
{
    // one pass that stops at whichever break comes first: the smaller of the two positions
    // without scanning a whole buffer of progress lines for a line feed that is not there
    const char *bytes = data.constData();
    for (int n = qMax(from, 0); n < data.size(); ++n) {
        if (bytes[n] == '\n' || bytes[n] == '\r')
            return n;
    }
    return -1;
}

void MyProcess::genericRead(const QByteArray &chunk)
{
    // most chunks start a line of their own: no copy then
    const QByteArray data = m_remainder.isEmpty() ? chunk : m_remainder + chunk;
    int start = 0;
    int pos = canReadLine(data, 0);
    while (pos != -1) {
        // one line buffer reused from line to line: a receiver that keeps a line holds its
        // own copy, since the resize below then detaches
        m_line.resize(pos - start);
        std::memcpy(m_line.data(), data.constData() + start, size_t(pos - start));
        emit lineAvailable(m_line);
        start = pos + 1;
        pos = canReadLine(data, start);
    }
    m_remainder = data.mid(start);
}

void MyProcess::readStdOut()
{
    genericRead(readAllStandardOutput());
}

void MyProcess::procFinished()
{
    // the last bytes may come with the exit; a line without its break is dropped
    if (bytesAvailable() > 0)
        readStdOut();
}
