// From a scanned line's picture dropped into the scanner's folder to its text appended and
// selected in the scan view, beside a bare recognition of the same pixels through OCRPen.
#include "scanlinerenderer.h"
#include "scanread/configreader.h"
#include "scanread/myedit.h"
#include "scanread/ocrpen.h"
#include "scanread/recchar.h"
#include "scanread/ttsplayer.h"
#include "scanroot.h"
#include "storage/devicepath.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
#include <vector>

int main(int argc, char **argv)
{
    oneOcrThread(argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DEVSIM_SPEECH", "file");
    QTemporaryDir root;
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    QApplication app(argc, argv);
    qInstallMessageHandler(quiet);
    if (!makeScanRoot(root.path(), "[InfoListen]\nLan=1\n"))
        return 1;

    const QImage line = renderScanLine(
        QStringLiteral("The pen reads every line it is drawn over, word by word."), ScanLineLook());
    const QString folder = devicePath("/mnt/mmc/.scanner/");
    if (!line.save(folder + ".line.png"))
        return 1;
    QByteArray pixels;
    for (int y = 0; y < line.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(line.constScanLine(y)), line.width());

    std::vector<double> ours, floor;
    QString text;
    {
        MyEdit view;
        view.Init();
        if (RecChar::init() != 0)
            return 1;
        QEventLoop appended;
        QObject::connect(&view, &MyEdit::signalRecFinished, &appended, &QEventLoop::quit);
        const auto timeOurs = [&] {
            view.clear();
            QFile::copy(folder + ".line.png", folder + ".copy.png");
            QElapsedTimer t;
            t.start();
            QFile::rename(folder + ".copy.png", folder + "line.png");
            appended.exec();
            return t.nsecsElapsed() / 1e6;
        };
        const auto timeBare = [&] {
            QElapsedTimer t;
            t.start();
            OCRPen::ocr->recognize(reinterpret_cast<uchar *>(pixels.data()), line.width(),
                                   line.height(), 0, 0, text);
            return t.nsecsElapsed() / 1e6;
        };
        interleaved(21, timeOurs, timeBare, ours, floor);
        std::printf("view: %s\n", qPrintable(view.textCursor().selectedText()));
        RecChar::Uninitial();
    }
    TTSPlayer::quitFun();
    OCRPen::quitFun();
    std::printf("dropped to appended and selected: %.1f ms (median)\n"
                "bare recognition:                 %.1f ms (median)\n",
                median(ours), median(floor));
    std::printf("BENCH scan_append ratio=%.3f goal<=1.2\n", median(ours) / median(floor));
    return 0;
}
