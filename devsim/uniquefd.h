#pragma once

#include <cerrno>
#include <cstddef>
#include <unistd.h>

// Owns one file descriptor and closes it when it goes out of scope.
class UniqueFd
{
public:
    explicit UniqueFd(int fd = -1) : m_fd(fd) {}
    ~UniqueFd()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    UniqueFd(const UniqueFd &) = delete;
    UniqueFd &operator=(const UniqueFd &) = delete;

    void reset(int fd = -1)
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }

    // Writes every byte, going on after interrupted or partial writes.
    bool writeAll(const void *bytes, size_t count) const
    {
        const char *at = static_cast<const char *>(bytes);
        while (count > 0) {
            const ssize_t written = ::write(m_fd, at, count);
            if (written < 0) {
                if (errno == EINTR)
                    continue;
                return false;
            }
            at += written;
            count -= size_t(written);
        }
        return true;
    }

private:
    int m_fd;
};
