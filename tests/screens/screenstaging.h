#pragma once

#include <QImage>
#include <QString>
#include <QVector>

#include <functional>

class PlayerFixture;
class RecordMainWnd;
class playerWnd;

// The screens of the README as the tests stage them: the real windows and dialogs in a private
// device root (the pen's fonts, the menu's picture, a translation), put into a state by their own
// keys and slots with fixed values - a recording of 1:23, a song at 1:23 of 3:20 - never the wall
// clock, a running encoder or a real player. What the tests assert on and what docs/screens
// shows come from here.

// OK pressed on the recorder with an encoder that only waits, and the window's own clock stopped:
// the caller counts the seconds. False when the recording did not start.
bool startRecording(RecordMainWnd &window);
// The recorder's clock moved on to that many seconds, tick by tick, and stopped again.
void tickTo(RecordMainWnd &window, int seconds);
// The player on a (scripted) file of that length, once the player process has taken the file.
bool startOn(playerWnd &window, PlayerFixture &fixture, const QString &lengthText);

// One picture of docs/screens: its file name without ".png" and how the screen is drawn, 256 x 64
// (a null image when it could not be staged).
struct ReadmeScreen
{
    QString name;
    std::function<QImage()> draw;
};
// Every screen in English, then the idle recorder in each other language.
QVector<ReadmeScreen> readmeScreens();

// The picture as docs/screens keeps it: four times as big, every pixel a sharp square; written
// as PNG with fixed settings, so that the same screen gives the same bytes.
bool savePicture(const QImage &screen, const QString &path);
