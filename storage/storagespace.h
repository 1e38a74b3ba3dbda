#pragma once

#include <cstdint>

struct statfs;
struct statvfs;

struct fs_usage
{
    uint32_t block_size;  // fragment size when the file system has one, else block size
    int64_t total_blocks; // -1: unknown
    int64_t free_blocks;  // -1: unknown
    int64_t avail_blocks; // sign-extended from 32 bits
    bool avail_top_bit_set;
    int64_t total_files; // -1: unknown
    int64_t free_files;  // -1: unknown
};

struct mount_entry
{
    char *me_devname;
    char *me_mountdir;
    char *me_type;
    uint32_t me_dev_low; // device number, -1: unknown
    uint32_t me_dev_high;
    unsigned me_dummy : 1;
    unsigned me_remote : 1; // the device name holds a colon
};

extern mount_entry *mount_list;

// Where the figures come from; tests hand in their own. Null restores the system calls.
using StatfsSource = int (*)(const char *path, struct statfs *out);
using StatvfsSource = int (*)(const char *path, struct statvfs *out);
void setStatfsSource(StatfsSource source);
void setStatvfsSource(StatvfsSource source);

// Free MiB (superuser blocks included) on the internal flash /mnt/mtdblock3/; 0 when unknown.
long long getFreeSpace();
int get_fs_usage(const char *file, const char *disk, fs_usage *out);
// available bytes as an unsigned 32-bit product: it wraps above 4 GiB
unsigned get_free(const char *path, const char *disk, const char *, int, int);
void read_filesystem_list(char *device, char *mountdir);
// available MiB through a one-entry mount list
unsigned show_free(char *device, char *mountdir);

// The 16-byte space record /apps/config/space.ini: "%d" text padded with NUL bytes.
void writeSpaceToFile(int value);
// 0 with *value set; -1 without a record; -2 when fewer than 16 bytes could be read
int readSpaceRecord(long *value = nullptr);
