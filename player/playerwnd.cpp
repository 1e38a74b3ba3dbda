#include "player/playerwnd.h"

#include "app/qcopchannel.h"
#include "player/mplayerprocess.h"
#include "storage/configwidget.h"
#include "storage/devicepath.h"
#include "storage/tracelog.h"
#include "storage/volume.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"

#include <QKeyEvent>
#include <QPainter>
#include <QRegExp>
#include <QTimer>

#include <cstdio>

playerWnd *playerWnd::instance_ = nullptr;
int playerWnd::lastSeconds = 0;

namespace {

const char shellChannel[] = "mainprocess";
const char shellMessage[] = "lrcplayer(QString)";

// Files shorter than this (hundredths of a second) seek in whole seconds and step 4 % a tick.
constexpr int oneMinute = 6000;
constexpr int quickSeekFirstTick = 150;

void tellShell(const char *command)
{
    QCopChannel::send(QLatin1String(shellChannel), QLatin1String(shellMessage),
                      QString::fromLatin1(command).toLocal8Bit());
}

// Diagnostic lines of the player on standard output.
void say(const char *text)
{
    std::printf("%s\n", text);
    std::fflush(stdout);
}

// An outline covering exactly the pixels from topLeft to bottomRight (a stroked QRect is drawn
// one pixel wider and higher than its size).
QRect pixelBox(const QPoint &topLeft, const QPoint &bottomRight)
{
    return QRect(topLeft, bottomRight - QPoint(1, 1));
}

} // namespace

playerWnd::playerWnd(QWidget *parent) : QWidget(parent)
{
    setWindowFlags(Qt::FramelessWindowHint);
    setGeometry(0, 0, 256, 64);
    ConfigWidget *settings = ConfigWidget::instance();
    m_loopMode = settings->getLoopMode();
    m_volumeLevel = settings->getPlayVolume();
    m_volumePercent = m_volumeLevel * 20;
    set_volume(m_volumePercent);
    initPlayerProc();
    m_pauseImage.load(devicePath(QStringLiteral("/apps/res/pause.bmp")));
    m_playImage.load(devicePath(QStringLiteral("/apps/res/play.bmp")));
    m_quickSeekTimer = new QTimer(this);
    connect(m_quickSeekTimer, &QTimer::timeout, this, &playerWnd::quickSeekPos);
    m_quickSeeking = false;
    m_labelMode = false;
    m_reportEnd = true;
    m_updateSeconds = true;
    m_shownState = 0;
    instance_ = this;
}

playerWnd::~playerWnd()
{
    setLrcAutoSleep(true);
    setNoLrcAutoSleep(true);
    if (m_process) {
        // nothing of a dying window may run from the child's last signals; the process object
        // kills and reaps a child still running
        m_process->disconnect(this);
        if (m_process->isRunning()) {
            m_process->kill();
            m_process->waitForFinished(5000);
        }
        delete m_process;
        m_process = nullptr;
    }
    if (instance_ == this)
        instance_ = nullptr;
}

playerWnd *playerWnd::instance()
{
    return instance_;
}

void playerWnd::destory()
{
    delete instance_;
    instance_ = nullptr;
}

QString playerWnd::stateToString(State state)
{
    switch (state) {
    case Stopped:
        return QStringLiteral("Stopped");
    case Playing:
        return QStringLiteral("Playing");
    case Paused:
        return QStringLiteral("Paused");
    }
    return QStringLiteral("Unknown");
}

void playerWnd::initPlayerProc()
{
    m_state = Stopped;
    m_shownState = 0;
    m_updateTimer = nullptr;
    m_totalLength = 0;
    if (m_process)
        return;
    m_process = new MplayerProcess(this);
    connect(m_process, &QProcess::errorOccurred, this, &playerWnd::processError);
    connect(m_process, &MplayerProcess::processExited, this, &playerWnd::processFinished,
            Qt::QueuedConnection);
    connect(m_process, &MplayerProcess::receivedCurrentSec, this, &playerWnd::changeCurrentSec);
    connect(m_process, &MplayerProcess::receivedPause, this, &playerWnd::changePause);
    connect(m_process, &MplayerProcess::receivedEndOfFile, this, &playerWnd::fileReachedEnd,
            Qt::QueuedConnection);
    connect(this, &playerWnd::stateChanged, this, &playerWnd::watchState);
}

void playerWnd::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit stateChanged(state);
}

int playerWnd::startPlay(int index, const QFileInfo &file, const QString &lengthText,
                         long startSeconds, int extra)
{
    m_curIndex = index;
    m_fileInfo = file;
    m_lengthText = lengthText;
    m_lengthTextParsed = lengthText;
    m_extra = extra;
    m_labelMode = false;
    m_labelIndex = 0;
    m_labelTime = 0;
    m_labelCount = 0;
    m_nextAction = 0;
    m_quickSeekPos = 0;
    m_quickSeekDirection = 0;
    m_quickSeeking = false;
    lastSeconds = 0;

    m_absolutePath = file.absoluteFilePath();
    m_baseName = file.baseName();
    m_title = m_baseName;
    m_timeText = QStringLiteral("00:00:00");

    if (m_process) {
        // the screen says "playing" before the child has even started
        setState(Playing);
        m_process->clearArguments();
        m_process->addArgument(devicePath(QStringLiteral("/usr/bin/mplayer")));
        m_process->addArgument(QStringLiteral("-identify"));
        m_process->addArgument(QStringLiteral("-slave"));
        // a WAV file gets the same command line as any other
        m_process->addArgument(m_absolutePath);
        m_process->addArgument(QStringLiteral("-ss"));
        m_process->addArgument(QString::number(startSeconds));
        if (!m_process->start())
            LOGW("mplayer could not be started for %s", m_absolutePath.toLocal8Bit().constData());
    }
    if (!m_updateTimer) {
        m_updateTimer = new QTimer(this);
        connect(m_updateTimer, &QTimer::timeout, this, &playerWnd::updateWnd);
    }
    m_totalLength = strTimeNumber(m_lengthTextParsed);
    m_reportEnd = true;
    m_shownState = 1;
    m_currentSec = 0;
    update();
    return 0;
}

void playerWnd::tellmp(const QString &command)
{
    if (m_process && m_process->isRunning())
        m_process->writeToStdin(command);
    else
        LOGW(" tellmp: no process running: %s", command.toUtf8().constData());
}

QString playerWnd::seek_cmd(double value, int mode)
{
    return QStringLiteral("seek %1 %2").arg(value).arg(mode);
}

void playerWnd::Seek(double secs, int mode)
{
    if (!m_process || !m_process->isRunning()) {
        say("mplayer is not running");
        return;
    }
    tellmp(seek_cmd(secs, mode));
}

void playerWnd::Seek(double secs)
{
    Seek(secs, 2);
}

bool playerWnd::play()
{
    const bool running = m_process && m_process->isRunning();
    if (running && m_state == Paused) {
        tellmp(QStringLiteral("pause"));
        return true;
    }
    return running;
}

bool playerWnd::pause()
{
    if (!m_process || !m_process->isRunning())
        return false;
    tellmp(QStringLiteral("pause"));
    return true;
}

void playerWnd::stopMplayer()
{
    if (m_process && m_process->isRunning()) {
        tellmp(QStringLiteral("quit"));
        if (!m_process->waitForFinished(5000)) {
            LOGW("mplayer did not quit: killed");
            m_process->kill();
            m_process->waitForFinished(5000);
        }
    }
    if (m_updateTimer)
        m_updateTimer->stop();
    setState(Stopped);
}

void playerWnd::stopPlay()
{
    m_reportEnd = false;
    stopMplayer();
}

void playerWnd::quitCurPlay()
{
    m_nextAction = 2;
    m_reportEnd = false;
    stopMplayer();
}

void playerWnd::forcePlayOne(int index)
{
    stopMplayer();
    m_nextAction = index;
}

bool playerWnd::isPlaying() const
{
    return m_state == Playing;
}

int playerWnd::getCurPlayingIdx() const
{
    return m_curIndex;
}

int playerWnd::isCurIdxPlaying(int index) const
{
    if (index != m_curIndex)
        return m_shownState == 1 ? 0 : 3;
    if (m_shownState == 1 || m_shownState == 2)
        return m_shownState;
    say("undefined state");
    return 3;
}

QString playerWnd::formatTime(int seconds)
{
    if (seconds < 3600)
        return QString::asprintf("%02d:%02d", seconds / 60, seconds % 60);
    return QString::asprintf("%02d:%02d:%02d", seconds / 3600, (seconds / 60) % 60, seconds % 60);
}

int playerWnd::strTimeNumber(const QString &text)
{
    static const QRegExp longForm(QStringLiteral("\\d\\d:\\d\\d\\:\\d\\d"));
    static const QRegExp shortForm(QStringLiteral("\\d\\d:\\d\\d"));
    auto number = [&text](int at) { return text.midRef(at, 2).toInt(); };
    int at = longForm.indexIn(text);
    if (at > -1)
        return (number(at) * 3600 + number(at + 3) * 60 + number(at + 6)) * 100;
    at = shortForm.indexIn(text);
    if (at > -1)
        return (number(at) * 60 + number(at + 3)) * 100;
    return 0;
}

void playerWnd::applyVolume()
{
    setSpeakerVolume(m_volumePercent);
    set_volume(m_volumePercent);
}

void playerWnd::changeVolume(int direction)
{
    if (direction == 0 && m_volumePercent >= 20)
        m_volumePercent -= 20;
    else if (direction == 1 && m_volumePercent < 100)
        m_volumePercent += 20;
    m_volumeLevel = m_volumePercent / 20;
    ConfigWidget::instance()->setPlayVolume(m_volumeLevel);
    applyVolume();
}

void playerWnd::resetVol()
{
    set_volume(m_volumePercent);
}

void playerWnd::quitPlayerWnd()
{
    if (m_state == Stopped) {
        stopMplayer();
        emit playerwndQuit();
        emit playerwndHide();
        return;
    }
    // playback goes on without the screen
    hide();
    emit playerwndHide();
}

void playerWnd::newPlayOptionMenu()
{
    if (m_optionMenu) {
        m_optionMenu->show();
        m_optionMenu->setFocus();
        return;
    }
    ConfigWidget *settings = ConfigWidget::instance();
    m_optionMenu = new ItemMenu(this);
    m_optionMenu->setGeometry(0, 0, 256, 64);
    connect(m_optionMenu, &ItemMenu::escPressed, this, &playerWnd::escFromPlayOptionMenuSlot);
    // leaving the menu hands the screen back here, never closes the program
    m_optionMenu->setPrevWidget(this);

    auto *volume = new KoSpinSlide(m_optionMenu);
    volume->setText1(tr("Volume"));
    volume->addItem(QVector<QString>{"0", "6", "12", "18", "24", "30"});
    volume->setCurIndex(settings->getPlayVolume());
    connect(volume, &SpinItems::triggered, this, &playerWnd::playVolumeChangeSlot);
    m_optionMenu->addItem(volume);

    auto *loop = new KoSpinBox(m_optionMenu);
    loop->setText1(tr("Loop Mode"));
    loop->addItem(QVector<QString>{"Repeat one", "Pepeat all", "Not repeat"});
    // the loop modes are wider than the room between the arrows at their usual place: the value
    // block moves left, where the caption still ends well before it
    loop->setGoFrontFlag(true);
    loop->setCurIndex(settings->getLoopMode());
    connect(loop, &SpinItems::triggered, this, &playerWnd::loopModeChangeSlot);
    m_optionMenu->addItem(loop);

    m_optionMenu->show();
    m_optionMenu->setFocus();
}

void playerWnd::escFromPlayOptionMenuSlot()
{
    if (m_optionMenu) {
        // the menu is still inside its own key handler
        m_optionMenu->hide();
        m_optionMenu->deleteLater();
        m_optionMenu = nullptr;
    }
    show();
    setFocus();
    update();
}

void playerWnd::playVolumeChangeSlot(int level, const QString &)
{
    ConfigWidget::instance()->setPlayVolume(level);
    m_volumeLevel = level;
    m_volumePercent = qMin(level * 20, 100);
    applyVolume();
}

void playerWnd::loopModeChangeSlot(int mode, const QString &)
{
    ConfigWidget::instance()->setLoopMode(mode);
}

void playerWnd::setLrcAutoSleep(bool enable)
{
    tellShell(enable ? "enableShutLed" : "disableShutLed");
}

void playerWnd::setNoLrcAutoSleep(bool enable)
{
    tellShell(enable ? "enableAutoSleep" : "disableAutoSleep");
}

void playerWnd::watchState(playerWnd::State state)
{
    setNoLrcAutoSleep(state != Playing);
}

void playerWnd::changeCurrentSec(double sec)
{
    if (!m_process || !m_process->isRunning()) {
        say("mplayer is not running !!!!!!!!");
        return;
    }
    const int t = static_cast<int>(sec);
    const int cs = static_cast<int>(sec * 100.0);
    if (m_totalLength < cs) {
        std::printf("wrong time, curtime is %d\n", t);
        std::fflush(stdout);
        return;
    }
    m_currentSec = sec;
    m_timeText = formatTime(t);
    if (m_state != Playing) {
        setState(Playing);
        m_shownState = 1;
        say("set play state  Playing ~~~~~~~");
    }
    // at most one refresh a second
    if (cs - lastSeconds < 100)
        return;
    lastSeconds = cs;
    if (m_updateSeconds)
        update();
}

void playerWnd::changePause()
{
    setState(Paused);
}

void playerWnd::processFinished()
{
    if (m_updateTimer)
        m_updateTimer->stop();
    setState(Stopped);
    m_shownState = 0;
    const int exitCode = m_process->exitCode();
    if (exitCode != 0) {
        emit mplayerFinishedWithError(exitCode);
        return;
    }
    if (m_reportEnd) {
        say("emit mplayerPlayFinished ~~~~~`");
        emit mplayerPlayFinished(m_nextAction);
    } else {
        // a user's stop swallows exactly this one report
        say("~~~~~~~~~~~~ not send finished signal");
        m_reportEnd = true;
    }
}

void playerWnd::processError() {}

void playerWnd::processStandOutPut() {}

void playerWnd::delayToSeek() {}

void playerWnd::fileReachedEnd() {}

void playerWnd::setUpdateSecondsEnable()
{
    m_updateSeconds = true;
    lastSeconds = 0;
    update();
}

void playerWnd::setStartTimer()
{
    gettimeofday(&m_startTime, nullptr);
}

void playerWnd::updateWnd()
{
    update();
}

void playerWnd::hideSeekWnd()
{
    if (m_seekTip)
        m_seekTip->hide();
}

void playerWnd::stopQuickSeek()
{
    hideSeekWnd();
    m_quickSeeking = false;
    m_quickSeekTimer->stop();
}

void playerWnd::seekToLabelTime()
{
    Seek(qMin(m_totalLength / 100 - 2, m_labelTime), 2);
}

int playerWnd::quickSeekInterval() const
{
    return m_quickSeekTimer->interval();
}

void playerWnd::startQuickSeek(int direction)
{
    m_quickSeekPos =
        m_totalLength > 0 ? static_cast<int>(m_currentSec * 100.0 * 100.0 / m_totalLength) : 0;
    m_quickSeeking = true;
    m_updateSeconds = false;
    m_quickSeekDirection = direction;
    m_quickSeekTimer->start(quickSeekFirstTick);
}

void playerWnd::quickSeekPos()
{
    if (!m_quickSeeking) {
        m_quickSeekTimer->stop();
        update();
        return;
    }
    const int step = m_totalLength < oneMinute ? 4 : 1;
    const int p = step * m_quickSeekDirection + m_quickSeekPos;
    int interval;
    if (p >= 101) {
        m_quickSeekPos = 100;
        interval = 50;
    } else if (p < 0) {
        m_quickSeekPos = 0;
        interval = 150;
    } else {
        // the further into the file, the faster the pointer moves
        m_quickSeekPos = p;
        interval = 150 - 10 * (p / 10);
    }
    m_quickSeekTimer->start(interval);
    update();
}

void playerWnd::endQuickSeek()
{
    m_quickSeekTimer->stop();
    m_quickSeeking = false;
    if (m_quickSeekPos < 100) {
        if (m_totalLength >= oneMinute)
            Seek(m_quickSeekPos, 1);
        else
            // NOLINTNEXTLINE(bugprone-integer-division): the player seeks to whole seconds
            Seek(m_quickSeekPos * m_totalLength / 10000, 2);
    } else {
        // the very end would end the run at once: three seconds before it
        // NOLINTNEXTLINE(bugprone-integer-division): the player seeks to whole seconds
        Seek(m_totalLength / 100 - 3, 2);
    }
    QTimer::singleShot(1500, this, &playerWnd::setUpdateSecondsEnable);
}

void playerWnd::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        if (m_state != Stopped)
            stopMplayer();
        else
            close();
        break;
    case Qt::Key_Return:
        if (m_shownState == 0)
            break;
        m_shownState = m_shownState == 1 ? 2 : 1;
        pause();
        update();
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (!m_labelMode) {
            changeVolume(event->key() == Qt::Key_Up ? 1 : 0);
            update();
        }
        break;
    case Qt::Key_Left:
        if (m_labelMode) {
            m_labelIndex = qMax(m_labelIndex - 1, 0);
            seekToLabelTime();
        }
        break;
    case Qt::Key_Right:
        if (m_labelMode) {
            m_labelIndex = qMin(m_labelIndex + 1, m_labelCount - 1);
            seekToLabelTime();
        }
        break;
    case Qt::Key_F5:
    case Qt::Key_F6:
        // a held key repeats on a PC; the pen sends one press and one release
        if (!event->isAutoRepeat())
            startQuickSeek(event->key() == Qt::Key_F5 ? -1 : 1);
        break;
    case Qt::Key_F7:
    case Qt::Key_F8:
        stopMplayer();
        m_nextAction = event->key() == Qt::Key_F7 ? -1 : 1;
        break;
    case Qt::Key_F12:
        newPlayOptionMenu();
        break;
    default:
        QWidget::keyPressEvent(event);
        break;
    }
}

void playerWnd::keyReleaseEvent(QKeyEvent *event)
{
    if ((event->key() == Qt::Key_F5 || event->key() == Qt::Key_F6) && !event->isAutoRepeat())
        endQuickSeek();
}

QString playerWnd::helpText() const
{
    return m_shownState == 1 ? tr("Press OK to Pause") : tr("Press OK to Play");
}

void playerWnd::mouseMoveEvent(QMouseEvent *) {}

void playerWnd::paintEvent(QPaintEvent *)
{
    if (m_optionMenu)
        return;
    QPainter painter(this);
    painter.setPen(QPen(palette().brush(QPalette::Current, QPalette::Text), 0));
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(0, 20, 256, 20);

    if (m_shownState == 1) {
        painter.drawRect(pixelBox(QPoint(175, 33), QPoint(176, 39)));
        painter.drawRect(pixelBox(QPoint(180, 33), QPoint(181, 39)));
    } else {
        painter.drawRect(pixelBox(QPoint(175, 33), QPoint(181, 39)));
    }
    painter.drawText(QPoint(10, 55), helpText());
    painter.drawText(QPoint(190, 44), m_timeText);

    int end = 0;
    if (m_totalLength != 0) {
        end = m_quickSeeking ? m_quickSeekPos * 254 / 100 - 3
                             : static_cast<int>(m_currentSec) * 25400 / m_totalLength;
    }
    // compared unsigned: a negative end draws nothing
    if (static_cast<unsigned>(end) < 255) {
        painter.drawRect(pixelBox(QPoint(2, 21), QPoint(end + 1, 23)));
        if (m_quickSeeking) {
            const QPoint pointer[] = {QPoint(end + 2, 21), QPoint(end + 5, 21),
                                      QPoint(end + 2, 24)};
            painter.drawPolygon(pointer, 3);
        }
    }
}
