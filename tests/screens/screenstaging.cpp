#include "screenstaging.h"

#include "player/playerwnd.h"
#include "playerfixture.h"
#include "recorder/recordmainwnd.h"
#include "scanread/scanreadedit.h"
#include "storage/configwidget.h"
#include "testdeviceroot.h"
#include "widgets/itemmenu.h"
#include "widgets/messagedialog.h"
#include "widgets/yesnoselect.h"

#include <QApplication>
#include <QImageWriter>
#include <QTest>
#include <QTimer>
#include <QTranslator>

namespace {

// what the screens show: a recording of 1:23, a song at 1:23 of 3:20, the quick seek ten steps on
constexpr int recordedSeconds = 83;
const QString songLength = QStringLiteral("00:03:20");
constexpr double songPosition = 83.0;
constexpr int quickSeekSteps = 10;
// the pictures' pixels per pixel of the screen
constexpr int enlargement = 4;

enum class Recorder { Idle, Recording, Paused, Options };
enum class Player { Playing, Paused, QuickSeek, Options };

QImage grabbed(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// the settings store of the root in use, not of an earlier screen's
void freshSettings()
{
    delete ConfigWidget::reader;
    ConfigWidget::reader = nullptr;
}

// the option menu's background picture, as the device has it
bool withMenuPicture(const TestDeviceRoot &root)
{
    QFile::remove(root.path("/apps/res/pics/settings2.png"));
    return QFile::copy(RES_SOURCE_DIR "/pics/settings2.png",
                       root.path("/apps/res/pics/settings2.png"));
}

// the screen drawn with the program's translation into that language
QImage inLanguage(const QString &language, const std::function<QImage()> &draw)
{
    QTranslator translator;
    if (!translator.load(QM_DIR "/recorder_" + language + ".qm"))
        return {};
    QCoreApplication::installTranslator(&translator);
    QImage picture = draw();
    QCoreApplication::removeTranslator(&translator);
    return picture;
}

// the device's encoders as a program that only waits until it is killed: nothing is recorded
bool withWaitingEncoder(const TestDeviceRoot &root)
{
    const QString script = QStringLiteral("/waiting-encoder");
    return root.writeFile(script, "#!/bin/sh\nexec tail -f /dev/null\n") &&
           QFile::setPermissions(root.path(script), QFile::ReadOwner | QFile::ExeOwner) &&
           root.installEncoders(root.path(script));
}

QString recorderText(const char *text)
{
    return QCoreApplication::translate("RecordMainWnd", text);
}

QImage recorderScreen(Recorder state)
{
    TestDeviceRoot root;
    if (!withMenuPicture(root) || !withWaitingEncoder(root))
        return {};
    freshSettings();
    QImage picture;
    {
        RecordMainWnd window(nullptr, 0);
        if (state == Recorder::Idle) {
            picture = grabbed(window);
        } else if (state == Recorder::Options) {
            window.newRecordOptionWnd();
            if (window.getOptionMenu())
                picture = grabbed(*window.getOptionMenu());
        } else if (startRecording(window)) {
            tickTo(window, recordedSeconds);
            if (state == Recorder::Paused)
                QTest::keyClick(&window, Qt::Key_Return);
            picture = grabbed(window);
            window.stopRecord();
        }
    }
    freshSettings();
    return picture;
}

QImage saveQuestion()
{
    YesnoSelect question(recorderText("Do you want to save recording?"), recorderText("Yes"),
                         recorderText("No"), nullptr);
    return grabbed(question);
}

// what start-up shows on a full card before it leaves
QImage noSpaceMessage()
{
    MessageDialog message(
        nullptr,
        QCoreApplication::translate("main", "No enough storage space, please remove some files."),
        0);
    return grabbed(message);
}

// Two scanned lines in the scan view: the newer one selected as it comes in, or, while reading
// aloud, the word the speech has reached highlighted instead.
QImage scanScreen(bool reading)
{
    TestDeviceRoot root;
    const QString older = QStringLiteral("Scanned lines gather here, one after the other.");
    const QString newer = QStringLiteral("The newest line is selected, ready to be read.");
    ScanReadEdit view;
    view.Init();
    view.setFixedSize(256, 64);
    view.appendScanText(older);
    if (reading) {
        // the third word of the newer line
        if (!view.showReading(older + QLatin1Char(' ') + newer, 10))
            return {};
    } else {
        view.appendScanText(newer);
    }
    return grabbed(view);
}

QImage playerScreen(Player state)
{
    PlayerFixture fixture;
    if (!fixture.installScriptedPlayer() || !fixture.writeSettings("PlayVolume=3\nLoopMode=0") ||
        !withMenuPicture(fixture.root()))
        return {};
    playerWnd window;
    if (!startOn(window, fixture, songLength))
        return {};
    window.changeCurrentSec(songPosition);
    switch (state) {
    case Player::Playing:
        return grabbed(window);
    case Player::Paused:
        QTest::keyClick(&window, Qt::Key_Return);
        return grabbed(window);
    case Player::QuickSeek: {
        // F6 held: the pointer's steps come from its timer, counted here instead
        QTest::keyPress(&window, Qt::Key_F6);
        for (int n = 0; n < quickSeekSteps; ++n)
            window.quickSeekPos();
        QImage picture = grabbed(window);
        window.stopQuickSeek();
        return picture;
    }
    case Player::Options:
        QTest::keyClick(&window, Qt::Key_F12);
        return window.optionMenu() ? grabbed(*window.optionMenu()) : QImage();
    }
    return {};
}

} // namespace

bool startRecording(RecordMainWnd &window)
{
    QTest::keyClick(&window, Qt::Key_Return);
    if (window.getDisplayState() != RecordMainWnd::DisplayRecording)
        return false;
    // the caller counts the seconds itself
    window.findChild<QTimer *>()->stop();
    return true;
}

void tickTo(RecordMainWnd &window, int seconds)
{
    while (window.recordedSeconds() < seconds)
        window.updateRecTime();
    window.findChild<QTimer *>()->stop();
}

bool startOn(playerWnd &window, PlayerFixture &fixture, const QString &lengthText)
{
    const QString file = fixture.root().path("/mnt/mmc/e_Music/song.mp3");
    window.startPlay(0, QFileInfo(file), lengthText, 0, 0);
    return QTest::qWaitFor([&] { return fixture.lines("/played") == QStringList{file}; }, 30000);
}

QVector<ReadmeScreen> readmeScreens()
{
    const QString english = QStringLiteral("en_US");
    const auto in = [](const QString &language, const std::function<QImage()> &draw) {
        return [language, draw] { return inLanguage(language, draw); };
    };
    const auto recorder = [](Recorder state) { return [state] { return recorderScreen(state); }; };
    const auto player = [](Player state) { return [state] { return playerScreen(state); }; };
    QVector<ReadmeScreen> screens{
        {"recorder-idle", in(english, recorder(Recorder::Idle))},
        {"recorder-recording", in(english, recorder(Recorder::Recording))},
        {"recorder-paused", in(english, recorder(Recorder::Paused))},
        {"recorder-save-question", in(english, saveQuestion)},
        {"recorder-options", in(english, recorder(Recorder::Options))},
        {"recorder-no-space", in(english, noSpaceMessage)},
        {"player-playing", in(english, player(Player::Playing))},
        {"player-paused", in(english, player(Player::Paused))},
        {"player-quick-seek", in(english, player(Player::QuickSeek))},
        {"player-options", in(english, player(Player::Options))},
        {"scan-text", in(english, [] { return scanScreen(false); })},
        {"scan-reading", in(english, [] { return scanScreen(true); })},
    };
    // the start-up table's languages
    for (const QString &language : QStringLiteral(RECORDER_LANGUAGES).split(QLatin1Char(' '))) {
        if (language != english)
            screens.append({"recorder-idle-" + language, in(language, recorder(Recorder::Idle))});
    }
    return screens;
}

bool savePicture(const QImage &screen, const QString &path)
{
    QImage picture =
        screen.convertToFormat(QImage::Format_RGB32)
            .scaled(screen.size() * enlargement, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    // nothing of the machine in the file: a fixed resolution, no texts
    picture.setDotsPerMeterX(3780);
    picture.setDotsPerMeterY(3780);
    QImageWriter writer(path, "png");
    writer.setQuality(0); // the strongest compression
    return writer.write(picture);
}
