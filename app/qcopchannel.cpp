#include "app/qcopchannel.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>

namespace {
const char busPath[] = "/QCop";
const char busInterface[] = "org.penrecorder.QCop";
const char busMember[] = "message";
const char busSignature[] = "ssay";
} // namespace

QCopChannel::QCopChannel(const QString &channel, QObject *parent)
    : QObject(parent), m_channel(channel)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // the bus filters on the channel argument, so other channels never wake this process
    m_listening =
        bus.connect(QString(), QLatin1String(busPath), QLatin1String(busInterface),
                    QLatin1String(busMember), QStringList{channel}, QLatin1String(busSignature),
                    this, SLOT(busMessage(QString, QString, QByteArray)));
}

QCopChannel::~QCopChannel()
{
    if (!m_listening)
        return;
    QDBusConnection::sessionBus().disconnect(QString(), QLatin1String(busPath),
                                             QLatin1String(busInterface), QLatin1String(busMember),
                                             QStringList{m_channel}, QLatin1String(busSignature),
                                             this, SLOT(busMessage(QString, QString, QByteArray)));
}

bool QCopChannel::send(const QString &channel, const QString &message, const QByteArray &data)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    QDBusMessage signal = QDBusMessage::createSignal(
        QLatin1String(busPath), QLatin1String(busInterface), QLatin1String(busMember));
    signal << channel << message << data;
    return bus.send(signal);
}

bool QCopChannel::send(const QString &channel, const QString &message)
{
    return send(channel, message, QByteArray());
}

void QCopChannel::flush()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    // messages on one connection leave in order: when this answer is back, all sends are out
    bus.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
}

void QCopChannel::busMessage(const QString &channel, const QString &message, const QByteArray &data)
{
    if (channel == m_channel)
        emit received(message, data);
}
