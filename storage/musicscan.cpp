#include "storage/musicscan.h"

#include "storage/devicepath.h"

#include <QMutex>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <pthread.h>
#include <strings.h>
#include <vector>

QMutex mutexScan;

namespace {

struct FileCloser
{
    void operator()(FILE *file) const { std::fclose(file); }
};

struct DirCloser
{
    void operator()(DIR *dir) const { ::closedir(dir); }
};

// "x.mp3", "x.MP3" and "x.mp3x" are music; "x.mp2", "mp3" and "x." are not
bool isMusicName(const char *name)
{
    const char *dot = std::strrchr(name, '.');
    return dot && ::strncasecmp(dot + 1, "mp3", 3) == 0;
}

// devicePrefix is what the list holds (the path on the pen), whatever the folder is here
void collect(const char *deviceDir, const char *devicePrefix, std::vector<std::string> &list)
{
    std::unique_ptr<DIR, DirCloser> dir(::opendir(devicePathBytes(deviceDir).constData()));
    if (!dir) {
        std::fprintf(stderr, "Cannot open directory:%s\n", deviceDir);
        return;
    }
    const size_t prefixLength = std::strlen(devicePrefix);
    while (const dirent *entry = ::readdir(dir.get())) {
        const char *name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0 || !isMusicName(name))
            continue;
        std::string line;
        const size_t nameLength = std::strlen(name);
        line.reserve(prefixLength + nameLength + 1);
        line.append(devicePrefix, prefixLength).append(name, nameLength).push_back('\n');
        list.push_back(std::move(line));
    }
}

} // namespace

bool lessthanbyname(const std::string &a, const std::string &b)
{
    return std::strcmp(a.c_str(), b.c_str()) > 0;
}

void scanmusic()
{
    std::unique_ptr<FILE, FileCloser> out(
        std::fopen(devicePathBytes("/apps/config/musiclist.txt").constData(), "wb"));
    if (!out) {
        std::puts("open fiel musiclist.txt faile");
        return;
    }
    std::vector<std::string> list;
    collect("/mnt/mmc/", "/mnt/mmc/", list);
    collect("/mnt/mmc/e_Music", "/mnt/mmc/e_Music/", list);
    std::sort(list.begin(), list.end(), lessthanbyname);
    for (const std::string &line : list)
        std::fputs(line.c_str(), out.get());
}

void *scanthread(void *)
{
    scanmusic();
    pthread_exit(nullptr);
}
