#pragma once

#include "app/qcopchannel.h"

#include <QSignalSpy>
#include <QStringList>

// The device shell's channel "mainprocess", heard from inside a test: what the programs tell the
// shell, in the order it came.
struct ShellListener
{
    // listening before the constructor returns: the bus has taken the match rule
    ShellListener() { QCopChannel::flush(); }

    // "MESSAGE DATA" of every message heard, oldest first
    QStringList heard() const
    {
        QStringList words;
        for (const QList<QVariant> &message : spy)
            words << message.at(0).toString() + QLatin1Char(' ') + message.at(1).toByteArray();
        return words;
    }

    QCopChannel channel{QStringLiteral("mainprocess")};
    QSignalSpy spy{&channel, &QCopChannel::received};
};
