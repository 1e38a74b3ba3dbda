#include "storage/logsink.h"

#include "storage/devicepath.h"

#include <QFile>
#include <QString>

void customMessageHandler(QtMsgType type, const QMessageLogContext &, const QString &msg)
{
    QString text;
    switch (type) {
    case QtDebugMsg:
        text = QStringLiteral("Debug: %1").arg(msg);
        break;
    case QtWarningMsg:
        text = QStringLiteral("Warning: %1").arg(msg);
        break;
    case QtCriticalMsg:
        text = QStringLiteral("Critical: %1").arg(msg);
        break;
    case QtFatalMsg:
        text = QStringLiteral("Fatal: %1").arg(msg);
        break;
    default:
        break;
    }
    // opened per message: the card may be pulled at any time, and nothing is kept between calls
    QFile log(devicePath(QStringLiteral("/mnt/mmc/recorderlog.txt")));
    if (!log.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    log.write((text + QLatin1Char('\n')).toLocal8Bit());
}
