#pragma once

#include "tiedprocess.h"

#include <QMap>

// The installed-style recorder program run as a user's shell would run it, in a given device root.
class RecorderProcess
{
public:
    explicit RecorderProcess(const QString &deviceRoot);
    ~RecorderProcess() { kill(); }

    void setEnv(const QString &name, const QString &value) { m_env.insert(name, value); }
    // drawn on that X display, through xcb and in software, as on a person's desktop
    void showOn(const QString &display);
    // a command the program is started through, such as setpriv with its options
    void setWrapper(const QStringList &command) { m_wrapper = command; }
    // another program than the recorder, such as an installed one of a device root
    void setProgram(const QString &program) { m_program = program; }
    bool start(const QStringList &arguments = {});
    // Waits until standard error holds the text; false on time-out or when the program ended.
    bool waitForError(const QByteArray &text, int timeoutMs = 15000);
    bool waitForExit(int timeoutMs = 15000)
    {
        return !isRunning() || m_process.waitForFinished(timeoutMs);
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(10000);
    }

    // all the program has written to standard error so far
    QByteArray standardError() { return m_err += m_process.readAllStandardError(); }
    int exitCode() const { return m_process.exitCode(); }
    QProcess::ExitStatus exitStatus() const { return m_process.exitStatus(); }
    qint64 pid() const { return m_process.processId(); }
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }

private:
    TiedProcess m_process;
    QStringList m_wrapper;
    QString m_program = QStringLiteral(RECORDER_BIN);
    QProcessEnvironment m_env = QProcessEnvironment::systemEnvironment();
    QByteArray m_err;
};

// The state letter of /proc/<pid>/stat ('T' stopped by a signal, 'S' sleeping, 'Z' a zombie),
// 0 when there is no such process.
char processState(qint64 pid);

// Process ids of this process's children that still exist (zombies included).
QList<qint64> childProcesses();

// The encoders running from a device root's usr/sbin with their command lines, by pid, found by
// their executable: a zombie has none any more, it no longer records.
QMap<qint64, QString> encoders(const QString &deviceRoot);
