#pragma once

#include <QByteArray>

class QTime;

enum class TraceLevel { Debug, Info, Warning };

// One coloured trace line on standard error:
// ESC[<colour>m[hh:mm:ss PID:<pid> TID:<tid> <tag>]  [<file>: <line> : (<function>)]  <text>ESC[0m
void traceLog(TraceLevel level, const char *file, int line, const char *function,
              const char *format, ...) __attribute__((format(printf, 5, 6)));

// The line traceLog() writes, built from explicit parts so its layout can be checked.
QByteArray traceLine(TraceLevel level, const QTime &time, long pid, long tid, const char *file,
                     int line, const char *function, const QByteArray &text);

#define LOGD(...) ::traceLog(TraceLevel::Debug, __FILE__, __LINE__, __func__, __VA_ARGS__)
#define LOGI(...) ::traceLog(TraceLevel::Info, __FILE__, __LINE__, __func__, __VA_ARGS__)
#define LOGW(...) ::traceLog(TraceLevel::Warning, __FILE__, __LINE__, __func__, __VA_ARGS__)
