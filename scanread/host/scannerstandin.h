#pragma once

#include "koscansdk.h"
#include "uniquefd.h"

#include <QSet>
#include <QString>

#include <atomic>
#include <mutex>
#include <thread>

// The pen's scanner on a PC: a thread that watches a folder of the device root and delivers each
// image dropped there (PNG or PGM; other files are skipped) as one scanned line of 8-bit grey
// through the registered callback, then removes the file. A file counts once it has been written
// and closed or moved in; names starting with "." are left alone, so a file can also be written
// under such a name and renamed into place.
class ScannerStandIn
{
public:
    // the watched folder, as a device path
    static const char *folder();

    ScannerStandIn() = default;
    ~ScannerStandIn() { stop(); }
    ScannerStandIn(const ScannerStandIn &) = delete;
    ScannerStandIn &operator=(const ScannerStandIn &) = delete;

    bool start();
    void stop();
    bool isRunning() const { return m_thread.joinable(); }

    void setCallback(void *context, KOSCAN_IAP_ReceivePanoImageCallBack callback);
    // while held, images wait in the folder
    void setHeld(bool held);

private:
    void run();
    void wake();
    void deliverWaiting();
    void deliver(const QString &path);

    QString m_folder;
    QSet<QString> m_complete; // names written whole, not yet delivered; the thread's own
    UniqueFd m_inotify;
    UniqueFd m_wake;
    std::thread m_thread;
    std::atomic<bool> m_quit{false};
    std::atomic<bool> m_held{false};
    std::mutex m_callbackLock;
    void *m_context = nullptr;
    KOSCAN_IAP_ReceivePanoImageCallBack m_callback = nullptr;
};
