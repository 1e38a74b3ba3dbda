#pragma once

#include "player/playerwnd.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>

class MusicPlayerController;

// The player window, with its slave player process, as the music player's controller sees it:
// commands in (play an entry, say there is nothing to play, leave), runs and keys out. The window
// is used as it is; what it leaves to its owner is done here:
// - a player that cannot be started ends its run as a failed one, and the window shows "stopped";
// - OK, F7, F8 and Escape go to the controller, and while the window is stopped they are the
//   controller's alone (the window would do nothing with them, or close);
// - while the player plays, the program rests a little before each wait for events, so that the
//   player's status lines are read a few at a time rather than with one wakeup each.
class PlayerWndAdapter : public QObject
{
    Q_OBJECT

public:
    explicit PlayerWndAdapter(playerWnd *window, QObject *parent = nullptr);

    // Wires the controller to the window: the controller's commands to the slots here, the
    // window's runs and keys to the controller's slots.
    void attach(MusicPlayerController *controller);

public slots:
    void play(int index, const QByteArray &path);
    // "No music" on the screen; OK or Escape leaves.
    void showNothingToPlay();
    void leave();

signals:
    void runPlaying();
    void runEnded(int nextAction);
    void runFailed(int exitCode);
    void keyPressed(int key);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void restWhilePlaying();

    QPointer<playerWnd> m_window;
    bool m_quickSeeking = false;
    bool m_positionSeen = false;
};
