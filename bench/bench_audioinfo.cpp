// getaudioinfo() on one-hour files beside a bare libmad header walk over the same mapped file.
#include "mp3fixtures.h"
#include "storage/audioinfo.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <mad.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// the floor: map, walk every header libmad finds, unmap
long bareWalk(const char *path)
{
    const int fd = ::open(path, O_RDONLY);
    struct stat st;
    ::fstat(fd, &st);
    void *map = ::mmap(nullptr, size_t(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    mad_stream stream;
    mad_header header;
    mad_stream_init(&stream);
    mad_header_init(&header);
    mad_stream_buffer(&stream, static_cast<const unsigned char *>(map), size_t(st.st_size));
    long frames = 0;
    for (;;) {
        if (mad_header_decode(&header, &stream) == -1) {
            if (MAD_RECOVERABLE(stream.error))
                continue;
            break;
        }
        ++frames;
    }
    mad_stream_finish(&stream);
    ::munmap(map, size_t(st.st_size));
    ::close(fd);
    return frames;
}

long xingFrames(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray head = f.read(200);
    const int at = head.indexOf("Xing") >= 0 ? head.indexOf("Xing") : head.indexOf("Info");
    if (at < 0)
        return -1;
    const auto *p = reinterpret_cast<const unsigned char *>(head.constData() + at + 8);
    return long(p[0]) << 24 | long(p[1]) << 16 | long(p[2]) << 8 | long(p[3]);
}

} // namespace

int main()
{
    const Mp3Fixtures files = makeMp3Fixtures();
    if (!files.ok) {
        std::printf("BENCH audioinfo ratio=nan goal<=1.5\n");
        return 1;
    }
    const long stated = xingFrames(files.vbrXing);
    struct Case
    {
        const char *label;
        QString path;
        long long expectedMs;
    };
    const long cbr128Frames = QFile(files.cbr128).size() / 384;
    const long cbr64Frames = QFile(files.cbr64).size() / 192;
    const Case cases[] = {
        {"cbr-24k-128k", files.cbr128, cbr128Frames * 24LL},
        {"cbr-24k-64k", files.cbr64, cbr64Frames * 24LL},
        {"vbr-v2-xing", files.vbrXing, stated * 1152LL * 1000 / 44100},
        {"vbr-v2-bare", files.vbrBare, stated * 1152LL * 1000 / 44100},
    };
    double worst = 0;
    bool exact = true;
    std::printf("%-14s %10s %10s %8s %12s %12s\n", "file", "ours ms", "floor ms", "ratio",
                "seconds", "expected");
    for (const Case &c : cases) {
        const QByteArray path = QFile::encodeName(c.path);
        qint64 ours = INT64_MAX;
        qint64 floor = INT64_MAX;
        audioinfo info;
        for (int round = 0; round < 5; ++round) {
            QElapsedTimer t;
            t.start();
            getaudioinfo(path.constData(), &info);
            ours = std::min(ours, t.nsecsElapsed());
            t.restart();
            bareWalk(path.constData());
            floor = std::min(floor, t.nsecsElapsed());
        }
        const double ratio = double(ours) / double(floor);
        const bool right = info.seconds == int(c.expectedMs / 1000);
        exact = exact && right;
        // the file with a frame count is not walked at all: it is measured against soxi
        if (QString::fromLatin1(c.label) != QLatin1String("vbr-v2-xing"))
            worst = std::max(worst, ratio);
        std::printf("%-14s %10.2f %10.2f %8.2f %12d %12lld%s\n", c.label, ours / 1e6, floor / 1e6,
                    ratio, info.seconds, c.expectedMs / 1000, right ? "" : "  WRONG");
    }
    std::printf("all exact: %s\n", exact ? "yes" : "no");
    std::printf("BENCH audioinfo ratio=%.2f goal<=1.5\n", exact ? worst : 99.0);
    return exact ? 0 : 1;
}
