// Time from KOSCAN_TTS_Play to the first sample of audio in the WAV file the engine writes when
// there is no sound card, beside a bare espeak-ng synthesis of the same sentence with the same
// voice, pace and buffer writing its samples into the same kind of file.
#include "scanread/koscansdk.h"
#include "scanread/ttsplayer.h"
#include "storage/devicepath.h"
#include "wavwriter.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <espeak-ng/speak_lib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include <sys/stat.h>

namespace {

using Clock = std::chrono::steady_clock;

const char16_t sentence[] = u"The quick brown fox jumps over the lazy dog.";
constexpr int rounds = 15;

void quiet(QtMsgType, const QMessageLogContext &, const QString &) {}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double millisSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Starts speak on a thread of its own and times it until the WAV file at wav holds samples; the
// same for both sides, so thread start and polling cost them the same.
template<typename Speak, typename Stop>
double timeToFirstSample(const QByteArray &wav, Speak speak, Stop stop)
{
    QFile::remove(QFile::decodeName(wav));
    const Clock::time_point start = Clock::now();
    std::thread speaker(speak);
    struct stat info = {};
    while (stat(wav.constData(), &info) != 0 || info.st_size <= 44) {
    }
    const double took = millisSince(start);
    stop();
    speaker.join();
    return took;
}

QByteArray wavPath()
{
    return QFile::encodeName(devicePath(QStringLiteral("/apps/data/tts/speech.wav")));
}

std::vector<double> timeOurs()
{
    TTSPlayer::player = new TTSPlayer;
    TTSPlayer::player->setLan(101);
    std::vector<double> times;
    for (int round = 0; round <= rounds; ++round) {
        const double took = timeToFirstSample(
            wavPath(),
            [] {
                KOSCAN_TTS_Play(
                    reinterpret_cast<unsigned short *>(const_cast<char16_t *>(sentence)),
                    int(sizeof sentence) - 2, 0);
            },
            [] { KOSCAN_TTS_Stop(); });
        if (round > 0) // the first round loads the voice
            times.push_back(took);
    }
    TTSPlayer::quitFun();
    return times;
}

// the floor: espeak-ng's samples straight into the same kind of file
WavWriter bareFile;
std::atomic<bool> bareStop{false};

int writeSamples(short *samples, int count, espeak_EVENT *)
{
    if (count > 0)
        bareFile.append(samples, count);
    return bareStop ? 1 : 0;
}

std::vector<double> timeBare()
{
    const QByteArray data =
        QFile::encodeName(devicePath(QStringLiteral("/mnt/hidmmc/sysdict/ttsrec")));
    espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 20, data.constData(), 0);
    espeak_SetSynthCallback(writeSamples);
    espeak_SetVoiceByName("en");
    espeak_SetParameter(espeakRATE, espeakRATE_NORMAL, 0);
    std::vector<wchar_t> wide(std::begin(sentence), std::end(sentence));
    std::vector<double> times;
    for (int round = 0; round <= rounds; ++round) {
        bareStop = false;
        espeak_SetParameter(espeakRATE, espeakRATE_NORMAL, 0);
        espeak_SetParameter(espeakVOLUME, 100, 0);
        const double took = timeToFirstSample(
            wavPath(),
            [&] {
                bareFile.open(wavPath().constData(), 22050);
                espeak_Synth(wide.data(), wide.size() * sizeof(wchar_t), 0, POS_CHARACTER, 0,
                             espeakCHARS_WCHAR, nullptr, nullptr);
            },
            [] { bareStop = true; });
        if (round > 0)
            times.push_back(took);
    }
    espeak_Terminate();
    return times;
}

// this program again, measuring one side in a process of its own
double measured(const char *program, const char *side)
{
    QProcess child;
    child.start(QString::fromLocal8Bit(program), {QString::fromLatin1(side)});
    if (!child.waitForFinished(60000) || child.exitCode() != 0)
        return -1;
    return child.readAllStandardOutput().trimmed().toDouble();
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(quiet);
    // espeak-ng cannot be started again in a process that stopped it, so each side runs in a
    // process of its own (this program again), alternately, in the same device root
    if (argc == 2 && std::strcmp(argv[1], "--bare") == 0) {
        std::printf("%f\n", median(timeBare()));
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--ours") == 0) {
        std::printf("%f\n", median(timeOurs()));
        return 0;
    }
    QTemporaryDir root;
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    qputenv("DEVSIM_SPEECH", "file");
    if (QProcess::execute(QStringLiteral(ENGINERES), {root.path()}) != 0)
        return 1;
    std::vector<double> oursRuns;
    std::vector<double> floorRuns;
    for (int run = 0; run < 7; ++run) {
        oursRuns.push_back(measured(argv[0], "--ours"));
        floorRuns.push_back(measured(argv[0], "--bare"));
    }
    const double ours = median(oursRuns);
    const double floor = median(floorRuns);
    std::printf("KOSCAN_TTS_Play to first sample: %.2f ms (median)\n"
                "bare espeak-ng to first samples: %.2f ms (median)\n",
                ours, floor);
    std::printf("BENCH speech_first_sample ratio=%.3f goal<=1.1\n", ours / floor);
    return 0;
}
