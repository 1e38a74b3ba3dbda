#include "scanread/scanreadedit.h"

#include "scanread/koscansdk.h"
#include "scanread/ttsplayer.h"

ScanReadEdit::ScanReadEdit(QWidget *parent) : MyEdit(parent)
{
    // progress of a stopped reading that was on its way when it stopped is stale
    connect(
        this, &MyEdit::signalTTShignlight, this,
        [this](int pos, int len, int pcmPos) {
            if (!readingCancelled())
                TTShignlightFun(pos, len, pcmPos);
        },
        Qt::QueuedConnection);
    KOSCAN_TTS_SetProgressCallBackFunc(this, &ScanReadEdit::progress);
}

ScanReadEdit::~ScanReadEdit()
{
    // Sound() must not run on while this part of the view is gone
    stopThreads();
    KOSCAN_TTS_SetProgressCallBackFunc(nullptr, nullptr);
}

void ScanReadEdit::Sound(QString &text)
{
    m_offset = readStart();
    if (!TTSPlayer::player || readingCancelled())
        return;
    TTSPlayer::player->play(text);
}

void ScanReadEdit::tirggleTTShignlight(int pos, int len, int pcmPos)
{
    // A stop made just as the engine began may have come before it, and the engine forgets a
    // stop when it begins: the first word is reported before it is heard, so stop it again here.
    if (readingCancelled()) {
        TTSPlayer::player->stop();
        return;
    }
    emit signalTTShignlight(m_offset + pos, len, pcmPos);
}

void ScanReadEdit::progress(void *context, int pos, int len, int pcmPos)
{
    if (context)
        static_cast<ScanReadEdit *>(context)->tirggleTTShignlight(pos, len, pcmPos);
}

void ScanReadEdit::hignFun()
{
    const HignItem *due = nextHighlight();
    if (!due)
        return;
    const HignItem word = *due;
    highlightWord(word.pos, word.len);
    MyEdit::hignFun();
}

bool ScanReadEdit::showReading(const QString &text, int wordIndex)
{
    clear();
    appendScanText(text);
    return selectWordNumber(wordIndex);
}
