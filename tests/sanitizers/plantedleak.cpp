// A leak the AddressSanitizer build must report: memory lost in a slot that the event loop runs,
// so that every frame below ours is Qt's. A suppression naming a whole Qt library would hide it.

#include <QCoreApplication>
#include <QObject>
#include <QTimer>

#include <cstdio>

class LeakingSlot : public QObject
{
    Q_OBJECT
public slots:
    void leakInSlot()
    {
        // the only pointer is dropped at once
        int *lost = new int[25];
        lost[0] = 1;
        std::printf("planted leak: %d\n", lost[0]);
        lost = nullptr;
        QCoreApplication::quit();
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    LeakingSlot slot;
    QTimer::singleShot(0, &slot, &LeakingSlot::leakInSlot);
    return QCoreApplication::exec();
}

#include "plantedleak.moc"
