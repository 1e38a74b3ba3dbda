#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

// The device's QCop messaging, carried as D-Bus signals on the session bus
// (path /QCop, interface org.penrecorder.QCop, member "message", signature "ssay").
// A channel object receives the messages of its own channel only, from every process on the bus.
class QCopChannel : public QObject
{
    Q_OBJECT
public:
    explicit QCopChannel(const QString &channel, QObject *parent = nullptr);
    ~QCopChannel() override;

    QString channel() const { return m_channel; }
    // false when there was no session bus to listen on
    bool isListening() const { return m_listening; }

    // One-shot send; false when no session bus can be reached. Nothing is awaited.
    static bool send(const QString &channel, const QString &message, const QByteArray &data);
    static bool send(const QString &channel, const QString &message);
    // Waits until every message sent so far has left this process (a round trip to the bus).
    static void flush();

signals:
    void received(const QString &message, const QByteArray &data);

private slots:
    void busMessage(const QString &channel, const QString &message, const QByteArray &data);

private:
    QString m_channel;
    bool m_listening = false;
};
