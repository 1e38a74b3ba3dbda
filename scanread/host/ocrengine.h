#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace tesseract {
class TessBaseAPI;
}

// The host's recognition engine: Tesseract's LSTM models read one scanned line at a time.
class OcrEngine
{
public:
    // resourceDir holds the models (<language>.traineddata), as a device path
    explicit OcrEngine(const QString &resourceDir);
    ~OcrEngine();
    OcrEngine(const OcrEngine &) = delete;
    OcrEngine &operator=(const OcrEngine &) = delete;

    bool isValid() const { return m_resourcesFound; }

    // engine numbers of koscansdk.h, ended by -1; 0 or -1 (unknown number, model missing)
    int setActiveLanguages(const int *languages);

    // 0 and the text (possibly empty), or -1 when no language is active or the image is bad
    int recognize(const unsigned char *image, int width, int height, QString &text);

    // Tesseract's own model names for a list of engine numbers ("eng+deu"), empty when unknown
    static QByteArray modelNames(const int *languages);

private:
    QByteArray m_dataPath;
    bool m_resourcesFound = false;
    std::unique_ptr<tesseract::TessBaseAPI> m_api;
};
