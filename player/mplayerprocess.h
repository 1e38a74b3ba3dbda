#pragma once

#include "player/myprocess.h"

// The external player in slave mode: its console lines become typed signals (position, pause,
// end of file, audio output) and slave commands go to its standard input.
// The end of file is remembered when the player announces it and reported (receivedEndOfFile)
// only once the child has exited, after processExited.
class MplayerProcess : public MyProcess
{
    Q_OBJECT

public:
    explicit MplayerProcess(QObject *parent = nullptr);

    // Begins a run: flags cleared, then waits up to 30 s for the child to start.
    bool start();
    // One command line; dropped with a warning while no child runs.
    void writeToStdin(const QString &command);

signals:
    void processExited();
    void lineAvailable(QString line);
    void receivedCurrentSec(double sec);
    void receivedCurrentFrame(int frame);
    void receivedPause();
    void receivedWindowResolution(int width, int height);
    void receivedNoVideo();
    void receivedVO(QString driver);
    void receivedAO(QString driver);
    void receivedEndOfFile();
    void mplayerFullyLoaded();
    void receivedStartingTime(double sec);
    void receivedCacheMessage(QString text);
    void receivedCreatingIndex(QString text);
    void receivedConnectingToMessage(QString text);
    void receivedResolvingMessage(QString text);
    void receivedScreenshot(QString file);
    void receivedUpdatingFontCache();
    void receivedScanningFont(QString text);
    void receivedStreamTitle(QString title);
    void receivedStreamTitleAndUrl(QString title, QString url);
    void failedToParseMplayerVersion(QString line_with_mplayer_version);

public slots:
    void parseLine(const QByteArray &bytes);
    void processFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void gotError(QProcess::ProcessError error);

private:
    bool m_notifiedRunning = false;
    bool m_endOfFile = false;
    int m_markerA = -1;
    int m_markerB = -1;
};
