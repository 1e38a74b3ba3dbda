#include "player/mplayerprocess.h"

#include "storage/tracelog.h"

#include <QRegExp>

#include <cstdio>

namespace {

QRegExp pattern(const char *text, Qt::CaseSensitivity cs = Qt::CaseSensitive)
{
    return QRegExp(QLatin1String(text), cs, QRegExp::RegExp);
}

// Built once, before main, in this order. Most of them stay idle in this player; they are kept
// with the signals that would carry their results.
QRegExp rx_av = pattern("^[AV]: *([0-9,:.-]+)");
QRegExp rx_frame = pattern("^[AV]:.* (\\d+)\\/.\\d+");
QRegExp rx = pattern("^(.*)=(.*)");
QRegExp rx_audio_mat = pattern("^ID_AID_(\\d+)_(LANG|NAME)=(.*)");
QRegExp rx_video = pattern("^ID_VID_(\\d+)_(LANG|NAME)=(.*)");
QRegExp rx_title = pattern("^ID_DVD_TITLE_(\\d+)_(LENGTH|CHAPTERS|ANGLES)=(.*)");
QRegExp rx_chapters = pattern("^ID_CHAPTER_(\\d+)_(START|END|NAME)=(.+)");
QRegExp rx_winresolution = pattern("^VO: \\[(.*)\\] (\\d+)x(\\d+) => (\\d+)x(\\d+)");
QRegExp rx_ao = pattern("^AO: \\[(.*)\\]");
QRegExp rx_paused = pattern("^ID_PAUSED");
QRegExp rx_novideo = pattern("^Video: no video");
QRegExp rx_cache = pattern("^Cache fill:.*");
QRegExp rx_create_index = pattern("^Generating Index:.*");
QRegExp rx_play = pattern("^Starting playback...");
QRegExp rx_connecting = pattern("^Connecting to .*");
QRegExp rx_resolving = pattern("^Resolving .*");
QRegExp rx_screenshot = pattern("^\\*\\*\\* screenshot '(.*)'");
QRegExp rx_endoffile = pattern("^Exiting... \\(End of file\\)|^ID_EXIT=EOF");
QRegExp rx_mkvchapters = pattern("\\[mkv\\] Chapter (\\d+) from");
QRegExp rx_aspect2 = pattern("^Movie-Aspect is ([0-9,.]+):1");
QRegExp rx_fontcache = pattern("^\\[ass\\] Updating font cache|^\\[ass\\] Init");
QRegExp rx_scanning_font = pattern("Scanning file");
QRegExp rx_vcd = pattern("^ID_VCD_TRACK_(\\d+)_MSF=(.*)");
QRegExp rx_cdda = pattern("^ID_CDDA_TRACK_(\\d+)_MSF=(.*)");
QRegExp rx_subtitle = pattern("^ID_(SUBTITLE|FILE_SUB|VOBSUB)_ID=(\\d+)");
QRegExp rx_sid = pattern("^ID_(SID|VSID)_(\\d+)_(LANG|NAME)=(.*)");
QRegExp rx_subtitle_file = pattern("^ID_FILE_SUB_FILENAME=(.*)");
QRegExp rx_clip_name = pattern("^ (name|title): (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_artist = pattern("^ artist: (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_author = pattern("^ author: (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_album = pattern("^ album: (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_genre = pattern("^ genre: (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_date = pattern("^ (creation date|year): (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_track = pattern("^ track: (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_copyright = pattern("^ copyright: (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_comment = pattern("^ comment: (.*)", Qt::CaseInsensitive);
QRegExp rx_clip_software = pattern("^ software: (.*)", Qt::CaseInsensitive);
QRegExp rx_stream_title = pattern("^.* StreamTitle='(.*)';");
QRegExp rx_stream_title_and_url = pattern("^.* StreamTitle='(.*)';StreamUrl='(.*)';");

// Capture 1 of rx_av read as a number: the run of [0-9,:.-] at from. Read in place, since this
// runs for every status line and building the capture list costs more than the match itself.
// The usual "123.4" is read by hand: its digits as one whole number divided once by a power of
// ten is the same correctly rounded double that toDouble gives; anything else goes to toDouble.
double statusSeconds(const QString &line, int from)
{
    static const double tens[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    qint64 digits = 0;
    int count = 0;
    int decimals = -1;
    bool plain = true;
    int end = from;
    for (; end < line.size(); ++end) {
        const ushort c = line.at(end).unicode();
        if (c >= '0' && c <= '9') {
            // past 15 digits the number is read by toDouble: no overflow, no lost precision
            if (++count <= 15)
                digits = digits * 10 + (c - '0');
            if (decimals >= 0)
                ++decimals;
        } else if (c == '.' && decimals < 0) {
            decimals = 0;
        } else if (c == '.' || c == ',' || c == ':' || c == '-') {
            plain = false;
        } else {
            break;
        }
    }
    if (plain && count > 0 && count <= 15 && decimals != 0 && decimals < 10)
        return decimals > 0 ? double(digits) / tens[decimals] : double(digits);
    return line.midRef(from, end - from).toDouble();
}

} // namespace

MplayerProcess::MplayerProcess(QObject *parent) : MyProcess(parent)
{
    connect(this, qOverload<QByteArray>(&MyProcess::lineAvailable), this,
            &MplayerProcess::parseLine);
    connect(this, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &MplayerProcess::processFinished);
    connect(this, &QProcess::errorOccurred, this, &MplayerProcess::gotError);
}

bool MplayerProcess::start()
{
    m_notifiedRunning = false;
    m_endOfFile = false;
    m_markerA = -1;
    m_markerB = -1;
    MyProcess::start();
    return waitForStarted(30000);
}

void MplayerProcess::writeToStdin(const QString &command)
{
    if (!isRunning()) {
        LOGW("MplayerProcess::writeToStdin: process not running");
        return;
    }
    write(command.toLocal8Bit() + '\n');
}

void MplayerProcess::parseLine(const QByteArray &bytes)
{
    std::fflush(stdout);
    const QString line = QString::fromLocal8Bit(bytes);

    if (rx_av.indexIn(line) > -1) {
        const double sec = statusSeconds(line, rx_av.pos(1));
        if (!m_notifiedRunning) {
            LOGD("MplayerProcess::parseLine: starting sec: %f", sec);
            emit receivedStartingTime(sec);
            emit mplayerFullyLoaded();
            emit receivedCurrentFrame(0);
            m_notifiedRunning = true;
        }
        emit receivedCurrentSec(sec);
        // the frame pattern needs a "/" (video lines only): audio lines skip its slow search
        if (line.contains(QLatin1Char('/')) && rx_frame.indexIn(line) > -1)
            emit receivedCurrentFrame(rx_frame.cap(1).toInt());
        return;
    }

    emit lineAvailable(line);
    LOGD("MplayerProcess::parseLine: '%s'", line.toLocal8Bit().constData());
    if (rx_screenshot.indexIn(line) > -1) {
        const QString file = rx_screenshot.cap(1);
        LOGD("MplayerProcess::parseLine: screenshot: '%s'", file.toLocal8Bit().constData());
        emit receivedScreenshot(file);
    } else if (rx_endoffile.indexIn(line) > -1) {
        LOGD("MplayerProcess::parseLine: detected end of file");
        if (!m_endOfFile) {
            m_endOfFile = true;
            // the exit reports the end (processFinished); a playing run has nothing more to say
            if (m_notifiedRunning)
                return;
            emit mplayerFullyLoaded();
        }
    } else if (rx_paused.indexIn(line) > -1) {
        emit receivedPause();
    }

    // identification lines matter only before playback has started
    if (m_notifiedRunning)
        return;
    if (rx_ao.indexIn(line) > -1) {
        emit receivedAO(rx_ao.cap(1));
    } else if (rx.indexIn(line) > -1) {
        const QString tag = rx.cap(1);
        const QString value = rx.cap(2);
        Q_UNUSED(tag)
        Q_UNUSED(value)
    }
}

void MplayerProcess::processFinished(int exitCode, QProcess::ExitStatus exitStatus)
{
    LOGD("MplayerProcess::processFinished: exitCode: %d, status: %d", exitCode,
         static_cast<int>(exitStatus));
    emit processExited();
    if (m_endOfFile)
        emit receivedEndOfFile();
}

void MplayerProcess::gotError(QProcess::ProcessError error)
{
    LOGD("MplayerProcess::gotError: %d", static_cast<int>(error));
}
