#pragma once

#include <QString>

class MyEdit;
class DictScanEdit;

// The speech engine behind one shared instance (TTSPlayer::player, created on first use by its
// users). Values given to setSpeed, setVolume and setLan are in the engine's own units.
class TTSPlayer
{
public:
    TTSPlayer();

    int init(int unused);
    // always 0, whatever the engine says
    int setLan(int language);
    // Speaks text and returns when it has been spoken or stop() was called from another thread.
    int play(const QString &text);
    int stop();
    int setSpeed(int speed);
    int setVolume(int volume);

    // Shuts the engine down and deletes the shared instance; to be called once, at the end.
    static void quitFun();
    static void setEdit(MyEdit *edit);
    static void setEditD(DictScanEdit *edit);
    // deliberately leaves scanPlayFlag as it is
    static void setScanPlayFlag(bool flag);

    static TTSPlayer *player;
    static MyEdit *editScan;
    static DictScanEdit *editDict;
    static int m_EditId; // 0: speech belongs to the scan view, 1: to the dictionary view
    static bool scanPlayFlag;
};
