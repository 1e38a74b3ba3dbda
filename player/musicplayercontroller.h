#pragma once

#include <QByteArray>
#include <QObject>
#include <QVector>

class FileManager;

// Plays a music list one run of the player at a time, by the stored loop mode: "Not repeat" plays
// each playable entry once in order and stops at the end, "Repeat all" wraps, "Repeat one"
// repeats. An entry whose file is gone is skipped; one whose run never reached a position (the
// file cannot be played, the player cannot start) is skipped and not started again, so that no
// loop mode starts the player more than once per playable entry per round. Stopped, OK plays the
// current entry, F7/F8 the previous/next, Escape leaves.
// Commands go out as signals and the player's runs and keys come in as slots: wired to the window
// by PlayerWndAdapter in the program, driven directly in tests.
class MusicPlayerController : public QObject
{
    Q_OBJECT

public:
    enum LoopMode { RepeatOne = 0, RepeatAll = 1, NotRepeat = 2 };

    explicit MusicPlayerController(FileManager *files, QObject *parent = nullptr);

    // Plays the first playable entry; nothingToPlay() when there is none.
    void start();
    // A run of the player is under way (from playRequested to its end).
    bool isRunning() const { return m_running; }

signals:
    // Start a run of the player on the entry's file (its path on this machine).
    void playRequested(int index, const QByteArray &path);
    // Nothing in the list can be played: say so; OK or Escape then leaves.
    void nothingToPlay();
    void leaveRequested();

public slots:
    // The run has reached a position: its entry can be played.
    void runPlaying();
    // The run is over; nextAction as the window reports it: 0 at the end of the file or after a
    // stop, -1 previous, 1 next, anything else the run was quit.
    void runEnded(int nextAction);
    // The run ended with an exit code other than 0: the player failed, could not start or was
    // killed.
    void runFailed(int exitCode);
    // OK, F7, F8 or Escape in the player: during a run noted for its end, stopped acted on.
    void keyPressed(int key);

private:
    void runOver(int nextAction, bool failed);
    bool playable(int index) const;
    // From index on in steps of direction (wrapping or not), the first playable entry; -1 for none.
    int find(int index, int direction, bool wrap) const;
    void playFrom(int index, int direction, bool wrap);
    void play(int index);

    FileManager *m_files;
    // entries whose run never reached a position
    QVector<bool> m_failed;
    int m_index = -1;
    // of the user's last F7 (-1) or F8 (1); the order of the list again at a file's end
    int m_direction = 1;
    // F7/F8 during the run: the run's end moves that way, whatever the window reports
    int m_userStep = 0;
    bool m_running = false;
    bool m_played = false;
    bool m_userStop = false;
};
