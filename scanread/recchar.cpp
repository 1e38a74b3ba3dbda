#include "scanread/recchar.h"

#include "app/qcopchannel.h"
#include "scanread/configreader.h"
#include "scanread/koscansdk.h"
#include "scanread/myedit.h"
#include "scanread/ttsplayer.h"
#include "storage/threadhandoff.h"

#include <QDebug>

#include <atomic>
#include <cstdio>

namespace {

std::atomic<MyEdit *> target{nullptr};

} // namespace

RecChar::~RecChar()
{
    std::puts("call ~RecChar");
    Uninitial();
}

int RecChar::init()
{
    if (!ConfigReader::reader)
        ConfigReader::reader = new ConfigReader;
    const int handFlag = ConfigReader::reader->getHandLR() == 0 ? 1 : 0;
    int result = 0;
    if (KOSCAN_IAP_Initialize(handFlag, ConfigReader::reader->getScanDirectInfo(), 0, 0) != 0) {
        qDebug() << "KOSCAN_IAP_Initialize failed";
        result = -1;
    }
    KOSCAN_IAP_SetReceivePanoImageCallBackFunc(nullptr, &RecChar::ReceivePanoImage);
    return result;
}

int RecChar::Uninitial()
{
    if (KOSCAN_IAP_Uninitialize() != 0) {
        qDebug() << "the getimg Uninitial failed";
        return -1;
    }
    return 0;
}

void RecChar::setEdit(MyEdit *edit)
{
    target = edit;
}

int RecChar::ReceivePanoImage(void * /*context*/, unsigned char *pixels, int width, int height,
                              unsigned char flag, char * /*extra*/)
{
    if (!TTSPlayer::player || TTSPlayer::player->stop() != 0)
        qDebug() << "tts stop error";
    // the shell learns that the scanner was triggered
    QCopChannel::send(QStringLiteral("mainprocess"), QStringLiteral("execute(QString)"),
                      QByteArray("trigger"));
    if (!pixels)
        return -1;
    _stImg *img = createImg(pixels, width, height, flag);
    MyEdit *edit = target;
    if (!edit) {
        freeImg(img);
        return -1;
    }
    // queued: the view takes it up in the GUI thread
    handOverThread(img);
    emit edit->signalEdit(img);
    return 0;
}
