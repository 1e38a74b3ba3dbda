#pragma once

#include <QString>

// The engine handle of the OCR wrapper, filled by KOSCAN_OCR_Initialize.
extern void *pOcrHandle;

// The recognition engine behind one shared instance (OCRPen::ocr, created on first use by its
// users). It has no state of its own: everything is in pOcrHandle and the engine.
class OCRPen
{
public:
    OCRPen();

    // languages: engine numbers ended by -1; the engine's result
    int setLan(int *languages);
    // The engine's status with the recognised text, or -1 with text unchanged when the engine
    // found nothing.
    int recognize(unsigned char *image, int width, int height, int layoutType, unsigned char flag,
                  QString &text);

    // Shuts the engine down and deletes the shared instance; to be called once, at the end.
    static void quitFun();

    static OCRPen *ocr;
};
