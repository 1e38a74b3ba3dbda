#include "storage/tracelog.h"

#include <QTime>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

const char *colourOf(TraceLevel level)
{
    switch (level) {
    case TraceLevel::Debug:
        return "32";
    case TraceLevel::Info:
        return "36";
    case TraceLevel::Warning:
        return "33";
    }
    return "0";
}

const char *tagOf(TraceLevel level)
{
    switch (level) {
    case TraceLevel::Debug:
        return "D/LOG";
    case TraceLevel::Info:
        return "I/LOG";
    case TraceLevel::Warning:
        return "W/LOG";
    }
    return "?/LOG";
}

const char *baseName(const char *path)
{
    const char *slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

} // namespace

QByteArray traceLine(TraceLevel level, const QTime &time, long pid, long tid, const char *file,
                     int line, const char *function, const QByteArray &text)
{
    char head[512];
    std::snprintf(head, sizeof head,
                  "\033[%sm[%02d:%02d:%02d PID:%ld TID:%ld %s]  [%s: %d : (%s)]  ", colourOf(level),
                  time.hour(), time.minute(), time.second(), pid, tid, tagOf(level), baseName(file),
                  line, function);
    return QByteArray(head) + text + "\033[0m\n";
}

void traceLog(TraceLevel level, const char *file, int line, const char *function,
              const char *format, ...)
{
    char text[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);

    const QByteArray out =
        traceLine(level, QTime::currentTime(), static_cast<long>(getpid()),
                  static_cast<long>(syscall(SYS_gettid)), file, line, function, QByteArray(text));
    // one write per line, so that lines of different threads do not interleave
    std::fwrite(out.constData(), 1, static_cast<size_t>(out.size()), stderr);
    std::fflush(stderr);
}
