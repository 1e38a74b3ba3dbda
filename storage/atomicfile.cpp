#include "storage/atomicfile.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

// One descriptor, closed on every way out; close() reports whether the close itself worked.
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return m_fd; }
    bool close()
    {
        if (m_fd < 0)
            return true;
        const int fd = m_fd;
        m_fd = -1;
        // Linux releases the descriptor even when close() fails: never retried
        return ::close(fd) == 0;
    }

private:
    int m_fd;
};

bool writeAll(int fd, const char *bytes, qint64 count)
{
    while (count > 0) {
        const ssize_t written = ::write(fd, bytes, size_t(count));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes += written;
        count -= written;
    }
    return true;
}

} // namespace

int syncFolderOf(const QString &path)
{
    Descriptor folder(::open(QFile::encodeName(QFileInfo(path).absolutePath()).constData(),
                             O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.get() < 0 || ::fsync(folder.get()) != 0)
        return -1;
    return folder.close() ? 0 : -1;
}

int writeFileAtomically(const QString &path, const QByteArray &bytes)
{
    const QByteArray target = QFile::encodeName(path);
    // a name of this process's own: another program writing the same file at the same time
    // never shares the temporary; one left by a process killed with this pid is replaced
    const QByteArray temporary = target + '.' + QByteArray::number(qint64(getpid())) + ".tmp";
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    int fd = ::open(temporary.constData(), flags, 0666);
    if (fd < 0 && errno == EEXIST && ::unlink(temporary.constData()) == 0)
        fd = ::open(temporary.constData(), flags, 0666);
    Descriptor file(fd);
    if (file.get() < 0)
        return -1;
    const bool written = writeAll(file.get(), bytes.constData(), bytes.size()) &&
                         ::fsync(file.get()) == 0 && file.close() &&
                         ::rename(temporary.constData(), target.constData()) == 0;
    if (!written) {
        ::unlink(temporary.constData());
        return -1;
    }
    return syncFolderOf(path);
}
