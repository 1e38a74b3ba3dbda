#include "storage/timetext.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace {

struct FileCloser
{
    void operator()(FILE *file) const { std::fclose(file); }
};

uint32_t littleEndian32(const unsigned char *p)
{
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

} // namespace

char *sec2string(long seconds, char *out)
{
    if (seconds < 0) {
        std::sprintf(out, "%02d:%02d", 0, 0);
        return out;
    }
    const long hours = seconds / 3600;
    const int minutes = static_cast<int>(seconds / 60 % 60);
    const int rest = static_cast<int>(seconds % 60);
    if (hours != 0)
        std::sprintf(out, "%02d:%02d:%02d", static_cast<int>(hours), minutes, rest);
    else
        std::sprintf(out, "%02d:%02d", minutes, rest);
    return out;
}

int getWaveDuration(const char *path, char *out)
{
    if (!path || !out) {
        std::puts("NULL string");
        return 0;
    }
    struct stat status;
    const off_t fileSize = ::stat(path, &status) == 0 ? status.st_size : 0;
    std::unique_ptr<FILE, FileCloser> file(std::fopen(path, "rb"));
    if (!file) {
        std::strcpy(out, " ");
        std::printf("Open wave file %s failed!\n", path);
        return -1;
    }
    unsigned char header[44] = {};
    const bool whole = std::fread(header, 1, sizeof header, file.get()) == sizeof header;
    const unsigned format = header[20] | header[21] << 8;
    if (!whole || std::memcmp(header, "RIFF", 4) != 0 || std::memcmp(header + 8, "WAVE", 4) != 0 ||
        std::memcmp(header + 12, "fmt ", 4) != 0 || std::memcmp(header + 36, "data", 4) != 0 ||
        format != 1) {
        std::puts("not wav file");
        std::strcpy(out, " ");
        return 0;
    }
    const uint32_t byteRate = littleEndian32(header + 28);
    // the data chunk's size field is not trusted: an encoder killed mid-way leaves it stale
    const uint32_t payload = fileSize > 44 ? static_cast<uint32_t>(fileSize - 44) : 0;
    const uint32_t seconds = byteRate ? payload / byteRate : 0;
    if (seconds > 0)
        sec2string(static_cast<long>(seconds), out);
    else
        std::strcpy(out, " ");
    return 0;
}
