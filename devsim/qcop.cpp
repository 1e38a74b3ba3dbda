// qcop: the device shell's end of the QCop protocol, for the simulation and the tests.
//   qcop send CHANNEL MESSAGE [DATA]   sends one message
//   qcop listen [CHANNEL...]           prints "CHANNEL MESSAGE DATA" per message until killed
#include "app/qcopchannel.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QStringList>

#include <cstdio>

namespace {

int usage()
{
    std::fputs("usage: qcop send CHANNEL MESSAGE [DATA]\n"
               "       qcop listen [CHANNEL...]\n",
               stderr);
    return 2;
}

void printMessage(const QString &channel, const QString &message, const QByteArray &data)
{
    const QByteArray line = channel.toLocal8Bit() + ' ' + message.toLocal8Bit() + ' ' + data + '\n';
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stdout);
    std::fflush(stdout);
}

// Listens to every channel at once (qcop listen without a channel name).
class AllChannels : public QObject
{
    Q_OBJECT
public:
    bool listen()
    {
        return QDBusConnection::sessionBus().connect(
            QString(), QStringLiteral("/QCop"), QStringLiteral("org.penrecorder.QCop"),
            QStringLiteral("message"), this, SLOT(busMessage(QString, QString, QByteArray)));
    }
private slots:
    void busMessage(const QString &channel, const QString &message, const QByteArray &data)
    {
        printMessage(channel, message, data);
    }
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty())
        return usage();

    if (args.first() == QLatin1String("send")) {
        if (args.size() < 3 || args.size() > 4)
            return usage();
        const QByteArray data = args.size() == 4 ? args.at(3).toLocal8Bit() : QByteArray();
        if (!QCopChannel::send(args.at(1), args.at(2), data)) {
            std::fputs("qcop: no session bus\n", stderr);
            return 1;
        }
        QCopChannel::flush();
        return 0;
    }

    if (args.first() != QLatin1String("listen"))
        return usage();
    if (!QDBusConnection::sessionBus().isConnected()) {
        std::fputs("qcop: no session bus\n", stderr);
        return 1;
    }
    AllChannels all;
    if (args.size() == 1) {
        all.listen();
    } else {
        for (const QString &name : args.mid(1)) {
            auto *channel = new QCopChannel(name, &app);
            QObject::connect(channel, &QCopChannel::received,
                             [name](const QString &message, const QByteArray &data) {
                                 printMessage(name, message, data);
                             });
        }
    }
    // the match rules are in place once the bus has answered: from here on nothing is missed
    QCopChannel::flush();
    std::fputs("qcop: listening\n", stderr);
    std::fflush(stderr);
    return app.exec();
}

#include "qcop.moc"
