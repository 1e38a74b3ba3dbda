// The floor for the recorder's start-up: the least a Qt program does to play the same part
// towards the shell. It shows a 256 x 64 window, says "Show(QString)" on the shell's channel and
// quits on the first message on its own.

#include "app/qcopchannel.h"

#include <QApplication>
#include <QWidget>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QWidget window(nullptr, Qt::FramelessWindowHint);
    window.setGeometry(0, 0, 256, 64);
    QCopChannel channel(QStringLiteral("recorderprocess"));
    QObject::connect(&channel, &QCopChannel::received, &app, &QCoreApplication::quit);
    window.show();
    QCopChannel::send(QStringLiteral("mainprocess"), QStringLiteral("Show(QString)"), "record");
    const int result = QApplication::exec();
    QCopChannel::flush();
    return result;
}
