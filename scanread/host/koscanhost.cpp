// The platform operations of koscansdk.h on a PC: Tesseract for recognition, espeak-ng for
// speech, a watched folder for the scanner.

#include "koscansdk.h"

#include "ocrengine.h"
#include "scannerstandin.h"
#include "speechengine.h"

#include <QString>

#include <cstdlib>
#include <cstring>

namespace {

ScannerStandIn &scanner()
{
    static ScannerStandIn standIn;
    return standIn;
}

OcrEngine *engine(void *handle)
{
    return static_cast<OcrEngine *>(handle);
}

} // namespace

extern "C" {

int KOSCAN_OCR_Initialize(void **handle, char *resourceDir)
{
    if (!handle || !resourceDir)
        return -1;
    auto *created = new OcrEngine(QString::fromLocal8Bit(resourceDir));
    if (!created->isValid()) {
        delete created;
        *handle = nullptr;
        return -1;
    }
    *handle = created;
    return 0;
}

int KOSCAN_OCR_SetActiveLanguages(void *handle, int *languages)
{
    return handle ? engine(handle)->setActiveLanguages(languages) : -1;
}

// Tesseract finds the layout of a line by itself, and the host's scanner gives no flag, so the
// layout type and the flag are accepted and not used.
int KOSCAN_OCR_Translate(void *handle, unsigned char *image, int width, int height,
                         unsigned short **result, int *resultLength, int /*layoutType*/,
                         unsigned char /*flag*/)
{
    if (!handle || !result || !resultLength)
        return -1;
    *result = nullptr;
    *resultLength = 0;
    QString text;
    const int status = engine(handle)->recognize(image, width, height, text);
    if (status != 0 || text.isEmpty())
        return status;
    auto *units = static_cast<unsigned short *>(
        std::malloc(sizeof(unsigned short) * size_t(text.size() + 1)));
    if (!units)
        return -1;
    std::memcpy(units, text.utf16(), sizeof(unsigned short) * size_t(text.size() + 1));
    *result = units;
    *resultLength = text.size();
    return status;
}

int KOSCAN_OCR_FreeRecogResult(void * /*handle*/, unsigned short *result)
{
    std::free(result);
    return 0;
}

int KOSCAN_OCR_ExitEngine(void * /*handle*/)
{
    // everything is released with the engine itself
    return 0;
}

int KOSCAN_OCR_FreeEngine(void *handle)
{
    delete engine(handle);
    return 0;
}

int KOSCAN_TTS_Initialize(char **paths, int count, int /*param*/)
{
    // the first folder holds the synthesiser's data; espeak-ng's dictionaries are part of it, so
    // the second (dictionary) folder is not read
    if (!paths || count < 1 || !paths[0])
        return -1;
    return SpeechEngine::instance().initialize(QString::fromLocal8Bit(paths[0]));
}

int KOSCAN_TTS_SetLang(int language)
{
    return SpeechEngine::instance().setLanguage(language);
}

int KOSCAN_TTS_SetProgressCallBackFunc(void *context, KOSCAN_TTS_ProgressCallBack callback)
{
    SpeechEngine::instance().setProgressCallback(context, callback);
    return 0;
}

int KOSCAN_TTS_Play(unsigned short *text, int byteLength, int /*flag*/)
{
    return SpeechEngine::instance().play(text, byteLength / 2);
}

int KOSCAN_TTS_Stop(void)
{
    SpeechEngine::instance().stop();
    return 0;
}

int KOSCAN_TTS_SetSpeed(int speed)
{
    if (speed < 0 || speed > 100)
        return -1;
    SpeechEngine::instance().setSpeed(speed);
    return 0;
}

int KOSCAN_TTS_SetVolume(int volume)
{
    if (volume < 0 || volume > 100)
        return -1;
    SpeechEngine::instance().setVolume(volume);
    return 0;
}

int KOSCAN_TTS_Uninitialize(void)
{
    SpeechEngine::instance().uninitialize();
    return 0;
}

// The stand-in's images are upright already, so the hand and the scan direction need no turning.
int KOSCAN_IAP_Initialize(int /*handFlag*/, int /*scanDirection*/, int /*reserved1*/,
                          int /*reserved2*/)
{
    return scanner().start() ? 0 : -1;
}

int KOSCAN_IAP_SetReceivePanoImageCallBackFunc(void *context,
                                               KOSCAN_IAP_ReceivePanoImageCallBack callback)
{
    scanner().setCallback(context, callback);
    return 0;
}

int KOSCAN_IAP_GetWorkState(int *state)
{
    if (!state)
        return -1;
    *state = scanner().isRunning() ? KOSCAN_IAP_STATE_SCANNING : KOSCAN_IAP_STATE_IDLE;
    return 0;
}

int KOSCAN_IAP_SetStopSignal(unsigned char stop)
{
    scanner().setHeld(stop != 0);
    return 0;
}

int KOSCAN_IAP_Uninitialize(void)
{
    scanner().stop();
    return 0;
}

} // extern "C"
