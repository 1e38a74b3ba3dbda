#pragma once

// The pen's engine SDK: optical character recognition (KOSCAN_OCR_*), text-to-speech
// (KOSCAN_TTS_*) and image acquisition from the scanner (KOSCAN_IAP_*). This header is the only
// way the program reaches the engines; the build links either the device's own library or the
// host implementation in scanread/host. Every call returns 0 on success unless said otherwise.

#ifdef __cplusplus
extern "C" {
#endif

// ---- recognition ----

// OCR engine numbers for KOSCAN_OCR_SetActiveLanguages; a list ends with KOSCAN_OCR_LANG_END.
enum {
    KOSCAN_OCR_LANG_END = -1,
    KOSCAN_OCR_LANG_CHINESE_SIMPLIFIED = 1,
    KOSCAN_OCR_LANG_LATIN = 2, // English, German, French, Italian, Spanish
    KOSCAN_OCR_LANG_RUSSIAN = 3,
    // only the host engine knows this one; the reader settings never pass it
    KOSCAN_OCR_LANG_CHINESE_TRADITIONAL = 4
};

// Starts an engine on the resources in resourceDir and fills *handle.
int KOSCAN_OCR_Initialize(void **handle, char *resourceDir);
int KOSCAN_OCR_SetActiveLanguages(void *handle, int *languages);
// Recognises one scanned line: image holds width x height bytes of 8-bit grey, top row first.
// On return *result is the text in UTF-16 (allocated by the engine, released with
// KOSCAN_OCR_FreeRecogResult) and *resultLength its length in code units; an empty recognition
// leaves *result null. Returns the engine's status.
int KOSCAN_OCR_Translate(void *handle, unsigned char *image, int width, int height,
                         unsigned short **result, int *resultLength, int layoutType,
                         unsigned char flag);
int KOSCAN_OCR_FreeRecogResult(void *handle, unsigned short *result);
// Shut an engine down, in this order; the handle is invalid afterwards.
int KOSCAN_OCR_ExitEngine(void *handle);
int KOSCAN_OCR_FreeEngine(void *handle);

// ---- speech ----

// Samples of the speech engine's audio: 16-bit mono at this rate.
enum { KOSCAN_TTS_SAMPLE_RATE = 22050 };

// Progress of KOSCAN_TTS_Play, once per word in the order spoken, on the thread that called Play,
// one word ahead of the audio: a word is reported as the word before it starts to be heard (the
// first word as the audio starts), with its position and length in UTF-16 code units of the text
// given to Play and the sample of this Play's audio at which the word starts. The time from one
// report's sample to the next is thus the time until the reported word is heard.
typedef void (*KOSCAN_TTS_ProgressCallBack)(void *context, int textPosition, int textLength,
                                            int pcmPosition);

// paths: the speech data folder and the dictionary folder; count: 2; param: the platform's
// set-up value (80).
int KOSCAN_TTS_Initialize(char **paths, int count, int param);
// Language by the language table's number (1, 2, 101, 103 to 106, 151).
int KOSCAN_TTS_SetLang(int language);
int KOSCAN_TTS_SetProgressCallBackFunc(void *context, KOSCAN_TTS_ProgressCallBack callback);
// Speaks byteLength / 2 UTF-16 code units of text and returns when they have been spoken or
// KOSCAN_TTS_Stop has been called from another thread.
int KOSCAN_TTS_Play(unsigned short *text, int byteLength, int flag);
int KOSCAN_TTS_Stop(void);
// Speed 0 to 100, 50 the normal pace; volume 0 to 100 percent. Both apply from the next Play.
int KOSCAN_TTS_SetSpeed(int speed);
int KOSCAN_TTS_SetVolume(int volume);
int KOSCAN_TTS_Uninitialize(void);

// ---- image acquisition ----

// A scanned line (a panorama): width x height bytes of 8-bit grey, called from the scanner's own
// thread; the pixels belong to the engine and are valid during the call only.
typedef int (*KOSCAN_IAP_ReceivePanoImageCallBack)(void *context, unsigned char *pixels, int width,
                                                   int height, unsigned char flag, char *extra);

enum { KOSCAN_IAP_STATE_IDLE = 0, KOSCAN_IAP_STATE_SCANNING = 1 };

int KOSCAN_IAP_Initialize(int handFlag, int scanDirection, int reserved1, int reserved2);
int KOSCAN_IAP_SetReceivePanoImageCallBackFunc(void *context,
                                               KOSCAN_IAP_ReceivePanoImageCallBack callback);
// Fills *state with KOSCAN_IAP_STATE_*; negative when it cannot be queried.
int KOSCAN_IAP_GetWorkState(int *state);
// Non-zero holds the scanner: images are kept back until the signal is cleared.
int KOSCAN_IAP_SetStopSignal(unsigned char stop);
int KOSCAN_IAP_Uninitialize(void);

#ifdef __cplusplus
}
#endif
