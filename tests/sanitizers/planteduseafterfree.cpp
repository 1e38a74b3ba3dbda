// A use after free the AddressSanitizer build must report, in a QThread::run: every frame below
// ours is Qt's thread start.

#include <QCoreApplication>
#include <QThread>

#include <cstdio>

class FreeingThread : public QThread
{
protected:
    void run() override
    {
        int *values = new int[4]{1, 2, 3, 4};
        delete[] values;
        // read after the delete
        std::printf("planted use after free: %d\n", values[2]);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    FreeingThread thread;
    thread.start();
    thread.wait();
    return 0;
}
