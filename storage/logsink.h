#pragma once

#include <QtGlobal>

class QMessageLogContext;
class QString;

// Appends each message as one line ("Debug: ...", "Warning: ...", "Critical: ...",
// "Fatal: ...") to /mnt/mmc/recorderlog.txt; for qInstallMessageHandler. Returns normally,
// also on a fatal message.
void customMessageHandler(QtMsgType type, const QMessageLogContext &context, const QString &msg);
