#include "player/musicplayer.h"

MusicPlayer::MusicPlayer() : m_adapter(&m_window), m_controller(&m_files)
{
    m_adapter.attach(&m_controller);
}

void MusicPlayer::start()
{
    m_files.load();
    m_controller.start();
}
