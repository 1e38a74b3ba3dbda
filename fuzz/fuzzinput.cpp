#include "fuzzinput.h"

#include "testdeviceroot.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

void dropMessage(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

QByteArray fuzzDeviceFile(const char *devicePath, const uint8_t *data, size_t size)
{
    static const TestDeviceRoot root;
    static const QtMessageHandler previous = qInstallMessageHandler(dropMessage);
    Q_UNUSED(previous);
    static long long written = 0;

    const QString name = QString::fromLatin1(devicePath);
    root.writeFile(name, QByteArray::fromRawData(reinterpret_cast<const char *>(data),
                                                 static_cast<int>(size)));
    // every input gets a modification time of its own: QSettings keeps a parsed file as long as
    // its size and time are unchanged, and two inputs of one size can come within a clock tick
    QByteArray path = QFile::encodeName(root.path(name));
    ++written;
    const timespec times[2] = {{written, 0}, {written, 0}};
    utimensat(AT_FDCWD, path.constData(), times, 0);
    return path;
}
