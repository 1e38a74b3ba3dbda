#pragma once

#include <cstddef>

// A read-only file descriptor and, once map() succeeded, a private read-only mapping of its
// first bytes; both are released by the destructor.
class MappedFile
{
public:
    explicit MappedFile(const char *path);
    ~MappedFile();
    MappedFile(const MappedFile &) = delete;
    MappedFile &operator=(const MappedFile &) = delete;

    int fd() const { return m_fd; }
    // maps the first `length` bytes; false (errno set) when the kernel refuses
    bool map(size_t length);
    // releases the mapping now; false (errno set) when munmap fails
    bool unmap();

    const unsigned char *data() const { return m_data; }
    size_t size() const { return m_size; }

private:
    int m_fd = -1;
    const unsigned char *m_data = nullptr;
    size_t m_size = 0;
};
