#include "scanread/myedit.h"

#include "app/qcopchannel.h"
#include "scanread/configreader.h"
#include "scanread/crecthread.h"
#include "scanread/csoundthread.h"
#include "scanread/ocrpen.h"
#include "scanread/recchar.h"
#include "scanread/ttsplayer.h"
#include "storage/threadhandoff.h"
#include "widgets/messagedialog.h"
#include "widgets/sandglass.h"

#include <QDebug>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTimer>

namespace {

const char normalScrollBar[] =
    "QScrollBar:vertical {margin: 12px 0px 0px 0px;border:0px solid black;width: 5px;} "
    "QScrollBar::handle:vertical { background: #000000; border: 1px solid white; min-height: "
    "4px; } QScrollBar::add-line:vertical { height: 0px; subcontrol-position: bottom; } "
    "QScrollBar::sub-line:vertical {subcontrol-origin: margin; height: 12px; "
    "subcontrol-position: top; }QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical "
    "{background-color: white}";
const char otherScrollBar[] =
    "QScrollBar:vertical {border:1px solid #404040;width: 5px;} QScrollBar::handle:vertical { "
    "background: #404040; border: 0px solid white; min-height: 4px; } "
    "QScrollBar::add-line:vertical { height: 0px; subcontrol-position: bottom; } "
    "QScrollBar::sub-line:vertical { height: 0px; subcontrol-position: top; "
    "}QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical {background-color: black;}";

// ASCII punctuation, then its full-width forms
const char separatorSet[] = "↙~!@#$%^&*()_+|~{}:"
                            "\""
                            "<>?~！@#￥%……&*（）——+|{}：”《》？`-=\\[];',./·-=、【】；’，。、";

// the size limit of the view's text: 64 KiB of UTF-16 as saved, with "\r\n" line ends
constexpr int maxBytes = 65536;

void sendToShell(const char *word)
{
    QCopChannel::send(QStringLiteral("mainprocess"), QStringLiteral("execute(QString)"),
                      QByteArray(word));
}

TTSPlayer *speech()
{
    if (!TTSPlayer::player)
        TTSPlayer::player = new TTSPlayer;
    return TTSPlayer::player;
}

// whether the next scanned line needs a blank so as not to run into this one
bool wantsBlank(QChar last)
{
    const ushort c = last.unicode();
    return c == '.' || c == ',' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
           (c >= 'A' && c <= 'Z');
}

} // namespace

MyEdit::MyEdit(QWidget *parent) : QTextEdit(parent)
{
    qRegisterMetaType<_stImg *>("_stImg*");
}

MyEdit::~MyEdit()
{
    stopThreads();
}

void MyEdit::stopThreads()
{
    RecChar::setEdit(nullptr);
    if (m_soundThread && m_soundThread->isRunning()) {
        StopTTS();
        m_soundThread->wait();
    }
    if (m_recThread)
        m_recThread->wait();
    takeOverThread(m_soundThread);
    takeOverThread(m_recThread);
}

void MyEdit::Init()
{
    setStyleSheet(QStringLiteral("border: none;"));
    m_separators = QString::fromUtf8(separatorSet);
    setScrollBar();
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_foreground = QStringLiteral("white");
    m_background = QStringLiteral("black");
    if (!ConfigReader::reader)
        ConfigReader::reader = new ConfigReader;
    RecChar::setEdit(this);
    m_soundThread = new CSoundThread(this, this);
    m_recThread = new CRecThread(this, this);
    connect(this, &MyEdit::signalEdit, this, &MyEdit::Recognize, Qt::QueuedConnection);
    connect(m_recThread, &QThread::finished, this, &MyEdit::FinishRec);
    connect(m_soundThread, &QThread::finished, this, &MyEdit::FinishSound);
}

void MyEdit::setScrollBar()
{
    verticalScrollBar()->setStyleSheet(QLatin1String(normalScrollBar));
}

void MyEdit::changeScrollBar()
{
    verticalScrollBar()->setStyleSheet(QLatin1String(otherScrollBar));
}

int MyEdit::Recognize(_stImg *img)
{
    // made by the scanner's thread, the recognition's last run ended: Qt's queue ordered both
    takeOverThread(img);
    takeOverThread(m_recThread);
    StopTTS();
    // a new line ends the reading: its words are lit no more
    resetHighlights();
    restoreAfterReading();
    if (m_recThread->isRunning()) {
        freeImg(img);
        return -1;
    }
    delete m_sandGlass;
    m_sandGlass = new SandGlass(this);
    m_sandGlass->setGeometry(QRect(QPoint(100, 10), QPoint(132, 42)));
    m_sandGlass->show();
    // a recognition that finds nothing must not bring back the text of the one before
    m_recognised.clear();
    m_recThread->setImg(img);
    m_recThread->start(QThread::InheritPriority);
    m_recFailed = false;
    return 0;
}

int MyEdit::RecThread(_stImg *img)
{
    if (!img || !img->pixels) {
        freeImg(img);
        return -1;
    }
    const int direction = ConfigReader::reader ? ConfigReader::reader->getScanDirectInfo() : 0;
    qDebug() << "vertical:" << direction;
    qDebug() << "recognize start-----------";
    if (!OCRPen::ocr)
        OCRPen::ocr = new OCRPen;
    QString text;
    const int status =
        OCRPen::ocr->recognize(img->pixels, img->width, img->height, direction, img->flag, text);
    qDebug() << "recognize return";
    if (status != 0) {
        qDebug() << "Recognize failed";
        m_recFailed = true;
    } else {
        qDebug() << "Recognize success";
    }
    freeImg(img);
    if (text.isEmpty())
        return -2;
    qDebug() << "content---" << text;
    m_recognised = text;
    return status;
}

void MyEdit::FinishRec()
{
    qDebug() << "in MyEdit::FinishRec";
    takeOverThread(m_recThread);
    if (m_sandGlass) {
        m_sandGlass->close();
        delete m_sandGlass;
        m_sandGlass = nullptr;
    }
    if (m_recognised.isEmpty())
        return;
    if (!m_hold) {
        appendText(m_recognised);
        repaint();
    }
    emit signalRecFinished(m_recognised);
}

void MyEdit::appendText(QString &text)
{
    m_tooBig = false;
    if (text.isEmpty())
        return;
    QString saved = toPlainText();
    saved.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    const int extra = text == QLatin1String("\n    ") ? 1 : 0;
    if ((text.size() + extra + saved.size()) * 2 > maxBytes) {
        m_tooBig = true;
        MessageDialog notice(this, tr("The file is too big, please create new file!"), 2000);
        notice.exec();
        return;
    }
    QTextCursor cursor = textCursor();
    const int start = cursor.position();
    cursor.clearSelection();
    if (wantsBlank(text.at(text.size() - 1)))
        text += QLatin1Char(' ');
    cursor.insertText(text);
    selectRange(start, start + text.size());
    m_hasText = 1;
    if (m_autoRead)
        readText(text, start);
}

void MyEdit::appendScanText(QString text)
{
    appendText(text);
}

void MyEdit::Sound(QString & /*text*/) {}

void MyEdit::tirggleTTShignlight(int /*pos*/, int /*len*/, int /*pcmPos*/) {}

void MyEdit::FinishSound()
{
    takeOverThread(m_soundThread);
    sendToShell("soundno");
    m_soundFinished = 1;
    m_soundRunning = false;
    if (m_readPending) {
        m_readPending = false;
        startReading(m_pendingText, m_pendingStart);
        return;
    }
    if (m_highlights.isEmpty())
        restoreAfterReading();
}

void MyEdit::restoreAfterReading()
{
    // the next scanned line goes where the user's cursor was, not after the last word lit
    if (m_restorePending)
        setTextCursor(m_readCursor);
    m_restorePending = false;
}

void MyEdit::StopTTS()
{
    // also a reading that has not reached the engine yet: it is not to start at all
    m_readCancelled = true;
    m_readPending = false;
    if (speech()->stop() != 0)
        qDebug() << "tts in stoptts stop error";
}

void MyEdit::readText(const QString &text, int start)
{
    if (text.isEmpty() || !m_soundThread)
        return;
    resetHighlights();
    if (!m_restorePending)
        m_readCursor = textCursor();
    m_restorePending = true;
    if (m_soundRunning) {
        // never wait here for the engine: the reading under way ends within a slice of audio,
        // and this one starts as soon as it has
        StopTTS();
        m_pendingText = text;
        m_pendingStart = start;
        m_readPending = true;
        return;
    }
    startReading(text, start);
}

void MyEdit::startReading(const QString &text, int start)
{
    m_readStart = start;
    m_soundFinished = 0;
    m_readCancelled = false;
    m_soundRunning = true;
    m_soundThread->setContent(text);
    m_soundThread->start();
}

bool MyEdit::isReading() const
{
    return m_soundRunning;
}

void MyEdit::resetHighlights()
{
    m_highlights.clear();
    m_prePcmPos = 0;
    m_preTime = 0;
    m_preTimeval = timeval{};
    ++m_readGeneration;
}

void MyEdit::TTShignlightFun(int pos, int len, int pcmPos)
{
    timeval now{};
    gettimeofday(&now, nullptr);
    highlightAt(pos, len, pcmPos, now);
}

int MyEdit::highlightAt(int pos, int len, int pcmPos, const timeval &now)
{
    qDebug() << "in MyEdit::TTShignlightFun" << pos << len << pcmPos << m_inTrans;
    if (m_inTrans)
        return -1;
    m_nowTimeval = now;
    if (m_preTimeval.tv_sec != 0) {
        m_elapsed = int(
            ((now.tv_sec - m_preTimeval.tv_sec) * 1000000 + (now.tv_usec - m_preTimeval.tv_usec)) /
            1000);
        qDebug() << "huale time is:" << m_elapsed;
    }
    m_highlights.append(HignItem{pos, len});
    // the engine's samples are 16 bits at 22050 a second: 44100 bytes a second
    const int bytes = (pcmPos - m_prePcmPos) * 2;
    const double seconds = bytes / 44100.0;
    int delay = int(seconds * 1000.0);
    qDebug() << "pcmPos:" << pcmPos << "m_prePcmPos:" << m_prePcmPos << "pcmLen:" << bytes
             << "speed:" << seconds << "highTime:" << delay << "time pre is" << m_preTime
             << "time is" << delay;
    if (delay < m_preTime) {
        // a short word must not light up before the one scheduled ahead of it
        qDebug() << "time < m_preTime";
        delay += m_preTime - m_elapsed;
    }
    qDebug() << "time end is :" << delay;
    const int generation = m_readGeneration;
    QTimer::singleShot(qMax(delay, 0), this, [this, generation] {
        if (generation == m_readGeneration)
            hignFun();
    });
    m_prePcmPos = pcmPos;
    m_preTime = delay;
    m_preTimeval = now;
    return delay;
}

const HignItem *MyEdit::nextHighlight() const
{
    return m_highlights.isEmpty() ? nullptr : &m_highlights.first();
}

void MyEdit::hignFun()
{
    if (m_highlights.isEmpty())
        return;
    const HignItem item = m_highlights.takeFirst();
    qDebug() << "dequeue pos:" << item.pos;
    qDebug() << "dequeue len:" << item.len;
    if (m_highlights.isEmpty() && m_soundFinished)
        restoreAfterReading();
}

void MyEdit::highlightWord(int pos, int len)
{
    const int size = document()->characterCount() - 1;
    const int start = qBound(0, pos, size);
    selectRange(start, qBound(start, pos + len, size));
}

void MyEdit::selectRange(int start, int end)
{
    QTextCursor cursor = textCursor();
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
    ensureCursorVisible();
}

// ---- words and keys ----

bool MyEdit::isIdeograph(int pos) const
{
    const QChar c = document()->characterAt(pos);
    return c.script() == QChar::Script_Han || c.script() == QChar::Script_Hiragana ||
           c.script() == QChar::Script_Katakana || c.script() == QChar::Script_Hangul;
}

bool MyEdit::isWordChar(int pos) const
{
    if (pos < 0 || pos >= document()->characterCount() - 1)
        return false;
    const QChar c = document()->characterAt(pos);
    return !c.isSpace() && !c.isNull() && c != QChar::ParagraphSeparator &&
           !m_separators.contains(c);
}

// each Chinese character is a word of its own; other words run to a blank or a separator
int MyEdit::wordEnd(int start) const
{
    if (isIdeograph(start))
        return start + 1;
    int end = start;
    while (isWordChar(end) && !isIdeograph(end))
        ++end;
    return end;
}

int MyEdit::wordStart(int pos) const
{
    if (!isWordChar(pos) || isIdeograph(pos))
        return pos;
    while (isWordChar(pos - 1) && !isIdeograph(pos - 1))
        --pos;
    return pos;
}

int MyEdit::GetNextWod(int pos) const
{
    const int size = document()->characterCount() - 1;
    int next = isWordChar(pos) ? wordEnd(wordStart(pos)) : pos;
    while (next < size && !isWordChar(next))
        ++next;
    return next < size ? next : -1;
}

int MyEdit::GetPrevWod(int pos) const
{
    int before = (isWordChar(pos) ? wordStart(pos) : qMin(pos, document()->characterCount())) - 1;
    while (before >= 0 && !isWordChar(before))
        --before;
    return before < 0 ? -1 : wordStart(before);
}

QString MyEdit::getWordFromMyEdit(int *start) const
{
    const int cursor = textCursor().selectionStart();
    const int pos = isWordChar(cursor) ? wordStart(cursor) : GetNextWod(cursor);
    if (start)
        *start = pos;
    return pos < 0 ? QString() : toPlainText().mid(pos, wordEnd(pos) - pos);
}

bool MyEdit::selectWordNumber(int index)
{
    int pos = isWordChar(0) ? 0 : GetNextWod(0);
    for (int i = 0; i < index && pos >= 0; ++i)
        pos = GetNextWod(pos);
    if (pos < 0)
        return false;
    selectRange(pos, wordEnd(pos));
    return true;
}

void MyEdit::MoveNextWord()
{
    int here = 0;
    getWordFromMyEdit(&here);
    const int next = here < 0 ? -1 : GetNextWod(here);
    if (next >= 0)
        selectRange(next, wordEnd(next));
}

void MyEdit::MovePrevWord()
{
    int here = 0;
    getWordFromMyEdit(&here);
    const int prev = GetPrevWod(here < 0 ? document()->characterCount() : here);
    if (prev >= 0)
        selectRange(prev, wordEnd(prev));
}

void MyEdit::moveLine(int operation)
{
    QTextCursor cursor = textCursor();
    cursor.clearSelection();
    cursor.movePosition(QTextCursor::MoveOperation(operation));
    setTextCursor(cursor);
    ensureCursorVisible();
}

void MyEdit::MoveUp()
{
    moveLine(QTextCursor::Up);
}

void MyEdit::MoveDown()
{
    moveLine(QTextCursor::Down);
}

void MyEdit::PressEnter()
{
    const QTextCursor cursor = textCursor();
    if (cursor.hasSelection()) {
        readText(cursor.selectedText().replace(QChar::ParagraphSeparator, QLatin1Char('\n')),
                 cursor.selectionStart());
        return;
    }
    int start = 0;
    const QString word = getWordFromMyEdit(&start);
    if (!word.isEmpty()) {
        selectRange(start, start + word.size());
        readText(word, start);
    }
}

void MyEdit::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        MovePrev();
        break;
    case Qt::Key_Right:
        MoveNext();
        break;
    case Qt::Key_Up:
        MoveUp();
        break;
    case Qt::Key_Down:
        MoveDown();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        PressEnter();
        break;
    case Qt::Key_Escape:
        if (isReading()) {
            StopTTS();
            // the word after the one heard was told already: it is not to light up
            resetHighlights();
        } else {
            emit signalEsc();
        }
        break;
    default:
        // the view is not typed into
        event->ignore();
        break;
    }
}
