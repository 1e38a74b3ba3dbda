#include "player/musicplayercontroller.h"

#include "player/filemanager.h"
#include "player/mplayerprocess.h"
#include "player/playerwnd.h"
#include "storage/configwidget.h"
#include "storage/tracelog.h"

#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>

MusicPlayerController::MusicPlayerController(FileManager *files, playerWnd *window, QObject *parent)
    : QObject(parent), m_files(files), m_window(window)
{
    connect(window, &playerWnd::mplayerPlayFinished, this, &MusicPlayerController::playFinished);
    connect(window, &playerWnd::mplayerFinishedWithError, this, &MusicPlayerController::playFailed);
    connect(window->process(), &MplayerProcess::receivedCurrentSec, this,
            [this] { m_positionSeen = true; });
    window->installEventFilter(this);
}

bool MusicPlayerController::start(int index)
{
    m_failures = 0;
    return playFrom(index, 1);
}

int MusicPlayerController::findPlayable(int index, int direction) const
{
    const int count = m_files->count();
    for (int tries = 0; tries < count; ++tries) {
        const int candidate = ((index + direction * tries) % count + count) % count;
        if (m_files->exists(candidate))
            return candidate;
        LOGW("music file missing, skipped: %s", m_files->at(candidate).constData());
    }
    return -1;
}

bool MusicPlayerController::playFrom(int index, int direction)
{
    const int found = m_files->count() == 0 ? -1 : findPlayable(index, direction);
    if (found < 0) {
        LOGW("music list has no file to play");
        return false;
    }
    m_index = found;
    m_direction = direction;
    m_stoppedByUser = false;
    m_positionSeen = false;
    const QByteArray path = m_files->filePath(found);
    LOGI("playing %d: %s", found, m_files->at(found).constData());
    // decoded and encoded again on the way to exec, the name keeps its bytes (CardNameCodec)
    m_window->startPlay(found, QFileInfo(QFile::decodeName(path)), FileManager::lengthText(path),
                        0, 0);
    return true;
}

void MusicPlayerController::playFinished(int nextAction)
{
    if (m_stoppedByUser) {
        // Escape stopped the run: the window waits for the next Escape to leave
        m_stoppedByUser = false;
        return;
    }
    switch (nextAction) {
    case -1:
        m_failures = 0;
        playFrom(m_index - 1, -1);
        break;
    case 1:
        m_failures = 0;
        playFrom(m_index + 1, 1);
        break;
    case 0:
        // a run without a single position could not play its file (mplayer says so and exits
        // as after a natural end)
        if (!m_positionSeen) {
            playFailed(0);
            break;
        }
        m_failures = 0;
        switch (ConfigWidget::instance()->getLoopMode()) {
        case RepeatOne:
            playFrom(m_index, 1);
            break;
        case RepeatAll:
            playFrom(m_index + 1, 1);
            break;
        default:
            if (m_index + 1 < m_files->count())
                playFrom(m_index + 1, 1);
            else
                LOGI("end of the music list");
            break;
        }
        break;
    default:
        // the current run was quit: nothing follows
        break;
    }
}

void MusicPlayerController::playFailed(int exitCode)
{
    LOGW("mplayer failed on %s (exit code %d)", m_files->at(m_index).constData(), exitCode);
    // one round of failures over the whole list ends the attempts
    if (m_stoppedByUser || ++m_failures >= m_files->count())
        return;
    playFrom(m_index + m_direction, m_direction);
}

bool MusicPlayerController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window) {
        if (event->type() == QEvent::KeyPress &&
            static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape &&
            m_window->state() != playerWnd::Stopped)
            m_stoppedByUser = true;
        else if (event->type() == QEvent::Close)
            emit finished();
    }
    return QObject::eventFilter(watched, event);
}
