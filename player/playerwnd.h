#pragma once

#include <QFileInfo>
#include <QPixmap>
#include <QProcess>
#include <QString>
#include <QWidget>

#include <sys/time.h>

class ItemMenu;
class MplayerProcess;
class QTimer;

// The full-screen player: one file at a time through the slave player, a progress bar, the time
// and a play/pause hint; F5/F6 held seek quickly, Up/Down change the volume, F12 opens the option
// menu, F7/F8 ask for the previous/next file. It keeps no list: the end of every run goes to the
// owner as mplayerPlayFinished(next action). One instance per process.
class playerWnd : public QWidget
{
    Q_OBJECT

public:
    enum State { Stopped = 0, Playing = 1, Paused = 2 };
    Q_ENUM(State)

    explicit playerWnd(QWidget *parent = nullptr);
    ~playerWnd() override;

    static playerWnd *instance();
    static void destory();
    static QString stateToString(State state);

    void initPlayerProc();
    // Plays file from startSeconds; lengthText ("hh:mm:ss" or "mm:ss") gives the bar's scale.
    int startPlay(int index, const QFileInfo &file, const QString &lengthText, long startSeconds,
                  int extra);
    void tellmp(const QString &command);
    static QString seek_cmd(double value, int mode);
    // mode 1: percent of the file, 2: absolute seconds
    void Seek(double secs, int mode);
    void Seek(double secs);
    bool play();
    bool pause();
    void stopMplayer();
    // A user's stop: the end of this run is not reported.
    void stopPlay();
    void quitCurPlay();
    void forcePlayOne(int index);
    bool isPlaying() const;
    int getCurPlayingIdx() const;
    int isCurIdxPlaying(int index) const;
    void changeVolume(int direction);
    void resetVol();
    void quitPlayerWnd();
    void newPlayOptionMenu();
    void setLrcAutoSleep(bool enable);
    void setNoLrcAutoSleep(bool enable);
    void seekToLabelTime();

    // Seconds as "mm:ss", from one hour on "hh:mm:ss".
    static QString formatTime(int seconds);
    // A length text in hundredths of a second: "hh:mm:ss" or else "mm:ss" found anywhere in
    // the text; 0 for neither.
    static int strTimeNumber(const QString &text);

    State state() const { return m_state; }
    int shownState() const { return m_shownState; }
    int totalLength() const { return m_totalLength; }
    double currentPosition() const { return m_currentSec; }
    int quickSeekPosition() const { return m_quickSeekPos; }
    int quickSeekInterval() const;
    int volumePercent() const { return m_volumePercent; }
    QString timeText() const { return m_timeText; }
    // The hint under the bar: what OK does next.
    QString helpText() const;
    ItemMenu *optionMenu() const { return m_optionMenu; }
    MplayerProcess *process() const { return m_process; }

    static playerWnd *instance_;
    static int lastSeconds;

signals:
    void aboutToStartPlaying();
    void stateChanged(playerWnd::State state);
    void mplayerFinishedWithError(int exitCode);
    void mplayerFailed(QProcess::ProcessError error);
    void mediaStartPlay();
    void mediaFinished();
    void mediaStoppedByUser();
    void mplayerPlayFinished(int flag);
    void playerwndQuit();
    void repeatSig();
    void forcePlayFlag(int);
    void receiveMenuMsg();
    void playerwndHide();

public slots:
    void changeCurrentSec(double sec);
    void changePause();
    void processFinished();
    void processError();
    void processStandOutPut();
    void delayToSeek();
    void fileReachedEnd();
    void watchState(playerWnd::State state);
    void escFromPlayOptionMenuSlot();
    void playVolumeChangeSlot(int level, const QString &text);
    void loopModeChangeSlot(int mode, const QString &text);
    void setUpdateSecondsEnable();
    void setStartTimer();
    void updateWnd();
    void hideSeekWnd();
    void stopQuickSeek();
    void quickSeekPos();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void setState(State state);
    void startQuickSeek(int direction);
    void endQuickSeek();
    void applyVolume();

    timeval m_startTime{};
    double m_currentSec = 0;
    int m_totalLength = 0;
    QFileInfo m_fileInfo;
    QString m_lengthText;
    QString m_lengthTextParsed;
    int m_extra = 0;
    MplayerProcess *m_process = nullptr;
    State m_state = Stopped;
    int m_shownState = 0;
    int m_loopMode = 0;
    int m_volumePercent = 0;
    int m_volumeLevel = 0;
    QString m_title;
    QString m_baseName;
    QString m_timeText;
    QTimer *m_updateTimer = nullptr;
    QWidget *m_seekTip = nullptr;
    QPixmap m_pauseImage;
    QPixmap m_playImage;
    bool m_quickSeeking = false;
    int m_quickSeekDirection = 0;
    QTimer *m_quickSeekTimer = nullptr;
    int m_quickSeekPos = 0;
    QString m_absolutePath;
    int m_nextAction = 0;
    bool m_labelMode = false;
    int m_curIndex = 0;
    bool m_reportEnd = true;
    int m_labelIndex = 0;
    int m_labelTime = 0;
    int m_labelCount = 0;
    bool m_updateSeconds = true;
    ItemMenu *m_optionMenu = nullptr;
};
