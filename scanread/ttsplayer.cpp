#include "scanread/ttsplayer.h"

#include "scanread/koscansdk.h"

#include <QDebug>

namespace {

// logs success or failure of an engine call and passes its result on
int reported(int result, const char *success, const char *failure)
{
    qDebug() << (result == 0 ? success : failure);
    return result;
}

} // namespace

TTSPlayer *TTSPlayer::player = nullptr;
MyEdit *TTSPlayer::editScan = nullptr;
DictScanEdit *TTSPlayer::editDict = nullptr;
int TTSPlayer::m_EditId = 0;
bool TTSPlayer::scanPlayFlag = false;

TTSPlayer::TTSPlayer()
{
    init(0);
}

int TTSPlayer::init(int /*unused*/)
{
    char speechData[] = "/mnt/hidmmc/sysdict/ttsrec";
    char dictionaries[] = "/mnt/hidmmc/sysdict/languages";
    char *paths[] = {speechData, dictionaries};
    const int result = KOSCAN_TTS_Initialize(paths, 2, 80);
    qDebug() << "KOSCAN_TTS_Initialize return is " << result;
    return reported(result, "TTS_Initialize success", "TTS_Initialize failed");
}

int TTSPlayer::setLan(int language)
{
    qDebug() << "TTSPlayer::setLan" << language;
    KOSCAN_TTS_SetLang(language);
    return 0;
}

int TTSPlayer::play(const QString &text)
{
    QString copy = text;
    const int result =
        KOSCAN_TTS_Play(reinterpret_cast<unsigned short *>(copy.data()), int(copy.size()) * 2, 0);
    qDebug() << "============ret============" << result;
    return result;
}

int TTSPlayer::stop()
{
    return KOSCAN_TTS_Stop();
}

int TTSPlayer::setSpeed(int speed)
{
    qDebug() << "in TTSPlayer::setSpeed" << speed;
    const int result = KOSCAN_TTS_SetSpeed(speed);
    return reported(result, "SetSpeed success", "SetSpeed failed");
}

int TTSPlayer::setVolume(int volume)
{
    qDebug() << "##########in TTSPlayer::setVolume---" << volume;
    const int result = KOSCAN_TTS_SetVolume(volume);
    return reported(result, "SetVolume success", "SetVolume failed");
}

void TTSPlayer::quitFun()
{
    if (!player)
        return;
    KOSCAN_TTS_Uninitialize();
    delete player;
}

void TTSPlayer::setEdit(MyEdit *edit)
{
    editScan = edit;
    m_EditId = 0;
}

void TTSPlayer::setEditD(DictScanEdit *edit)
{
    editDict = edit;
    m_EditId = 1;
}

void TTSPlayer::setScanPlayFlag(bool /*flag*/) {}
