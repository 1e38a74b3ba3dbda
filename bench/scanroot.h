#pragma once

#include "scanread/configreader.h"
#include "storage/devicepath.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <cstdlib>
#include <unistd.h>
#include <vector>

inline void quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Milliseconds of each side over the rounds, once warm: each side first in every other round, so
// that neither profits from the other's cache.
template<typename Ours, typename Bare>
void interleaved(int rounds, Ours timeOurs, Bare timeBare, std::vector<double> &ours,
                 std::vector<double> &floor)
{
    timeOurs();
    timeBare();
    for (int round = 0; round < rounds; ++round) {
        if (round % 2) {
            ours.push_back(timeOurs());
            floor.push_back(timeBare());
        } else {
            floor.push_back(timeBare());
            ours.push_back(timeOurs());
        }
    }
}

// Tesseract's OpenMP threads spin while they wait: on a shared machine they measure the load
// of the others; one thread, set before the library starts (so the program starts again)
inline void oneOcrThread(char **argv)
{
    if (!qEnvironmentVariableIsSet("OMP_THREAD_LIMIT")) {
        setenv("OMP_THREAD_LIMIT", "1", 1);
        execv("/proc/self/exe", argv);
    }
}

// Helpers of the scan-and-read benches.

// The scan benches' device root (RECORDER_ROOT, set by the caller): the engines' resources, the
// language table and config.ini with the given settings; then the shared reader settings, which
// start the engines. False when the root could not be made.
inline bool makeScanRoot(const QString &root, const QByteArray &config)
{
    QFile file(devicePath("/apps/config/config.ini"));
    if (QProcess::execute(QStringLiteral(ENGINERES), {root}) != 0 ||
        !QDir(root).mkpath("apps/config") ||
        !QFile::copy(DEVSIM_SOURCE_DIR "/scanlanguage.cfg",
                     devicePath("/apps/config/scanlanguage.cfg")) ||
        !file.open(QIODevice::WriteOnly) || file.write(config) != config.size())
        return false;
    file.close();
    ConfigReader::reader = new ConfigReader;
    return true;
}
