// Planted faults that the sanitizer builds must report, each in code that Qt runs, so that every
// frame below ours is Qt's: a suppression naming a whole Qt library would hide them.
//   planted leak             memory lost in a slot run from the event loop (ASan's LeakSanitizer)
//   planted use-after-free   a read after delete in a QThread::run (ASan)
//   planted race             two QThread::run writing one plain int without a lock (TSan)

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <cstring>

namespace {
int counter = 0; // plain, unguarded: the race
}

class LeakingSlot : public QObject
{
    Q_OBJECT
public slots:
    void leakInSlot()
    {
        int *lost = new int[25]; // the only pointer, dropped at once
        lost[0] = 1;
        std::printf("planted leak: %d\n", lost[0]);
        QCoreApplication::quit();
    }
};

class FreeingThread : public QThread
{
protected:
    void run() override
    {
        int *values = new int[4]{1, 2, 3, 4};
        delete[] values;
        std::printf("planted use after free: %d\n", values[2]);
    }
};

class RacingThread : public QThread
{
protected:
    void run() override
    {
        for (int i = 0; i < 100000; ++i)
            ++counter;
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const char *fault = argc > 1 ? argv[1] : "";
    if (std::strcmp(fault, "leak") == 0) {
        LeakingSlot slot;
        QTimer::singleShot(0, &slot, &LeakingSlot::leakInSlot);
        return QCoreApplication::exec();
    }
    if (std::strcmp(fault, "use-after-free") == 0) {
        FreeingThread thread;
        thread.start();
        thread.wait();
        return 0;
    }
    RacingThread first;
    RacingThread second;
    first.start();
    second.start();
    first.wait();
    second.wait();
    std::printf("planted race: %d\n", counter);
    return 0;
}

#include "planted.moc"
