#include "recorder/recordmainwnd.h"

#include "app/qcopchannel.h"
#include "recorder/recordthread.h"
#include "storage/configwidget.h"
#include "storage/devicepath.h"
#include "storage/languagemanager.h"
#include "storage/recfilemanager.h"
#include "storage/storagespace.h"
#include "storage/tracelog.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"
#include "widgets/messagedialog.h"
#include "widgets/yesnoselect.h"

#include <QApplication>
#include <QDebug>
#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QPainter>
#include <QSettings>
#include <QTime>
#include <QTimer>

#include <cstdio>
#include <unistd.h>

RecordMainWnd *RecordMainWnd::mInstance = nullptr;

namespace {

const char shellChannel[] = "mainprocess";

// Recordings are split into files of four hours each.
constexpr int splitSeconds = 14400;
// Anything shorter is dropped without asking; from saveQuestionSeconds on the user is asked.
constexpr int keepSeconds = 4;
constexpr int saveQuestionSeconds = 5;

QString clockText(int seconds)
{
    const QTime time((seconds / 3600) % 60, (seconds / 60) % 60, seconds % 60);
    return time.toString(time.hour() == 0 ? QStringLiteral("mm:ss") : QStringLiteral("hh:mm:ss"));
}

void sendToShell(const char *message, const char *word)
{
    QCopChannel::send(QLatin1String(shellChannel), QLatin1String(message),
                      QString::fromLatin1(word).toLocal8Bit());
}

void printSend(const char *word, int line, const char *function)
{
    std::printf(
        "send <%s> [%d] [%s] [%s] at %s \n", word, line, function, __FILE__,
        QTime::currentTime().toString(QStringLiteral("hh:mm:ss")).toLocal8Bit().constData());
    std::fflush(stdout);
}

// An outline covering exactly the pixels from topLeft to bottomRight: a stroked QRect is drawn one
// pixel wider and higher than its size.
QRect outline(const QPoint &topLeft, const QPoint &bottomRight)
{
    return QRect(topLeft, bottomRight - QPoint(1, 1));
}

void sleepMs(int ms)
{
    usleep(static_cast<useconds_t>(ms) * 1000);
}

// Killing and reaping an encoder takes one 100 ms pass of the engine; this is only a bound for an
// engine that hangs.
constexpr int engineEndMs = 10000;

// Drops the newest entry, whose recording is not kept.
void discardNewest()
{
    if (RecFileManager::instance()->removeAt(0) != 0) {
        std::puts("remove fail");
        std::fflush(stdout);
    }
}

} // namespace

RecordMainWnd::RecordMainWnd(QWidget *parent, WndType type) : QWidget(parent), wndType(type)
{
    mInstance = this;
    setWindowFlags(Qt::FramelessWindowHint);
    setGeometry(0, 0, 256, 64);
    channel = new QCopChannel(QStringLiteral("recorderprocess"), this);
    connect(channel, &QCopChannel::received, this, &RecordMainWnd::handleReceived);
    initRecorder();
}

RecordMainWnd::~RecordMainWnd()
{
    closeOptionMenu();
    if (mInstance == this)
        mInstance = nullptr;
}

void RecordMainWnd::initRecorder()
{
    recTimer = new QTimer(this);
    connect(recTimer, &QTimer::timeout, this, &RecordMainWnd::updateRecTime);
    displayState = DisplayIdle;
    timeText = QStringLiteral("00:00");
    recSeconds = 0;
    closing = false;
    bRecording = false;
    isRecord2Mp3 = true;
    bRecPause = RECSOUND_STOPPED;
    setBitRate(ConfigWidget::instance()->getFileQuality());
}

int RecordMainWnd::SendShow()
{
    sendToShell("Show(QString)", "record");
    return 1;
}

void RecordMainWnd::setAutoSleep(bool enable)
{
    const char *word = enable ? "enableAutoSleep" : "disableAutoSleep";
    printSend(word, __LINE__, __func__);
    sendToShell("recorder(QString)", word);
}

void RecordMainWnd::setAutoShut(bool enable)
{
    const char *word = enable ? "enableAutoShut" : "disableAutoShut";
    printSend(word, __LINE__, __func__);
    sendToShell("recorder(QString)", word);
}

int RecordMainWnd::spaceMessage()
{
    // The real refusal happens at start-up; the record is read for its log line only.
    readSpaceRecord();
    return 0;
}

void RecordMainWnd::setRecordState()
{
    switch (bRecPause.load()) {
    case RECSOUND_STOPPED:
        beginRecording();
        break;
    case RECSOUND_RECING:
    case RECSOUND_CONTINUE:
        pauseRecording();
        break;
    case RECSOUND_PAUSED:
        resumeRecording();
        break;
    default:
        break;
    }
}

void RecordMainWnd::beginRecording()
{
    if (spaceMessage() == 1) {
        MessageDialog message(nullptr, tr("No enough disk space."), 2000);
        message.exec();
        return;
    }
    RecFileManager *library = RecFileManager::instance();
    // the previous engine resets the shared state words when it ends: it must be gone first
    if (!waitForEngine(engineEndMs)) {
        LOGW("the previous recording has not ended: nothing started");
        return;
    }
    if (library->init(0) != 0)
        return;
    if (!library->exceedMaxNum()) {
        MessageDialog message(
            nullptr, tr("Exceed the maximum file number, please remove some files."), 4000);
        message.exec();
        return;
    }
    setAutoSleep(false);
    ConfigWidget *settings = ConfigWidget::instance();
    setBitRate(settings->getFileQuality());
    curFileName = library->newFileName();
    LOGD("curRecord file name is %s", qPrintable(curFileName));
    isRecord2Mp3 = settings->getFileFormat() == 0;

    bRecording = true;
    bRecPause = RECSOUND_RECING;
    std::printf("%s %s %d ----bRecPause = RECSOUND_RECING----\n", __FILE__, "setRecordState",
                __LINE__);
    std::fflush(stdout);

    // a new recording counts its own time from zero
    recSeconds = 0;
    timeText = clockText(0);
    displayState = DisplayRecording;
    if (startRecordThread(curFileName) != 0)
        LOGW("no recording thread for %s", qPrintable(curFileName));
    // listed at once, so that the recording survives a crash of the program
    library->addNewFileToList(curFileName);
    startClock();
}

void RecordMainWnd::startClock()
{
    // ticks are due at whole seconds from here, so a busy event loop delays them but loses none
    clockBase.start();
    clockOffset = qint64(qMax(recSeconds, 0)) * 1000;
    recTimer->start(1000);
}

void RecordMainWnd::pauseRecording()
{
    sendToShell("lrcplayer(QString)", "nosleepnew");
    displayState = DisplayPaused;
    bRecPause = RECSOUND_PAUSED;
    recTimer->stop();

    const QSettings config(devicePath(QStringLiteral("/apps/config/config.ini")),
                           QSettings::IniFormat);
    const int lan = config.value(QStringLiteral("SystemSet/Lan"), 0).toInt();
    LOGD("lanInt=====ttttt===== %d", LanguageManager::Instance()->getLanIntByID(lan));
}

void RecordMainWnd::resumeRecording()
{
    LOGD("is bRecPause == RECSOUND_PAUSED");
    setAutoSleep(false);
    displayState = DisplayRecording;
    bRecPause = RECSOUND_CONTINUE;
    startClock();
}

void RecordMainWnd::stopRecord()
{
    // a paused encoder is continued first, so that it can be killed and reaped
    if (bRecPause == RECSOUND_PAUSED)
        bRecPause = RECSOUND_CONTINUE;
    for (int i = 0; i < 40; ++i)
        usleep(1000);
    if (!bRecording && recSeconds == -1) {
        std::puts("already stoped");
        std::fflush(stdout);
        return;
    }
    bRecording = false;
    bRecPause = RECSOUND_STOPPED;
    recTimer->stop();
    // once the encoder is reaped nothing creates or writes the file any more: only then can a
    // short recording be removed for good
    if (!waitForEngine(engineEndMs))
        LOGW("the engine has not ended");
    if (recSeconds < keepSeconds)
        discardNewest();
    recSeconds = -1;
    sync();
    displayState = DisplayIdle;
    timeText = QStringLiteral("00:00");
    repaint();
}

void RecordMainWnd::startRecord()
{
    recSeconds = 0;
    bRecording = false;
    bRecPause = RECSOUND_STOPPED;
    sleepMs(80);
}

void RecordMainWnd::startNewRecord()
{
    // a split's next file is not begun once the shell has ended the program
    if (stopRequested)
        return;
    setRecordState();
}

void RecordMainWnd::updateRecTime()
{
    if (!bRecording && bRecPause == RECSOUND_STOPPED) {
        recordingEnded();
        return;
    }
    ++recSeconds;
    if (recSeconds == 5)
        sync();
    if (recSeconds <= splitSeconds) {
        timeText = clockText(recSeconds);
        repaint();
        const qint64 due = qint64(recSeconds) * 1000 + 1000 - clockOffset - clockBase.elapsed();
        recTimer->start(int(qBound<qint64>(0, due, 1000)));
        return;
    }
    closing = true;
    stopRecord();
    QTimer::singleShot(500, this, &RecordMainWnd::startNewRecord);
}

void RecordMainWnd::recordingEnded()
{
    // the encoder gave up by itself (a full card): what it wrote stays listed
    recTimer->stop();
    LOGW("the encoder has ended by itself");
    waitForEngine(engineEndMs);
    if (!QFileInfo::exists(curFileName))
        discardNewest();
    setAutoShut(true);
    recSeconds = -1;
    displayState = DisplayIdle;
    timeText = QStringLiteral("00:00");
    repaint();
}

void RecordMainWnd::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
        setRecordState();
        break;
    case Qt::Key_F12:
        newRecordOptionWnd();
        break;
    case Qt::Key_Escape:
        leaveOrStop();
        break;
    default:
        break;
    }
    update();
}

void RecordMainWnd::leaveOrStop()
{
    if (bRecPause == RECSOUND_STOPPED) {
        close();
    } else {
        const int seconds = recSeconds;
        closing = true;
        stopRecord();
        if (seconds >= saveQuestionSeconds)
            askToKeep();
    }
    setAutoShut(true);
}

void RecordMainWnd::askToKeep()
{
    YesnoSelect question(tr("Do you want to save recording?"), tr("Yes"), tr("No"), nullptr);
    question.exec();
    // the shell ended the program while nobody had answered: kept, as after any stop
    if (stopRequested) {
        LOGD("stopped during the question: recording kept");
        return;
    }
    if (question.getValue() == 0) {
        MessageDialog saved(nullptr,
                            tr("Recording") + tr(" [") + QFileInfo(curFileName).fileName() +
                                tr("] ") + tr("save to library"),
                            2000);
        saved.exec();
        LOGD("record file saved!!!");
        return;
    }
    discardNewest();
    if (QFile::exists(curFileName)) {
        if (QFile::remove(curFileName))
            LOGD("file remove");
        else
            LOGW("file remove failed!!");
    }
}

void RecordMainWnd::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    LOGD("in recorderWnd::showEvent");
    if (optionMenu)
        LOGD("grabkeyboard");
}

void RecordMainWnd::timerEvent(QTimerEvent *) {}

QString RecordMainWnd::helpText() const
{
    if (wndType == 1)
        return displayState == DisplayRecording ? tr("Press OK to Pause") : tr("Press OK to Play");
    switch (displayState) {
    case DisplayRecording:
        return tr("Press OK to Pause");
    case DisplayPaused:
        return tr("Press OK to Continue");
    default:
        return tr("Press OK to Record");
    }
}

void RecordMainWnd::paintEvent(QPaintEvent *)
{
    LOGD("paint");
    if (optionMenu) {
        LOGD("option menu open: nothing drawn");
        return;
    }
    QPainter painter(this);
    painter.setPen(QPen(palette().brush(QPalette::Current, QPalette::Text), 0));
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(0, 20, 256, 20);

    // the symbol shows what OK does next: a dot records or continues, two bars pause
    const bool pauseSymbol =
        wndType == 1 ? displayState != DisplayRecording : displayState == DisplayRecording;
    if (pauseSymbol) {
        painter.drawRect(outline(QPoint(175, 33), QPoint(176, 39)));
        painter.drawRect(outline(QPoint(180, 33), QPoint(181, 39)));
    } else {
        painter.drawEllipse(outline(QPoint(175, 33), QPoint(181, 39)));
    }
    painter.drawText(QPoint(10, 55), helpText());
    painter.drawText(QPoint(190, 44), wndType == 1 ? QStringLiteral("00:00") : timeText);
}

void RecordMainWnd::newRecordOptionWnd()
{
    if (displayState == DisplayRecording || displayState == DisplayPaused) {
        LOGD("recording, dot not show option wnd");
        return;
    }
    if (optionMenu) {
        LOGD("option menu exists: shown again");
        optionMenu->setVisible(true);
        return;
    }
    ConfigWidget *settings = ConfigWidget::instance();
    optionMenu = new ItemMenu(nullptr);
    connect(optionMenu, &ItemMenu::escPressed, this, &RecordMainWnd::escFromRecordMenuSlot);
    optionMenu->setGeometry(0, 0, 256, 64);
    optionMenu->setWindowFlags(Qt::FramelessWindowHint);
    // Escape hands the screen back to this window; without it the menu would close every window
    optionMenu->setPrevWidget(this);

    auto *volume = new KoSpinSlide(optionMenu);
    volume->setText1(tr("Volume"));
    connect(volume, &SpinItems::triggered, this, &RecordMainWnd::playVolumeChangeSlot);
    volume->addItem(QVector<QString>{"0", "6", "12", "18", "24", "30"});
    volume->setCurIndex(settings->getPlayVolume());
    optionMenu->addItem(volume);

    auto *format = new KoSpinBox(optionMenu);
    format->setText1(tr("File Format"));
    connect(format, &SpinItems::triggered, this, &RecordMainWnd::fileFormatChangeSlot);
    format->addItem(QVector<QString>{tr("Mp3"), tr("Wav")});
    format->setCurIndex(settings->getFileFormat());
    optionMenu->addItem(format);

    auto *quality = new KoSpinBox(optionMenu);
    quality->setText1(tr("File Quality"));
    connect(quality, &SpinItems::triggered, this, &RecordMainWnd::fileQualityChangeSlot);
    quality->addItem(QVector<QString>{tr("High"), tr("Mid "), tr("Low")});
    quality->setCurIndex(settings->getFileQuality());
    optionMenu->addItem(quality);

    optionMenu->show();
    optionMenu->activateWindow();
}

void RecordMainWnd::closeOptionMenu()
{
    if (!optionMenu)
        return;
    // the menu may be inside its own key handler right now: let it return first
    optionMenu->hide();
    optionMenu->deleteLater();
    optionMenu = nullptr;
}

void RecordMainWnd::endDialogs()
{
    // A dialog open now runs its own event loop, which has brought this message here: the
    // program can only end once that loop returns, and a window still on screen would keep it
    // running. Nobody answers: the caller finds stopRequested set.
    stopRequested = true;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog && dialog->isVisible()) {
            LOGW("stop: %s closed unanswered", dialog->metaObject()->className());
            dialog->done(QDialog::Rejected);
        }
    }
}

void RecordMainWnd::escFromRecordMenuSlot()
{
    LOGI("in MainWindow::escFromMenuSetSlot");
    closeOptionMenu();
    setVisible(true);
    activateWindow();
    update();
}

void RecordMainWnd::fileFormatChangeSlot(int idx, const QString &)
{
    ConfigWidget::instance()->setFileFormat(idx);
}

void RecordMainWnd::fileQualityChangeSlot(int idx, const QString &)
{
    ConfigWidget::instance()->setFileQuality(idx);
}

void RecordMainWnd::playVolumeChangeSlot(int idx, const QString &)
{
    ConfigWidget::instance()->setPlayVolume(idx);
}

void RecordMainWnd::handleReceived(const QString &message, const QByteArray &data)
{
    if (message != QLatin1String("execute(QString)"))
        return;
    // every command from the shell flushes the file systems first (power-off, USB, stop)
    sync();
    // a zero-terminated word: a C sender's terminating zero byte is not part of it
    const char *word = data.constData();
    if (qstrcmp(word, "stop") == 0) {
        if (bRecPause != RECSOUND_STOPPED)
            stopRecord();
        closeOptionMenu();
        endDialogs();
        LOGW("receive msg stop\n");
        close();
    } else if (qstrcmp(word, "stoponly") == 0) {
        qDebug() << "receive stoponly a \n";
        if (bRecPause != RECSOUND_STOPPED)
            stopRecord();
        closeOptionMenu();
        endDialogs();
        sendToShell("ESC(QString)", "escpressed");
        qDebug() << "receive stoponly b\n";
        QApplication::closeAllWindows();
    }
}
