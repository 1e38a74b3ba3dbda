#include "scanread/ocrpen.h"

#include "scanread/koscansdk.h"

#include <QDebug>

void *pOcrHandle = nullptr;
OCRPen *OCRPen::ocr = nullptr;

OCRPen::OCRPen()
{
    qDebug() << "---------------OCRPen---------------";
    char resourceDir[] = "/apps/data/ocrrec/";
    if (KOSCAN_OCR_Initialize(&pOcrHandle, resourceDir) == 0 && pOcrHandle)
        qDebug() << "ocr initial success";
    else
        qDebug() << "ocr initial failed";
}

int OCRPen::setLan(int *languages)
{
    qDebug() << "aLanguages=" << (languages ? languages[0] : -1);
    const int result = KOSCAN_OCR_SetActiveLanguages(pOcrHandle, languages);
    if (result == 0)
        qDebug() << "--------------SetActiveLanguages success--------------";
    else
        qDebug() << "--------------SetActiveLanguages failed--------------";
    return result;
}

int OCRPen::recognize(unsigned char *image, int width, int height, int layoutType,
                      unsigned char flag, QString &text)
{
    qDebug() << "nImgWidth:" << width << "  nImgHeight:" << height
             << "  nLayoutType:" << layoutType;
    unsigned short *result = nullptr;
    int length = 0;
    const int status =
        KOSCAN_OCR_Translate(pOcrHandle, image, width, height, &result, &length, layoutType, flag);
    if (result && length > 0) {
        text = QString::fromUtf16(reinterpret_cast<const char16_t *>(result), length);
        KOSCAN_OCR_FreeRecogResult(pOcrHandle, result);
        return status;
    }
    qDebug() << "recofginze error" << status;
    return -1;
}

void OCRPen::quitFun()
{
    if (!ocr)
        return;
    KOSCAN_OCR_ExitEngine(pOcrHandle);
    KOSCAN_OCR_FreeEngine(pOcrHandle);
    delete ocr;
}
