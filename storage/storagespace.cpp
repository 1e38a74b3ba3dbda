#include "storage/storagespace.h"

#include "storage/devicepath.h"

#include <QDebug>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/statfs.h>
#include <sys/statvfs.h>

mount_entry *mount_list = nullptr;

namespace {

std::atomic<StatfsSource> statfsSource{nullptr};
std::atomic<StatvfsSource> statvfsSource{nullptr};

int callStatfs(const char *path, struct statfs *out)
{
    const StatfsSource source = statfsSource.load();
    return source ? source(path, out) : ::statfs(path, out);
}

int callStatvfs(const char *path, struct statvfs *out)
{
    const StatvfsSource source = statvfsSource.load();
    return source ? source(path, out) : ::statvfs(path, out);
}

// counts are 32-bit on the device: all bits set means the file system does not know
int64_t countOrUnknown(unsigned long long value)
{
    return static_cast<uint32_t>(value) == 0xffffffffu ? -1 : static_cast<int64_t>(value);
}

struct FileCloser
{
    void operator()(FILE *file) const { std::fclose(file); }
};

const char spaceRecord[] = "/apps/config/space.ini";
const size_t spaceRecordSize = 16;

} // namespace

void setStatfsSource(StatfsSource source)
{
    statfsSource.store(source);
}

void setStatvfsSource(StatvfsSource source)
{
    statvfsSource.store(source);
}

long long getFreeSpace()
{
    struct statfs diskInfo;
    if (callStatfs(devicePathBytes("/mnt/mtdblock3/").constData(), &diskInfo) != 0)
        return 0;
    qDebug() << "diskInfo.f_bsize" << static_cast<long long>(diskInfo.f_bsize);
    qDebug() << "diskInfo.f_bfree" << static_cast<unsigned long long>(diskInfo.f_bfree);
    const long long bytes =
        static_cast<long long>(diskInfo.f_bsize) * static_cast<long long>(diskInfo.f_bfree);
    return bytes / 1048576;
}

int get_fs_usage(const char *file, const char *, fs_usage *out)
{
    struct statvfs info;
    if (callStatvfs(file, &info) != 0)
        return -1;
    out->block_size = static_cast<uint32_t>(info.f_frsize ? info.f_frsize : info.f_bsize);
    out->total_blocks = countOrUnknown(info.f_blocks);
    out->free_blocks = countOrUnknown(info.f_bfree);
    const uint32_t avail = static_cast<uint32_t>(info.f_bavail);
    out->avail_blocks = static_cast<int32_t>(avail);
    out->avail_top_bit_set = (avail & 0x80000000u) != 0;
    out->total_files = countOrUnknown(info.f_files);
    out->free_files = countOrUnknown(info.f_ffree);
    return 0;
}

unsigned get_free(const char *path, const char *disk, const char *, int, int)
{
    fs_usage usage;
    if (get_fs_usage(disk ? disk : path, disk, &usage) != 0)
        return 0;
    return static_cast<uint32_t>(usage.avail_blocks) * usage.block_size;
}

void read_filesystem_list(char *device, char *mountdir)
{
    auto *entry = static_cast<mount_entry *>(std::calloc(1, sizeof(mount_entry)));
    if (!entry)
        return;
    entry->me_devname = strdup(device ? device : "");
    entry->me_mountdir = mountdir ? strdup(mountdir) : nullptr;
    entry->me_type = strdup("nfs");
    entry->me_dev_low = 0xffffffffu;
    entry->me_dev_high = 0xffffffffu;
    entry->me_dummy = 0;
    entry->me_remote = std::strchr(entry->me_devname, ':') != nullptr;
    mount_list = entry;
}

unsigned show_free(char *device, char *mountdir)
{
    read_filesystem_list(device, mountdir);
    mount_entry *entry = mount_list;
    if (!entry)
        return 0;
    fs_usage usage;
    unsigned mib = 0;
    const char *where = entry->me_mountdir ? entry->me_mountdir : entry->me_devname;
    if (get_fs_usage(where, entry->me_devname, &usage) == 0)
        mib = (static_cast<uint32_t>(usage.avail_blocks) * usage.block_size) >> 20;
    std::free(entry->me_devname);
    std::free(entry->me_mountdir);
    std::free(entry->me_type);
    std::free(entry);
    // the pointer is deliberately left as it was; nothing reads it after this call
    return mib;
}

void writeSpaceToFile(int value)
{
    std::unique_ptr<FILE, FileCloser> file(
        std::fopen(devicePathBytes(spaceRecord).constData(), "wb"));
    if (!file)
        return;
    char record[spaceRecordSize] = {};
    std::snprintf(record, sizeof record, "%d", value);
    if (std::fwrite(record, 1, sizeof record, file.get()) != sizeof record)
        std::puts("write error");
}

int readSpaceRecord(long *value)
{
    std::unique_ptr<FILE, FileCloser> file(
        std::fopen(devicePathBytes(spaceRecord).constData(), "rb"));
    if (!file)
        return -1;
    char record[spaceRecordSize + 1] = {};
    if (std::fread(record, 1, spaceRecordSize, file.get()) != spaceRecordSize) {
        std::puts("read error");
        return -2;
    }
    std::printf("space size is %d\n", 11);
    const long number = std::strtol(record, nullptr, 10);
    if (value)
        *value = number;
    return 0;
}
