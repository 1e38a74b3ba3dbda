#pragma once

#include <QObject>

class FileManager;
class playerWnd;

// Plays a music list in the player window: starts the window on a file and, at the end of each
// run, picks the next one from the action the window reports (previous, next, natural end) and
// the stored loop mode. Files that are gone are skipped and logged. Escape during play stops
// without moving on; the window closing ends the controller's work (finished()).
class MusicPlayerController : public QObject
{
    Q_OBJECT

public:
    enum LoopMode { RepeatOne = 0, RepeatAll = 1, NotRepeat = 2 };

    MusicPlayerController(FileManager *files, playerWnd *window, QObject *parent = nullptr);

    // Plays the first existing file from index on (wrapping); false when the list has none.
    bool start(int index = 0);
    int currentIndex() const { return m_index; }

signals:
    void finished();

private slots:
    void playFinished(int nextAction);
    void playFailed(int exitCode);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // From index on in steps of direction (wrapping), the first file that exists; -1 for none.
    int findPlayable(int index, int direction) const;
    bool playFrom(int index, int direction);

    FileManager *m_files;
    playerWnd *m_window;
    int m_index = -1;
    int m_direction = 1;
    int m_failures = 0;
    bool m_stoppedByUser = false;
    bool m_positionSeen = false;
};
