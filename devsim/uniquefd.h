#pragma once

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

    int get() const { return m_fd; }
    bool isValid() const { return m_fd >= 0; }

private:
    int m_fd;
};
