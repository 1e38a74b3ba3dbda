#pragma once

#include <QByteArray>
#include <QTemporaryFile>

#include <cstdio>
#include <unistd.h>

// What fn writes to the descriptor fd (STDOUT_FILENO, STDERR_FILENO), from any thread, while fn
// runs.
template<typename Fn> QByteArray captured(int fd, Fn fn)
{
    QTemporaryFile file;
    const int saved = dup(fd);
    if (file.open() && dup2(file.handle(), fd) >= 0)
        fn();
    std::fflush(nullptr);
    dup2(saved, fd);
    close(saved);
    return file.seek(0) ? file.readAll() : QByteArray();
}
