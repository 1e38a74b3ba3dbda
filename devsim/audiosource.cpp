#include "audiosource.h"

#include <atomic>
#include <csignal>

#include <alsa/asoundlib.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

constexpr long long nanosPerSecond = 1000000000LL;
// a wake-up this late means the process was stopped: that time is not recorded
constexpr long long lateLimitNanos = 250000000LL;

long long toNanos(const timespec &t)
{
    return t.tv_sec * nanosPerSecond + t.tv_nsec;
}

timespec fromNanos(long long nanos)
{
    return timespec{time_t(nanos / nanosPerSecond), long(nanos % nanosPerSecond)};
}

long long nowNanos()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return toNanos(now);
}

} // namespace

AudioSource::AudioSource(int rate) : m_rate(rate)
{
    const char *signal = std::getenv("DEVSIM_SIGNAL");
    const bool generatedWanted = signal && std::strcmp(signal, "generated") == 0;
    if (!generatedWanted && soundCardPresent())
        openCapture();
    m_deadline = fromNanos(nowNanos());
}

AudioSource::~AudioSource()
{
    if (m_pcm)
        snd_pcm_close(m_pcm);
}

bool AudioSource::soundCardPresent()
{
    std::ifstream cards("/proc/asound/cards");
    std::string first;
    // without a card the file says "--- no soundcards ---"
    return cards && std::getline(cards, first) &&
           first.find("no soundcards") == std::string::npos && !first.empty();
}

bool AudioSource::openCapture()
{
    if (snd_pcm_open(&m_pcm, "default", SND_PCM_STREAM_CAPTURE, 0) < 0) {
        m_pcm = nullptr;
        return false;
    }
    if (snd_pcm_set_params(m_pcm, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED, 1,
                           unsigned(m_rate), 1, 500000) < 0) {
        snd_pcm_close(m_pcm);
        m_pcm = nullptr;
        return false;
    }
    return true;
}

bool AudioSource::read(int16_t *samples, int frames)
{
    if (m_pcm)
        return readCapture(samples, frames);
    generate(samples, frames);
    waitForRealTime(frames);
    return true;
}

bool AudioSource::readCapture(int16_t *samples, int frames)
{
    int done = 0;
    while (done < frames) {
        const snd_pcm_sframes_t got =
            snd_pcm_readi(m_pcm, samples + done, snd_pcm_uframes_t(frames - done));
        if (got >= 0) {
            done += int(got);
            continue;
        }
        // an overrun after SIGSTOP drops the audio of the stopped time, which is what we want
        if (snd_pcm_recover(m_pcm, int(got), 1) < 0)
            return false;
    }
    return true;
}

void AudioSource::generate(int16_t *samples, int frames)
{
    constexpr double twoPi = 6.283185307179586;
    for (int i = 0; i < frames; ++i, ++m_generated) {
        const double t = double(m_generated) / m_rate;
        // a tone gliding between 330 and 660 Hz every two seconds, with a slow tremolo
        const double glide = 0.5 - 0.5 * std::cos(twoPi * t / 2.0);
        const double frequency = 330.0 + 330.0 * glide;
        const double level = 0.25 * (0.75 + 0.25 * std::sin(twoPi * 3.0 * t));
        m_phase = std::fmod(m_phase + twoPi * frequency / m_rate, twoPi);
        samples[i] = int16_t(std::lround(32767.0 * level * std::sin(m_phase)));
    }
}

void AudioSource::waitForRealTime(int frames)
{
    long long deadline = toNanos(m_deadline);
    const long long now = nowNanos();
    if (now - deadline > lateLimitNanos)
        deadline = now;
    deadline += frames * nanosPerSecond / m_rate;
    m_deadline = fromNanos(deadline);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &m_deadline, nullptr) == EINTR) {
    }
}

namespace {
std::atomic<bool> terminationRequested{false};

void requestTermination(int)
{
    terminationRequested = true;
}
} // namespace

void AudioSource::stopOnTermination()
{
    struct sigaction stop = {};
    stop.sa_handler = requestTermination;
    sigaction(SIGTERM, &stop, nullptr);
    sigaction(SIGINT, &stop, nullptr);
}

bool AudioSource::stopRequested()
{
    return terminationRequested;
}
