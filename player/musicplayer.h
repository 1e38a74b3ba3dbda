#pragma once

#include "player/filemanager.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "player/playerwndadapter.h"

// The music player as the program runs it: the music list, the player window, the controller that
// plays the list and the adapter between the two, wired together in this one place.
class MusicPlayer
{
public:
    MusicPlayer();

    // Loads the music list and plays its first playable entry, or says there is none.
    void start();

    playerWnd &window() { return m_window; }
    MusicPlayerController &controller() { return m_controller; }

private:
    FileManager m_files;
    playerWnd m_window;
    PlayerWndAdapter m_adapter;
    MusicPlayerController m_controller;
};
