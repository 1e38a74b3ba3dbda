#include "storage/mappedfile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

MappedFile::MappedFile(const char *path) : m_fd(::open(path, O_RDONLY | O_CLOEXEC)) {}

MappedFile::~MappedFile()
{
    unmap();
    if (m_fd >= 0)
        ::close(m_fd);
}

bool MappedFile::map(size_t length)
{
    unmap();
    void *p = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, m_fd, 0);
    if (p == MAP_FAILED)
        return false;
    // the frame walk reads the file once from start to end
    ::madvise(p, length, MADV_SEQUENTIAL);
    m_data = static_cast<const unsigned char *>(p);
    m_size = length;
    return true;
}

bool MappedFile::unmap()
{
    if (!m_data)
        return true;
    void *p = const_cast<unsigned char *>(m_data);
    const size_t length = m_size;
    m_data = nullptr;
    m_size = 0;
    return ::munmap(p, length) == 0;
}
