#include "ocrengine.h"

#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QDir>
#include <QFile>

#include <tesseract/baseapi.h>

namespace {

const char *modelsOf(int engineNumber)
{
    switch (engineNumber) {
    case 1:
        return "chi_sim";
    case 2:
        // one line may be in any of the table's Latin-script languages; English first so that
        // its model settles ties
        return "eng+deu+fra+ita+spa";
    case 3:
        return "rus";
    case 4:
        return "chi_tra";
    default:
        return nullptr;
    }
}

} // namespace

OcrEngine::OcrEngine(const QString &resourceDir)
    : m_dataPath(QFile::encodeName(QDir(devicePath(resourceDir)).absolutePath())),
      m_resourcesFound(QDir(QFile::decodeName(m_dataPath)).exists())
{
}

OcrEngine::~OcrEngine()
{
    if (m_api)
        m_api->End();
}

QByteArray OcrEngine::modelNames(const int *languages)
{
    QByteArray names;
    for (const int *entry = languages; entry && *entry != -1; ++entry) {
        const char *models = modelsOf(*entry);
        if (!models)
            return QByteArray();
        if (!names.isEmpty())
            names += '+';
        names += models;
    }
    return names;
}

int OcrEngine::setActiveLanguages(const int *languages)
{
    const QByteArray models = modelNames(languages);
    if (models.isEmpty()) {
        LOGW("no OCR model for these languages");
        return -1;
    }
    auto api = std::make_unique<tesseract::TessBaseAPI>();
    if (api->Init(m_dataPath.constData(), models.constData(), tesseract::OEM_LSTM_ONLY) != 0) {
        LOGW("cannot load the OCR models %s from %s", models.constData(), m_dataPath.constData());
        return -1;
    }
    // the pen delivers exactly one line of text per scan
    api->SetPageSegMode(tesseract::PSM_SINGLE_LINE);
    if (m_api)
        m_api->End();
    m_api = std::move(api);
    return 0;
}

int OcrEngine::recognize(const unsigned char *image, int width, int height, QString &text)
{
    if (!m_api || !image || width <= 0 || height <= 0)
        return -1;
    m_api->SetImage(image, width, height, 1, width);
    const std::unique_ptr<char[]> utf8(m_api->GetUTF8Text());
    text = QString::fromUtf8(utf8.get()).trimmed();
    return 0;
}
