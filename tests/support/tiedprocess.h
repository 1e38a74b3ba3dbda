#pragma once

#include <QProcess>

// A child process that cannot outlive the test that started it: when a test is killed (ctest's
// time-out, a crash) its X server or recorder gets SIGKILL too, instead of staying behind and
// holding a display or a device root.
class TiedProcess : public QProcess
{
public:
    using QProcess::QProcess;

protected:
    void setupChildProcess() override;
};
