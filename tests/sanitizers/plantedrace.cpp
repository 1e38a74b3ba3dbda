// A data race the ThreadSanitizer build must report: two QThread::run write one plain int with
// no lock between them; every frame below ours is Qt's thread start.

#include <QCoreApplication>
#include <QThread>

#include <cstdio>

namespace {
int counter = 0; // plain, unguarded: the fault
}

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
    RacingThread first;
    RacingThread second;
    first.start();
    second.start();
    first.wait();
    second.wait();
    std::printf("planted race: %d\n", counter);
    return 0;
}
