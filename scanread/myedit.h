#pragma once

#include "scanread/hignitem.h"
#include "scanread/stimg.h"

#include <QList>
#include <QMetaType>
#include <QString>
#include <QTextEdit>

#include <atomic>
#include <sys/time.h>

class CRecThread;
class CSoundThread;
class SandGlass;

// The scan text view: scanned lines are recognised off the GUI thread and appended at the
// cursor, the new text selected so that it can be read aloud; reading schedules the highlight
// of each spoken word from the speech engine's progress. Keys: Left/Right move by word and
// select it, Up/Down move by line, OK reads the selection (or the word at the cursor) aloud,
// Escape stops reading and, when nothing is read, leaves (signalEsc).
// Sound() and tirggleTTShignlight() are the links to the speech engine; they do nothing here and
// are filled in by a subclass.
class MyEdit : public QTextEdit
{
    Q_OBJECT

public:
    explicit MyEdit(QWidget *parent = nullptr);
    ~MyEdit() override;

    void Init();
    void setScrollBar();
    void changeScrollBar();

    // body of the recognition thread; frees img; the engine's status, -1 without pixels, -2
    // when nothing was recognised
    int RecThread(_stImg *img);
    // Appends at the cursor and selects the new text; refused (with a notice) when the text
    // would take the view over 64 KiB of UTF-16 with "\r\n" line ends.
    void appendText(QString &text);
    void appendScanText(QString text);

    // called by the speech thread for each text
    virtual void Sound(QString &text);
    // the speech engine's progress: word position, length, PCM position
    virtual void tirggleTTShignlight(int pos, int len, int pcmPos);
    void StopTTS();
    // while set, progress reports are ignored
    void setTTSFlagInTrans(bool inTrans) { m_inTrans = inTrans; }

    // Reads text aloud, stopping what is being read (without waiting for it: this reading starts
    // once that one has ended); start is its place in the view, so that the engine's word
    // positions can be mapped onto the view.
    void readText(const QString &text, int start);
    // from the start of a reading until its end has been seen
    bool isReading() const;
    // where the text being read starts in the view
    int readStart() const { return m_readStart; }
    // Selects the characters [pos, pos + len) as the word being read and shows it.
    void highlightWord(int pos, int len);
    // The delay in ms after which the word of a progress report is highlighted, for a report
    // received at now; -1 when reports are ignored.
    int highlightAt(int pos, int len, int pcmPos, const timeval &now);

    // word navigation over the separator set; -1 when there is no such word
    int GetNextWod(int pos) const;
    int GetPrevWod(int pos) const;
    // the word at the cursor (or the next one after it); its start in *start
    QString getWordFromMyEdit(int *start = nullptr) const;
    // selects the view's word number index (from 0); false when there is none
    bool selectWordNumber(int index);
    void MoveNextWord();
    void MovePrevWord();
    void MoveNext() { MoveNextWord(); }
    void MovePrev() { MovePrevWord(); }
    void MoveUp();
    void MoveDown();
    void PressEnter();

    // while held, recognised text is only reported, not appended
    void setHold(bool hold) { m_hold = hold; }
    // read each appended text aloud at once (the read-control setting)
    void setAutoRead(bool autoRead) { m_autoRead = autoRead; }
    bool isTooBig() const { return m_tooBig; }
    bool recognitionFailed() const { return m_recFailed; }
    int hasText() const { return m_hasText; }
    int soundFinished() const { return m_soundFinished; }
    QString separators() const { return m_separators; }

public slots:
    // 0 when recognition started, -1 when one is running already (img is freed and dropped)
    int Recognize(_stImg *img);
    void FinishRec();
    void FinishSound();
    void TTShignlightFun(int pos, int len, int pcmPos);
    // the oldest scheduled word is due
    virtual void hignFun();

signals:
    void signalEdit(_stImg *img);
    void signalRecFinished(QString text);
    void signalConfirmReName(QString name);
    void signalCancelReName();
    void signalEsc();
    void singalSound(QString &text);
    void signalDelete();
    void signalTTShignlight(int pos, int len, int pcmPos);
    void signalShow(int kind, QString text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    // the word whose highlight is due next, if any
    const HignItem *nextHighlight() const;
    // Whether the reading handed to the speech thread was stopped (its text is not to be
    // spoken, and its progress is stale); safe from any thread.
    bool readingCancelled() const { return m_readCancelled; }
    // stops reading and recognition and waits for both threads; a subclass whose Sound()
    // does work calls it in its own destructor
    void stopThreads();

private:
    bool isWordChar(int pos) const;
    bool isIdeograph(int pos) const;
    int wordStart(int pos) const;
    int wordEnd(int start) const;
    void selectRange(int start, int end);
    // operation: a QTextCursor::MoveOperation
    void moveLine(int operation);
    void resetHighlights();
    void restoreAfterReading();
    void startReading(const QString &text, int start);

    QString m_recognised;
    std::atomic<bool> m_hold{false};
    bool m_tooBig = false;
    std::atomic<bool> m_recFailed{false};
    int m_hasText = 0;
    QString m_separators;
    QString m_foreground;
    QString m_background;
    CRecThread *m_recThread = nullptr;
    CSoundThread *m_soundThread = nullptr;
    SandGlass *m_sandGlass = nullptr;
    bool m_autoRead = false;

    QList<HignItem> m_highlights;
    int m_prePcmPos = 0;
    int m_preTime = 0;
    timeval m_preTimeval{};
    timeval m_nowTimeval{};
    int m_elapsed = 0;
    bool m_inTrans = false;
    std::atomic<int> m_soundFinished{0};
    std::atomic<int> m_readStart{0};
    std::atomic<bool> m_readCancelled{false};
    // the speech thread runs, or its end has not been seen yet
    bool m_soundRunning = false;
    // what is to be read once the reading under way has ended
    bool m_readPending = false;
    QString m_pendingText;
    int m_pendingStart = 0;
    // pending highlight timers of an earlier reading do not count
    int m_readGeneration = 0;
    // what was selected when reading began, given back once the last word has been lit
    QTextCursor m_readCursor;
    bool m_restorePending = false;
};

Q_DECLARE_METATYPE(_stImg *)
