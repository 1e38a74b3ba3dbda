#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QWidget>

class ItemMenu;
class QCopChannel;
class QTimer;

// The recorder's one top-level window and controller: OK records, pauses and resumes, Escape
// stops (asking whether to keep anything of 5 seconds or more), F12 opens the options menu.
// It tells the device shell when the device must stay awake and listens on "recorderprocess".
class RecordMainWnd : public QWidget
{
    Q_OBJECT
public:
    using WndType = int;
    // what the screen shows
    enum DisplayState { DisplayRecording = 0, DisplayPaused = 1, DisplayIdle = 2 };

    RecordMainWnd(QWidget *parent, WndType type);
    ~RecordMainWnd() override;

    static RecordMainWnd *instance() { return mInstance; }

    // Tells the shell the recorder is on screen; returns 1.
    int SendShow();
    void setAutoSleep(bool enable);
    void setAutoShut(bool enable);
    void newRecordOptionWnd();

    int getDisplayState() const { return displayState; }
    int recordedSeconds() const { return recSeconds; }
    QString getTimeText() const { return timeText; }
    QString getCurFileName() const { return curFileName; }
    ItemMenu *getOptionMenu() const { return optionMenu; }
    // the line under the separator: what OK will do next
    QString helpText() const;

signals:
    void startNewOne();

public slots:
    void setRecordState();
    void updateRecTime();
    void startRecord();
    void stopRecord();
    int spaceMessage();
    void escFromRecordMenuSlot();
    void fileFormatChangeSlot(int idx, const QString &str);
    void fileQualityChangeSlot(int idx, const QString &str);
    void playVolumeChangeSlot(int idx, const QString &str);
    void startNewRecord();
    void handleReceived(const QString &message, const QByteArray &data);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void initRecorder();
    void beginRecording();
    void pauseRecording();
    void resumeRecording();
    void leaveOrStop();
    void askToKeep();
    void closeOptionMenu();
    // closes every dialog on screen unanswered, for the shell's stop
    void endDialogs();
    void startClock();
    void recordingEnded();

    static RecordMainWnd *mInstance;

    QCopChannel *channel = nullptr;
    WndType wndType;
    int displayState = DisplayIdle;
    ItemMenu *optionMenu = nullptr;
    QTimer *recTimer = nullptr;
    QString curFileName;
    bool closing = false;
    // the shell has ended the program: a question open then is left unanswered
    bool stopRequested = false;
    int recSeconds = 0;
    QString timeText;
    // the recording's clock since the last start or resume, and the time counted before it
    QElapsedTimer clockBase;
    qint64 clockOffset = 0;
};
