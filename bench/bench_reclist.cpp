// RecFileManager::init() and one flush() with 1000 recordings, beside reading and writing a
// file of the same size.
#include "storage/recfilemanager.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

void quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

int main()
{
    qInstallMessageHandler(quiet); // the trace lines would measure the terminal
    QTemporaryDir root;
    QDir().mkpath(root.path() + "/mnt/mmc/e_Recorder");
    QDir().mkpath(root.path() + "/apps/config");
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    {
        RecFileManager m;
        m.init();
        for (int i = 0; i < 1000; ++i) {
            const QString path =
                root.path() +
                QStringLiteral("/mnt/mmc/e_Recorder/24%1_%2.mp3").arg(i % 1231).arg(i);
            QFile(path).open(QIODevice::WriteOnly);
            m.addNewFileToList(path);
        }
    }
    const QString listPath = root.path() + "/apps/config/reclist.ini";
    const QString copyPath = root.path() + "/apps/config/copy.ini";
    qint64 ours = INT64_MAX;
    qint64 floor = INT64_MAX;
    int loaded = 0;
    for (int round = 0; round < 10; ++round) {
        QElapsedTimer t;
        t.start();
        RecFileManager m;
        m.init();
        m.flush();
        ours = std::min(ours, t.nsecsElapsed());
        loaded = m.getFileNum();
        t.restart();
        QFile in(listPath);
        in.open(QIODevice::ReadOnly);
        const QByteArray bytes = in.readAll();
        QFile out(copyPath);
        out.open(QIODevice::WriteOnly);
        out.write(bytes);
        out.close();
        floor = std::min(floor, t.nsecsElapsed());
    }
    std::printf("init+flush of %d recordings: %.2f ms\nread+write of %lld bytes:     %.2f ms\n",
                loaded, ours / 1e6, QFile(listPath).size(), floor / 1e6);
    // most of the time is the two syncs that make the list survive a power loss
    std::printf("BENCH reclist value=%.1fms goal<=250ms\n", ours / 1e6);
    return loaded == 1000 ? 0 : 1;
}
