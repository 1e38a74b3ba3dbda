#include "screenstaging.h"

#include "player/playerwnd.h"
#include "playerfixture.h"
#include "recorder/recordmainwnd.h"
#include "scanread/scanreadedit.h"
#include "widgets/itemmenu.h"
#include "widgets/messagedialog.h"
#include "widgets/yesnoselect.h"

#include <QApplication>
#include <QImageWriter>
#include <QTest>
#include <QTimer>
#include <QTranslator>

namespace {

enum State { Idle, Running, Paused, QuickSeek, Options };

QImage grabbed(QWidget *widget)
{
    return widget ? widget->grab().toImage().convertToFormat(QImage::Format_RGB32) : QImage();
}

// A root of its own with a settings store of its own (the fixture's), and the option menu's
// background picture as the device has it.
bool withMenuPicture(PlayerFixture &fixture)
{
    return QFile::copy(RES_SOURCE_DIR "/pics/settings2.png",
                       fixture.root().path("/apps/res/pics/settings2.png"));
}

QImage recorderScreen(State state)
{
    PlayerFixture fixture;
    // the device's encoders as a program that only waits until it is killed: nothing is recorded
    const QString encoder = fixture.root().path("/waiting-encoder");
    if (!withMenuPicture(fixture) ||
        !fixture.root().writeFile("/waiting-encoder", "#!/bin/sh\nexec tail -f /dev/null\n") ||
        !QFile::setPermissions(encoder, QFile::ReadOwner | QFile::ExeOwner) ||
        !fixture.root().installEncoders(encoder))
        return {};
    RecordMainWnd window(nullptr, 0);
    if (state == Idle)
        return grabbed(&window);
    if (state == Options) {
        window.newRecordOptionWnd();
        return grabbed(window.getOptionMenu());
    }
    if (!startRecording(window))
        return {};
    // a recording of 1:23
    tickTo(window, 83);
    if (state == Paused)
        QTest::keyClick(&window, Qt::Key_Return);
    const QImage picture = grabbed(&window);
    window.stopRecord();
    return picture;
}

QImage playerScreen(State state)
{
    PlayerFixture fixture;
    if (!fixture.installScriptedPlayer() || !fixture.writeSettings("PlayVolume=3\nLoopMode=0") ||
        !withMenuPicture(fixture))
        return {};
    playerWnd window;
    // a song at 1:23 of 3:20
    if (!startOn(window, fixture, QStringLiteral("00:03:20")))
        return {};
    window.changeCurrentSec(83.0);
    if (state == Paused)
        QTest::keyClick(&window, Qt::Key_Return);
    if (state == Options) {
        QTest::keyClick(&window, Qt::Key_F12);
        return grabbed(window.optionMenu());
    }
    if (state == QuickSeek) {
        // F6 held ten steps on: the pointer's steps come from its timer, counted here instead
        QTest::keyPress(&window, Qt::Key_F6);
        for (int n = 0; n < 10; ++n)
            window.quickSeekPos();
    }
    const QImage picture = grabbed(&window);
    window.stopQuickSeek();
    return picture;
}

QImage saveQuestion()
{
    const auto text = [](const char *source) {
        return QCoreApplication::translate("RecordMainWnd", source);
    };
    YesnoSelect question(text("Do you want to save recording?"), text("Yes"), text("No"), nullptr);
    return grabbed(&question);
}

// what start-up shows on a full card before it leaves
QImage noSpaceMessage()
{
    const char text[] = "No enough storage space, please remove some files.";
    MessageDialog message(nullptr, QCoreApplication::translate("main", text), 0);
    return grabbed(&message);
}

// Two scanned lines in the scan view: the newer one selected as it comes in, or, while reading
// aloud, the word the speech has reached (the third of the newer line) highlighted instead.
QImage scanScreen(bool reading)
{
    TestDeviceRoot root;
    const QString older = QStringLiteral("Scanned lines gather here, one after the other.");
    const QString newer = QStringLiteral("The newest line is selected, ready to be read.");
    ScanReadEdit view;
    view.Init();
    view.setFixedSize(256, 64);
    view.appendScanText(older);
    if (reading && !view.showReading(older + QLatin1Char(' ') + newer, 10))
        return {};
    if (!reading)
        view.appendScanText(newer);
    return grabbed(&view);
}

// the screen drawn with the program's translation into that language
std::function<QImage()> in(const QString &language, const std::function<QImage()> &draw)
{
    return [language, draw] {
        QTranslator translator;
        if (!translator.load(QM_DIR "/recorder_" + language + ".qm"))
            return QImage();
        // taken off again as it goes
        QCoreApplication::installTranslator(&translator);
        return draw();
    };
}

} // namespace

bool startRecording(RecordMainWnd &window)
{
    QTest::keyClick(&window, Qt::Key_Return);
    // the caller counts the seconds itself
    window.findChild<QTimer *>()->stop();
    return window.getDisplayState() == RecordMainWnd::DisplayRecording;
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
    QVector<ReadmeScreen> screens{
        {"recorder-idle", std::bind(recorderScreen, Idle)},
        {"recorder-recording", std::bind(recorderScreen, Running)},
        {"recorder-paused", std::bind(recorderScreen, Paused)},
        {"recorder-save-question", saveQuestion},
        {"recorder-options", std::bind(recorderScreen, Options)},
        {"recorder-no-space", noSpaceMessage},
        {"player-playing", std::bind(playerScreen, Running)},
        {"player-paused", std::bind(playerScreen, Paused)},
        {"player-quick-seek", std::bind(playerScreen, QuickSeek)},
        {"player-options", std::bind(playerScreen, Options)},
        {"scan-text", std::bind(scanScreen, false)},
        {"scan-reading", std::bind(scanScreen, true)},
    };
    const QString english = QStringLiteral("en_US");
    for (ReadmeScreen &screen : screens)
        screen.draw = in(english, screen.draw);
    // the idle recorder in the start-up table's other languages
    for (const QString &language : QStringLiteral(RECORDER_LANGUAGES).split(QLatin1Char(' '))) {
        if (language != english)
            screens.append(
                {"recorder-idle-" + language, in(language, std::bind(recorderScreen, Idle))});
    }
    return screens;
}

bool savePicture(const QImage &screen, const QString &path)
{
    // four times as big, every pixel a sharp square
    QImage picture = screen.convertToFormat(QImage::Format_RGB32)
                         .scaled(screen.size() * 4, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    // nothing of the machine in the file: a fixed resolution, no texts
    picture.setDotsPerMeterX(3780);
    picture.setDotsPerMeterY(3780);
    QImageWriter writer(path, "png");
    writer.setQuality(0); // the strongest compression
    return !screen.isNull() && writer.write(picture);
}
