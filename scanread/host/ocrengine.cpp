#include "ocrengine.h"

#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QDir>
#include <QFile>

#include <tesseract/baseapi.h>

#include <algorithm>
#include <vector>

namespace {

constexpr int minimumConfidence = 50;
constexpr int shortestSure = 3;
// ink is this many grey levels darker than the paper around it: the sensor's noise stays well
// within it, the antialiased core of a printed stroke well beyond
constexpr int inkContrast = 80;
// fewer such pixels are a speck on the paper, not a printed mark (a full stop has about 16)
constexpr int leastInk = 16;

QList<QByteArray> modelsOf(int engineNumber)
{
    switch (engineNumber) {
    case 1:
        return {"chi_sim"};
    case 2:
        return {"eng", "deu", "fra", "ita", "spa"};
    case 3:
        return {"rus"};
    case 4:
        return {"chi_tra"};
    default:
        return {};
    }
}

// Whether the picture holds print: given no ink at all, the models still guess a letter. The
// pen's light falls unevenly along the line, so each column is measured against its own paper,
// the level that three quarters of its pixels reach.
bool hasInk(const unsigned char *image, int width, int height)
{
    std::vector<unsigned char> column(size_t(height), 0);
    int inked = 0;
    for (int x = 0; x < width; ++x) {
        for (int y = 0; y < height; ++y)
            column[size_t(y)] = image[size_t(y) * size_t(width) + size_t(x)];
        const auto paperAt = column.begin() + (height * 3) / 4;
        std::nth_element(column.begin(), paperAt, column.end());
        const int paper = *paperAt;
        for (int y = 0; y < height; ++y)
            if (image[size_t(y) * size_t(width) + size_t(x)] + inkContrast < paper &&
                ++inked >= leastInk)
                return true;
    }
    return false;
}

} // namespace

OcrEngine::OcrEngine(const QString &resourceDir)
    : m_dataPath(QFile::encodeName(QDir(devicePath(resourceDir)).absolutePath())),
      m_resourcesFound(QDir(QFile::decodeName(m_dataPath)).exists())
{
}

OcrEngine::~OcrEngine() = default;

QList<QByteArray> OcrEngine::modelNames(const int *languages)
{
    QList<QByteArray> names;
    for (const int *entry = languages; entry && *entry != -1; ++entry) {
        const QList<QByteArray> models = modelsOf(*entry);
        if (models.isEmpty())
            return {};
        for (const QByteArray &model : models)
            if (!names.contains(model))
                names.append(model);
    }
    return names;
}

int OcrEngine::setActiveLanguages(const int *languages)
{
    const QList<QByteArray> names = modelNames(languages);
    if (names.isEmpty()) {
        LOGW("no OCR model for these languages");
        return -1;
    }
    std::vector<std::unique_ptr<tesseract::TessBaseAPI>> models;
    for (const QByteArray &name : names) {
        auto api = std::make_unique<tesseract::TessBaseAPI>();
        if (api->Init(m_dataPath.constData(), name.constData(), tesseract::OEM_LSTM_ONLY) != 0) {
            LOGW("cannot load the OCR model %s from %s", name.constData(), m_dataPath.constData());
            return -1;
        }
        // the pen delivers exactly one line of text per scan
        api->SetPageSegMode(tesseract::PSM_SINGLE_LINE);
        models.push_back(std::move(api));
    }
    m_models = std::move(models);
    return 0;
}

int OcrEngine::recognize(const unsigned char *image, int width, int height, QString &text)
{
    if (m_models.empty() || !image || width <= 0 || height <= 0)
        return -1;
    text.clear();
    if (!hasInk(image, width, height))
        return 0;
    // marks that are not print (noise, smudges) make the models guess a letter or two, with no
    // confidence at all; the confidence costs another pass over the results, so it is only asked
    // for when models compete or the reading is as short as such a guess
    int bestConfidence = minimumConfidence - 1;
    for (const auto &model : m_models) {
        model->SetImage(image, width, height, 1, width);
        const std::unique_ptr<char[]> utf8(model->GetUTF8Text());
        QString reading = QString::fromUtf8(utf8.get()).trimmed();
        const bool ask = m_models.size() > 1 || reading.size() <= shortestSure;
        const int confidence = ask ? model->MeanTextConf() : minimumConfidence;
        if (confidence > bestConfidence) {
            bestConfidence = confidence;
            text = std::move(reading);
        }
    }
    return 0;
}
