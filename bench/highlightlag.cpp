// How closely the highlight follows the voice: a paragraph of about 100 words read aloud through
// the scan view and the host speech engine (writing its audio at the pace it is heard, as without
// a sound card), at the three reading speeds. For each word, the moment the view selects it is
// compared with the moment its first sample is heard.
//
// Where a word starts comes from a bare espeak-ng synthesis of the same text with the same voice,
// pace and level, in a process of its own (this program again, with --marks): its word events,
// and its samples, which must be the ones the engine wrote. When a sample is heard comes from the
// engine's WAV file, polled as it grows: each slice is written as it starts to be heard, so the
// earliest (time - samples before the slice) is the moment the first sample was heard.
#include "scanread/configreader.h"
#include "scanread/host/speechengine.h"
#include "scanread/myedit.h"
#include "scanread/ocrpen.h"
#include "scanread/scanreadedit.h"
#include "scanread/ttsplayer.h"
#include "scanroot.h"
#include "spokentext.h"
#include "storage/devicepath.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include <sys/stat.h>

namespace {

using Clock = std::chrono::steady_clock;

// prose of ordinary word lengths, so that the words a minute heard are espeak-ng's own measure
const char paragraph[] =
    "Reading pens help people who find printed text difficult to follow. The reader draws the pen "
    "across a line in a book, a newspaper or a medicine label, and the device recognises the "
    "characters and speaks them aloud. Every word is highlighted on the small display at the "
    "moment it is pronounced, so that the eye can follow the voice without losing its place. "
    "Students learning a foreign language, adults with dyslexia and travellers reading "
    "unfamiliar menus all benefit. Particularly long words, such as responsibility, "
    "extraordinary or characteristically, must still light up exactly when they begin, never "
    "after the voice has moved on.";
constexpr int speeds[] = {30, 50, 65};
constexpr int volume = 60;
constexpr double rate = KOSCAN_TTS_SAMPLE_RATE;

double millis(Clock::time_point at, Clock::time_point origin)
{
    return std::chrono::duration<double, std::milli>(at - origin).count();
}

quint64 fnv(const int16_t *samples, size_t count, quint64 hash = 1469598103934665603ULL)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(samples);
    for (size_t i = 0; i < count * sizeof(int16_t); ++i)
        hash = (hash ^ bytes[i]) * 1099511628211ULL;
    return hash;
}

// ---- --marks: the bare synthesis ----

// prints "word POSITION LENGTH SAMPLE" for each word and "audio SAMPLES HASH"
int printMarks(int speed, const QString &text)
{
    SpokenText spoken;
    if (!spoken.synthesise(devicePath("/mnt/hidmmc/sysdict/ttsrec"), SpeechEngine::voiceFor(101),
                           SpeechEngine::rateFor(speed), volume, text))
        return 1;
    for (const SpokenText::Word &word : qAsConst(spoken.words))
        std::printf("word %d %d %lld\n", word.position, word.length, word.sample);
    std::printf("audio %zu %llu\n", spoken.samples.size(),
                (unsigned long long)fnv(spoken.samples.data(), spoken.samples.size()));
    return 0;
}

// ---- the reading ----

struct Mark
{
    int position;
    int length;
    long long sample;
};

struct Growth
{
    Clock::time_point at;
    long long before; // samples in the file before this slice
};

struct Lit
{
    Clock::time_point at;
    int start;
    int end;
};

struct Figures
{
    double median = 0;
    double p95 = 0;
    double worst = 0;
    int late = 0; // lit after the audio ended
    int missing = 0;
};

double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, size_t(fraction * double(values.size())))];
}

// The WAV file's growth, polled every half millisecond until done is set.
void watch(const QByteArray &wav, const std::atomic<bool> &done, std::vector<Growth> &growth)
{
    long long samples = 0;
    while (!done) {
        struct stat info = {};
        if (stat(wav.constData(), &info) == 0 && info.st_size > 44) {
            const long long now = (info.st_size - 44) / 2;
            if (now > samples)
                growth.push_back({Clock::now(), samples});
            samples = now;
        }
        const timespec pause{0, 500000};
        nanosleep(&pause, nullptr);
    }
}

bool readMarks(const char *program, int speed, const QString &text, std::vector<Mark> &marks,
               long long &samples, quint64 &hash)
{
    QProcess child;
    child.start(QString::fromLocal8Bit(program), {"--marks", QString::number(speed)});
    child.write(text.toUtf8());
    child.closeWriteChannel();
    if (!child.waitForFinished(120000) || child.exitCode() != 0)
        return false;
    for (const QByteArray &line : child.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() == 4 && fields[0] == "word")
            marks.push_back({fields[1].toInt(), fields[2].toInt(), fields[3].toLongLong()});
        else if (fields.size() == 3 && fields[0] == "audio")
            samples = fields[1].toLongLong(), hash = fields[2].toULongLong();
    }
    return !marks.empty() && samples > 0;
}

Figures readAt(const char *program, int speed)
{
    Figures figures;
    ScanReadEdit view;
    view.Init();
    view.setFixedSize(256, 64);
    view.show();
    view.appendScanText(QString::fromLatin1(paragraph));
    // what OK reads: the appended text, selected, with the blank added after it
    const QString text = view.textCursor().selectedText();

    std::vector<Mark> marks;
    long long samples = 0;
    quint64 hash = 0;
    if (!readMarks(program, speed, text, marks, samples, hash)) {
        std::printf("speed %d: the bare synthesis failed\n", speed);
        figures.missing = 1;
        return figures;
    }

    TTSPlayer::player->setSpeed(speed);
    TTSPlayer::player->setVolume(volume);
    const QByteArray wav = QFile::encodeName(devicePath("/apps/data/tts/speech.wav"));
    QFile::remove(QFile::decodeName(wav));
    std::vector<Lit> lit;
    QObject::connect(&view, &QTextEdit::selectionChanged, &view, [&] {
        const QTextCursor cursor = view.textCursor();
        lit.push_back({Clock::now(), cursor.selectionStart(), cursor.selectionEnd()});
    });
    std::vector<Growth> growth;
    std::atomic<bool> done{false};
    std::thread watcher(watch, wav, std::cref(done), std::ref(growth));
    view.PressEnter();
    // until the reading has ended and every word has been lit, or for five seconds more
    QEventLoop loop;
    QTimer poll;
    Clock::time_point ended{};
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (view.isReading())
            return;
        if (ended == Clock::time_point{})
            ended = Clock::now();
        const auto words = size_t(std::count_if(lit.begin(), lit.end(), [&](const Lit &one) {
            return std::any_of(marks.begin(), marks.end(), [&](const Mark &mark) {
                return one.start == mark.position && one.end == mark.position + mark.length;
            });
        }));
        if (words >= marks.size() || Clock::now() - ended > std::chrono::seconds(5))
            loop.quit();
    });
    poll.start(5);
    loop.exec();
    done = true;
    watcher.join();

    QFile file(QFile::decodeName(wav));
    const QByteArray written = file.open(QIODevice::ReadOnly) ? file.readAll().mid(44) : "";
    const bool same =
        written.size() == samples * 2 &&
        fnv(reinterpret_cast<const int16_t *>(written.constData()), size_t(samples)) == hash;
    if (growth.empty()) {
        std::printf("speed %d: no audio was written\n", speed);
        figures.missing = 1;
        return figures;
    }
    Clock::time_point start = growth.front().at;
    for (const Growth &slice : growth) {
        const auto before = std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double>(double(slice.before) / rate));
        start = std::min(start, slice.at - before);
    }
    const double end = double(samples) / rate * 1000.0;

    std::printf("speed %d (espeak-ng %d words a minute): %zu words, %.1f s of audio, %s\n", speed,
                SpeechEngine::rateFor(speed), marks.size(), end / 1000.0,
                same ? "the audio is the bare synthesis's" : "THE AUDIO DIFFERS from the bare one");
    std::printf("  %-18s %9s %9s %7s\n", "word", "heard ms", "lit ms", "lag ms");
    std::vector<double> lags;
    for (const Mark &mark : marks) {
        const double heard = double(mark.sample) / rate * 1000.0;
        const auto found = std::find_if(lit.begin(), lit.end(), [&](const Lit &one) {
            return one.start == mark.position && one.end == mark.position + mark.length;
        });
        const QString word = text.mid(mark.position, mark.length);
        if (found == lit.end()) {
            ++figures.missing;
            std::printf("  %-18s %9.1f %9s\n", qPrintable(word), heard, "never");
            continue;
        }
        const double at = millis(found->at, start);
        lags.push_back(at - heard);
        figures.late += at > end ? 1 : 0;
        std::printf("  %-18s %9.1f %9.1f %7.1f\n", qPrintable(word), heard, at, at - heard);
    }
    std::vector<double> sizes;
    for (double lag : lags)
        sizes.push_back(std::abs(lag));
    figures.median = percentile(lags, 0.5);
    figures.p95 = percentile(sizes, 0.95);
    figures.worst = percentile(sizes, 1.0);
    std::printf("speed %d: lag median %.1f ms, p95 %.1f ms, max %.1f ms; %d lit after the audio "
                "ended, %d never lit; %.0f words a minute heard\n",
                speed, figures.median, figures.p95, figures.worst, figures.late, figures.missing,
                double(marks.size()) * 60000.0 / end);
    return figures;
}

// One speed's reading in this process, its first: the synthesiser's output depends a little on
// what it spoke before, and the bare synthesis it is compared with is a first one too.
int readOnce(const char *program, int speed)
{
    ConfigReader::reader = new ConfigReader;
    const Figures figures = readAt(program, speed);
    TTSPlayer::quitFun();
    OCRPen::quitFun();
    std::printf("figures %f %f %f %d %d\n", figures.median, figures.p95, figures.worst,
                figures.late, figures.missing);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(quiet);
    if (argc == 3 && std::strcmp(argv[1], "--marks") == 0) {
        QTextStream in(stdin);
        return printMarks(std::atoi(argv[2]), in.readAll());
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DEVSIM_SPEECH", "file");
    if (argc == 3 && std::strcmp(argv[1], "--read") == 0) {
        QApplication app(argc, argv);
        return readOnce(argv[0], std::atoi(argv[2]));
    }
    QTemporaryDir root;
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    QApplication app(argc, argv);
    // English
    if (!makeScanRoot(root.path(), "[InfoListen]\nLan=1\n"))
        return 1;
    std::printf("lag: when the view lights a word, less when its first sample is heard "
                "(goal: |median| <= 20 ms, p95 <= 50 ms, max <= 80 ms, none after the end)\n");
    double worst = 0;
    bool met = true;
    for (int speed : speeds) {
        QProcess reading;
        reading.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        reading.start(QString::fromLocal8Bit(argv[0]), {"--read", QString::number(speed)});
        reading.waitForFinished(600000);
        const QByteArray output = reading.readAllStandardOutput();
        const int at = output.lastIndexOf("figures ");
        std::fputs(output.left(at).constData(), stdout);
        const QList<QByteArray> figures = output.mid(at).trimmed().split(' ');
        if (at < 0 || figures.size() != 6) {
            std::printf("speed %d: the reading failed\n", speed);
            met = false;
            continue;
        }
        worst = std::max(worst, figures[3].toDouble());
        met = met && std::abs(figures[1].toDouble()) <= 20 && figures[2].toDouble() <= 50 &&
              figures[3].toDouble() <= 80 && figures[4].toInt() == 0 && figures[5].toInt() == 0;
    }
    TTSPlayer::quitFun();
    OCRPen::quitFun();
    std::printf("all goals %s\n", met ? "met" : "NOT met");
    std::printf("BENCH highlight_lag value=%.0fms goal<=80ms\n", worst);
    return met ? 0 : 1;
}
