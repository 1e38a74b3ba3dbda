#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

namespace tesseract {
class TessBaseAPI;
}

// The host's recognition engine: Tesseract's LSTM models read one scanned line at a time. With
// several models active (the Latin-script languages), each reads the line and the most confident
// reading wins: a line is in one language, and a model that lacks its accents misreads them.
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

    // Tesseract's own model names for a list of engine numbers, empty when one is unknown
    static QList<QByteArray> modelNames(const int *languages);

private:
    QByteArray m_dataPath;
    bool m_resourcesFound = false;
    std::vector<std::unique_ptr<tesseract::TessBaseAPI>> m_models;
};
