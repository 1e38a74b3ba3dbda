#include "scannerstandin.h"

#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <vector>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>

const char *ScannerStandIn::folder()
{
    return "/mnt/mmc/.scanner/";
}

bool ScannerStandIn::start()
{
    if (isRunning())
        return true;
    m_folder = devicePath(QString::fromLatin1(folder()));
    if (!QDir().mkpath(m_folder)) {
        LOGW("cannot make the scanner folder %s", qPrintable(m_folder));
        return false;
    }
    m_inotify.reset(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    m_wake.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_inotify.isValid() || !m_wake.isValid() ||
        inotify_add_watch(m_inotify.get(), QFile::encodeName(m_folder).constData(),
                          IN_CLOSE_WRITE | IN_MOVED_TO) < 0) {
        LOGW("cannot watch the scanner folder %s", qPrintable(m_folder));
        return false;
    }
    m_quit = false;
    m_thread = std::thread(&ScannerStandIn::run, this);
    return true;
}

void ScannerStandIn::stop()
{
    if (!isRunning())
        return;
    m_quit = true;
    wake();
    m_thread.join();
    m_inotify.reset();
    m_wake.reset();
}

void ScannerStandIn::setCallback(void *context, KOSCAN_IAP_ReceivePanoImageCallBack callback)
{
    {
        const std::lock_guard<std::mutex> lock(m_callbackLock);
        m_context = context;
        m_callback = callback;
    }
    wake();
}

void ScannerStandIn::setHeld(bool held)
{
    m_held = held;
    wake();
}

void ScannerStandIn::wake()
{
    const uint64_t one = 1;
    if (m_wake.isValid())
        m_wake.writeAll(&one, sizeof one);
}

void ScannerStandIn::run()
{
    // what lies in the folder already is complete; later files once written or moved in
    m_complete.clear();
    for (const QString &name : QDir(m_folder).entryList(QDir::Files))
        m_complete.insert(name);
    pollfd fds[2] = {{m_inotify.get(), POLLIN, 0}, {m_wake.get(), POLLIN, 0}};
    alignas(inotify_event) char events[4096];
    while (!m_quit) {
        deliverWaiting();
        if (poll(fds, 2, -1) < 0 && errno != EINTR)
            break;
        ssize_t got;
        while ((got = read(m_inotify.get(), events, sizeof events)) > 0) {
            for (ssize_t at = 0; at < got;) {
                const auto *event = reinterpret_cast<const inotify_event *>(events + at);
                const QString name = QFile::decodeName(event->len ? event->name : "");
                if (!name.isEmpty() && !name.startsWith(QLatin1Char('.')))
                    m_complete.insert(name);
                at += ssize_t(sizeof(inotify_event) + event->len);
            }
        }
        uint64_t count = 0;
        while (read(m_wake.get(), &count, sizeof count) > 0) {
        }
    }
}

void ScannerStandIn::deliverWaiting()
{
    QStringList names(m_complete.begin(), m_complete.end());
    names.sort();
    for (const QString &name : qAsConst(names)) {
        if (m_quit || m_held)
            return;
        {
            const std::lock_guard<std::mutex> lock(m_callbackLock);
            if (!m_callback)
                return;
        }
        m_complete.remove(name);
        deliver(m_folder + QLatin1Char('/') + name);
    }
}

void ScannerStandIn::deliver(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return;
    const QImage image(path);
    if (image.isNull()) {
        LOGW("scanner: %s is not an image, skipped", qPrintable(path));
        QFile::remove(path);
        return;
    }
    const QImage grey = image.convertToFormat(QImage::Format_Grayscale8);
    const int width = grey.width();
    const int height = grey.height();
    std::vector<unsigned char> pixels(size_t(width) * size_t(height));
    for (int y = 0; y < height; ++y)
        std::copy_n(grey.constScanLine(y), width, pixels.data() + size_t(y) * size_t(width));
    QFile::remove(path);

    const std::lock_guard<std::mutex> lock(m_callbackLock);
    if (m_callback)
        m_callback(m_context, pixels.data(), width, height, 0, nullptr);
}
