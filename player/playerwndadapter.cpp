#include "player/playerwndadapter.h"

#include "player/filemanager.h"
#include "player/mplayerprocess.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "widgets/messagedialog.h"

#include <QAbstractEventDispatcher>
#include <QFile>
#include <QKeyEvent>
#include <QThread>

#include <utility>

namespace {

// The player writes a status line for every 256 samples it plays (86 a second at 22.05 kHz), and
// each wakeup to read one costs more than the line itself. Resting this long before each wait
// takes them three or four at a time; a key waits no longer than this for its answer.
constexpr unsigned long playingRestMs = 40;

} // namespace

PlayerWndAdapter::PlayerWndAdapter(playerWnd *window, QObject *parent)
    : QObject(parent), m_window(window)
{
    MplayerProcess *process = window->process();
    connect(window, &playerWnd::mplayerPlayFinished, this, &PlayerWndAdapter::runEnded);
    connect(window, &playerWnd::mplayerFinishedWithError, this, &PlayerWndAdapter::runFailed);
    connect(process, &MplayerProcess::receivedCurrentSec, this, [this] {
        if (!std::exchange(m_positionSeen, true))
            emit runPlaying();
    });
    // The window only logs a player that cannot start, and shows it playing for ever: its own
    // end of a run, once startPlay has returned, shows "stopped", tells the shell and reports
    // the failure (QProcess gives such a start the exit code 255).
    connect(process, &QProcess::errorOccurred, window, [window](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            QMetaObject::invokeMethod(window, &playerWnd::processFinished, Qt::QueuedConnection);
    });
    connect(window, &playerWnd::playerwndQuit, window, &QWidget::close);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &PlayerWndAdapter::restWhilePlaying);
    window->installEventFilter(this);
}

void PlayerWndAdapter::attach(MusicPlayerController *controller)
{
    connect(controller, &MusicPlayerController::playRequested, this, &PlayerWndAdapter::play);
    connect(controller, &MusicPlayerController::nothingToPlay, this,
            &PlayerWndAdapter::showNothingToPlay);
    connect(controller, &MusicPlayerController::leaveRequested, this, &PlayerWndAdapter::leave);
    connect(this, &PlayerWndAdapter::runPlaying, controller, &MusicPlayerController::runPlaying);
    connect(this, &PlayerWndAdapter::runEnded, controller, &MusicPlayerController::runEnded);
    connect(this, &PlayerWndAdapter::runFailed, controller, &MusicPlayerController::runFailed);
    connect(this, &PlayerWndAdapter::keyPressed, controller, &MusicPlayerController::keyPressed);
}

void PlayerWndAdapter::play(int index, const QByteArray &path)
{
    m_positionSeen = false;
    // decoded and encoded again on the way to exec, the name keeps its bytes (CardNameCodec)
    m_window->startPlay(index, QFileInfo(QFile::decodeName(path)), FileManager::lengthText(path), 0,
                        0);
}

void PlayerWndAdapter::showNothingToPlay()
{
    auto *message = new MessageDialog(m_window, tr("No music"), 0);
    // after the key that closes the message has been handled there
    connect(message, qOverload<>(&MessageDialog::finished), this, &PlayerWndAdapter::leave,
            Qt::QueuedConnection);
    // the window takes no key while the message is up
    message->open();
}

void PlayerWndAdapter::leave()
{
    // stopped first: quitPlayerWnd only hides a window that plays
    m_window->stopMplayer();
    m_window->quitPlayerWnd();
}

bool PlayerWndAdapter::eventFilter(QObject *watched, QEvent *event)
{
    const bool press = event->type() == QEvent::KeyPress;
    if (watched != m_window || (!press && event->type() != QEvent::KeyRelease))
        return QObject::eventFilter(watched, event);
    const auto *keyEvent = static_cast<QKeyEvent *>(event);
    const int key = keyEvent->key();
    if ((key == Qt::Key_F5 || key == Qt::Key_F6) && !keyEvent->isAutoRepeat())
        m_quickSeeking = press;
    if (!press ||
        (key != Qt::Key_Return && key != Qt::Key_F7 && key != Qt::Key_F8 && key != Qt::Key_Escape))
        return false;
    // stopped, the window would do nothing with OK, F7 and F8, and close on Escape
    const bool stopped = m_window->state() == playerWnd::Stopped;
    emit keyPressed(key);
    return stopped;
}

void PlayerWndAdapter::restWhilePlaying()
{
    // not while F5/F6 are held: the quick-seek pointer's ticks keep their pace
    if (m_window && m_window->state() == playerWnd::Playing && !m_quickSeeking)
        QThread::msleep(playingRestMs);
}
