#include "storage/musicscan.h"

#include "storage/devicepath.h"

#include <QMutex>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <sched.h>
#include <strings.h>
#include <sys/stat.h>
#include <vector>

QMutex mutexScan;

namespace {

const char rootPrefix[] = "/mnt/mmc/";
// what a music entry's line holds after rootPrefix
const char musicFolder[] = "e_Music/";

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

// The music names of one folder, each followed by its line's "\n" and a NUL, end to end in one
// buffer: one allocation for thousands of songs rather than one each, and a name compares with
// strcmp exactly as its whole line does after the folder's shared prefix.
struct Listing
{
    std::string names;
    std::vector<uint32_t> starts;

    const char *at(size_t i) const { return names.data() + starts[i]; }
};

void collect(const char *deviceDir, Listing &listing)
{
    std::unique_ptr<DIR, DirCloser> dir(::opendir(devicePathBytes(deviceDir).constData()));
    if (!dir) {
        std::fprintf(stderr, "Cannot open directory:%s\n", deviceDir);
        return;
    }
    // a folder's size on the card bounds the bytes of its names: one allocation, never copied,
    // and the part left unused is never touched (capped: a file system may report anything)
    struct stat folder
    {
    };
    if (::fstat(::dirfd(dir.get()), &folder) == 0 && folder.st_size > 0)
        listing.names.reserve(size_t(std::min<off_t>(folder.st_size, 16 << 20)));
    while (const dirent *entry = ::readdir(dir.get())) {
        const char *name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0 || !isMusicName(name))
            continue;
        listing.starts.push_back(uint32_t(listing.names.size()));
        listing.names.append(name).append("\n", 2);
    }
}

// the list's order within one folder: the shared prefix decides nothing
void sortDescending(Listing &listing)
{
    const char *names = listing.names.data();
    std::sort(listing.starts.begin(), listing.starts.end(),
              [names](uint32_t a, uint32_t b) { return std::strcmp(names + a, names + b) > 0; });
}

// strcmp of a root line against a music line, both without rootPrefix
int compareRootToMusic(const char *rootName, const char *musicName)
{
    for (const char *folder = musicFolder; *folder; ++folder, ++rootName) {
        if (*rootName != *folder)
            return int(static_cast<unsigned char>(*rootName)) -
                   int(static_cast<unsigned char>(*folder));
    }
    return std::strcmp(rootName, musicName);
}

void writeLine(FILE *out, const char *prefix, const char *name)
{
    std::fputs(prefix, out);
    std::fputs(name, out);
}

// Start-up's scan thread: its idle priority until the window has shown, and its end.
struct ScanThread
{
    std::mutex lock;
    std::condition_variable ended;
    pthread_t thread{};
    bool running = false;
    bool windowShown = false;
};

// never freed, like the process's other singletons: the thread may outlive main's frame
ScanThread &scanThread()
{
    static ScanThread *const state = new ScanThread;
    return *state;
}

void setPolicy(pthread_t thread, int policy)
{
    const sched_param param{};
    // an unprivileged process may not raise an idle thread again: the scan then goes on at idle
    // priority, which only costs it time while something else wants the core
    pthread_setschedparam(thread, policy, &param);
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
    // ten thousand songs make half a megabyte of list: written in a few large writes
    std::setvbuf(out.get(), nullptr, _IOFBF, size_t(64) * 1024);
    Listing root;
    Listing music;
    collect(rootPrefix, root);
    collect("/mnt/mmc/e_Music", music);
    sortDescending(root);
    sortDescending(music);

    // the two sorted folders merged: the same order as sorting all lines with lessthanbyname
    const std::string musicPrefix = std::string(rootPrefix) + musicFolder;
    size_t r = 0;
    size_t m = 0;
    while (r < root.starts.size() || m < music.starts.size()) {
        const bool rootFirst =
            m == music.starts.size() ||
            (r < root.starts.size() && compareRootToMusic(root.at(r), music.at(m)) > 0);
        if (rootFirst)
            writeLine(out.get(), rootPrefix, root.at(r++));
        else
            writeLine(out.get(), musicPrefix.c_str(), music.at(m++));
    }
}

void *scanthread(void *)
{
    scanmusic();
    ScanThread &state = scanThread();
    {
        const std::lock_guard<std::mutex> guard(state.lock);
        state.running = false;
    }
    state.ended.notify_all();
    pthread_exit(nullptr);
}

bool startMusicScan()
{
    ScanThread &state = scanThread();
    // held until the thread is known, so that its end cannot come first
    const std::lock_guard<std::mutex> guard(state.lock);
    if (pthread_create(&state.thread, nullptr, scanthread, nullptr) != 0)
        return false;
    if (!state.windowShown)
        setPolicy(state.thread, SCHED_IDLE);
    pthread_detach(state.thread);
    state.running = true;
    return true;
}

void musicScanWindowShown()
{
    ScanThread &state = scanThread();
    const std::lock_guard<std::mutex> guard(state.lock);
    state.windowShown = true;
    // still running, so the detached thread's handle still names it
    if (state.running)
        setPolicy(state.thread, SCHED_OTHER);
}

void waitForMusicScan()
{
    ScanThread &state = scanThread();
    std::unique_lock<std::mutex> guard(state.lock);
    // nothing is left for it to yield to
    if (state.running && !state.windowShown)
        setPolicy(state.thread, SCHED_OTHER);
    state.ended.wait(guard, [&state] { return !state.running; });
}
