#include "player/musicplayercontroller.h"

#include "player/filemanager.h"
#include "storage/configwidget.h"
#include "storage/tracelog.h"

#include <utility>

MusicPlayerController::MusicPlayerController(FileManager *files, QObject *parent)
    : QObject(parent), m_files(files)
{
}

void MusicPlayerController::start()
{
    m_failed.fill(false, m_files->count());
    m_index = -1;
    m_direction = 1;
    playFrom(0, 1, false);
}

bool MusicPlayerController::playable(int index) const
{
    return !m_failed.value(index) && m_files->exists(index);
}

int MusicPlayerController::find(int index, int direction, bool wrap) const
{
    const int count = m_files->count();
    for (int tries = 0; tries < count; ++tries, index += direction) {
        if (wrap)
            index = (index % count + count) % count;
        else if (index < 0 || index >= count)
            break;
        if (playable(index))
            return index;
        if (!m_failed.value(index))
            LOGW("music file missing, skipped: %s", m_files->at(index).constData());
    }
    return -1;
}

void MusicPlayerController::playFrom(int index, int direction, bool wrap)
{
    const int found = find(index, direction, wrap);
    if (found >= 0) {
        play(found);
        return;
    }
    for (int i = 0; i < m_files->count(); ++i) {
        if (playable(i)) {
            LOGI("end of the music list");
            return;
        }
    }
    LOGW("nothing in the music list can be played");
    emit nothingToPlay();
}

void MusicPlayerController::play(int index)
{
    m_index = index;
    m_running = true;
    m_played = false;
    m_userStop = false;
    m_userStep = 0;
    LOGI("playing %d: %s", index, m_files->at(index).constData());
    emit playRequested(index, m_files->filePath(index));
}

void MusicPlayerController::runPlaying()
{
    m_played = m_running;
}

void MusicPlayerController::runEnded(int nextAction)
{
    runOver(nextAction, false);
}

void MusicPlayerController::runFailed(int exitCode)
{
    LOGW("mplayer failed on %s (exit code %d)", m_files->at(m_index).constData(), exitCode);
    runOver(0, true);
}

void MusicPlayerController::runOver(int nextAction, bool failed)
{
    if (!m_running)
        return;
    m_running = false;
    // a run the user ended early says nothing about its file
    if (!m_played && !m_userStop && m_userStep == 0) {
        m_failed[m_index] = true;
        LOGW("music file cannot be played, skipped from now on: %s",
             m_files->at(m_index).constData());
    }
    // a hung player killed after F7 reports a failure, not the step it was stopped for
    const int step = m_userStep != 0 ? m_userStep : nextAction;
    m_userStep = 0;
    if (std::exchange(m_userStop, false))
        return;
    if (step == -1 || step == 1) {
        m_direction = step;
        playFrom(m_index + step, step, true);
        return;
    }
    if (step != 0)
        return;
    const int mode = ConfigWidget::instance()->getLoopMode();
    if (failed || !m_played) {
        playFrom(m_index + m_direction, m_direction, mode != NotRepeat);
        return;
    }
    m_direction = 1;
    playFrom(mode == RepeatOne ? m_index : m_index + 1, 1, mode != NotRepeat);
}

void MusicPlayerController::keyPressed(int key)
{
    const int step = key == Qt::Key_F7 ? -1 : key == Qt::Key_F8 ? 1 : 0;
    if (m_running) {
        // the window stops the run; its end brings the step or the stop
        if (step != 0)
            m_userStep = step;
        else if (key == Qt::Key_Escape)
            m_userStop = true;
        return;
    }
    if (step != 0) {
        m_direction = step;
        playFrom(m_index + step, step, true);
    } else if (key == Qt::Key_Return) {
        if (playable(m_index))
            play(m_index);
        else
            playFrom(0, 1, true);
    } else if (key == Qt::Key_Escape) {
        emit leaveRequested();
    }
}
