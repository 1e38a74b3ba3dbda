#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

// The device shell's ear: `qcop listen` on one channel, run for as long as this object lives.
class ShellListener
{
public:
    ShellListener() = default;
    ~ShellListener();
    ShellListener(const ShellListener &) = delete;
    ShellListener &operator=(const ShellListener &) = delete;

    // Starts listening and returns once no message can be missed any more.
    bool start(const QString &channel, int timeoutMs = 20000);
    // "CHANNEL MESSAGE DATA" lines heard so far, oldest first
    QStringList lines();
    int count(const QString &line) { return lines().count(line); }

private:
    QProcess m_process;
    QByteArray m_heard;
};
