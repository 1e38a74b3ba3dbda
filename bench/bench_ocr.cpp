// OCRPen::recognize on a 1200 x 64 scanned line, beside a bare Tesseract call with the same model
// and settings on the same pixels. Russian: one model, so the engine's reading is that one call.
#include "scanlinerenderer.h"
#include "scanread/ocrpen.h"
#include "scanroot.h"
#include "storage/devicepath.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <tesseract/baseapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <memory>
#include <unistd.h>
#include <vector>

int main(int argc, char **argv)
{
    oneOcrThread(argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    qInstallMessageHandler(quiet);
    QTemporaryDir root;
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    if (QProcess::execute(QStringLiteral(ENGINERES), {root.path()}) != 0)
        return 1;

    // the line as the camera gives it, cut or padded to 1200 pixels
    ScanLineLook look;
    const QImage drawn = renderScanLine(
        QStringLiteral("Москва является столицей Российской Федерации и крупнейшим городом"), look);
    std::vector<unsigned char> pixels(1200 * 64, 215);
    for (int y = 0; y < 64; ++y)
        std::copy_n(drawn.constScanLine(y), std::min(drawn.width(), 1200),
                    &pixels[size_t(y) * 1200]);

    OCRPen::ocr = new OCRPen;
    int languages[] = {3, -1};
    OCRPen::ocr->setLan(languages);
    tesseract::TessBaseAPI bare;
    bare.Init(QFile::encodeName(devicePath(QStringLiteral("/apps/data/ocrrec"))).constData(), "rus",
              tesseract::OEM_LSTM_ONLY);
    bare.SetPageSegMode(tesseract::PSM_SINGLE_LINE);

    std::vector<double> ours;
    std::vector<double> floor;
    QString text;
    const auto timeOurs = [&] {
        QElapsedTimer t;
        t.start();
        OCRPen::ocr->recognize(pixels.data(), 1200, 64, 0, 0, text);
        return t.nsecsElapsed() / 1e6;
    };
    const auto timeBare = [&] {
        QElapsedTimer t;
        t.start();
        bare.SetImage(pixels.data(), 1200, 64, 1, 1200);
        const std::unique_ptr<char[]> read(bare.GetUTF8Text());
        return t.nsecsElapsed() / 1e6;
    };
    interleaved(21, timeOurs, timeBare, ours, floor);
    OCRPen::quitFun();
    std::printf(
        "read: %s\nOCRPen::recognize: %.1f ms (median)\nbare Tesseract:    %.1f ms (median)\n",
        qPrintable(text), median(ours), median(floor));
    std::printf("BENCH ocr_recognize ratio=%.3f goal<=1.05\n", median(ours) / median(floor));
    return 0;
}
