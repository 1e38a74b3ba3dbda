#include "audiosink.h"

#include "audiosource.h"
#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

constexpr long long nanosPerSecond = 1000000000LL;
// the longest a stop request waits to be seen
constexpr long long sliceNanos = 10000000LL;

long long nowNanos()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * nanosPerSecond + now.tv_nsec;
}

void pause(long long nanos)
{
    const timespec length{time_t(nanos / nanosPerSecond), long(nanos % nanosPerSecond)};
    nanosleep(&length, nullptr);
}

} // namespace

AudioSink::AudioSink(int rate, const std::atomic<bool> &stop) : m_rate(rate), m_stop(stop) {}

AudioSink::~AudioSink()
{
    if (m_pcm)
        snd_pcm_close(m_pcm);
}

const char *AudioSink::wavPath()
{
    return "/apps/data/tts/speech.wav";
}

bool AudioSink::open()
{
    const char *wanted = std::getenv("DEVSIM_SPEECH");
    const bool fileWanted = wanted && std::strcmp(wanted, "file") == 0;
    if (!fileWanted && AudioSource::soundCardPresent() && openDevice())
        return true;
    const QString path = devicePath(QString::fromLatin1(wavPath()));
    QDir().mkpath(QFileInfo(path).absolutePath());
    if (!m_wav.open(QFile::encodeName(path).constData(), m_rate)) {
        LOGW("cannot write %s: %s", qPrintable(path), std::strerror(errno));
        return false;
    }
    return true;
}

bool AudioSink::openDevice()
{
    if (snd_pcm_open(&m_pcm, "default", SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK) < 0) {
        m_pcm = nullptr;
        return false;
    }
    // a short buffer, so that a stop is heard at once
    if (snd_pcm_set_params(m_pcm, SND_PCM_FORMAT_S16_LE, SND_PCM_ACCESS_RW_INTERLEAVED, 1,
                           unsigned(m_rate), 1, 100000) < 0) {
        snd_pcm_close(m_pcm);
        m_pcm = nullptr;
        return false;
    }
    return true;
}

long long AudioSink::timeOf(long long sample) const
{
    // rounded up, so that a sample's time has come once heard() counts it
    return m_startNanos + (sample * nanosPerSecond + m_rate - 1) / m_rate;
}

bool AudioSink::write(const int16_t *samples, int count)
{
    if (m_pcm)
        return writeDevice(samples, count);
    if (m_startNanos < 0 && count > 0)
        m_startNanos = nowNanos();
    for (int done = 0; done < count;) {
        const int part = std::min(sliceSamples(), count - done);
        // each slice is written when it starts to be heard
        if (!waitForRealTime(timeOf(m_written)))
            return false;
        if (!m_wav.append(samples + done, part))
            return false;
        m_written += part;
        done += part;
    }
    return true;
}

bool AudioSink::writeDevice(const int16_t *samples, int count)
{
    for (int done = 0; done < count;) {
        if (m_stop) {
            snd_pcm_drop(m_pcm);
            return false;
        }
        const snd_pcm_sframes_t put =
            snd_pcm_writei(m_pcm, samples + done, snd_pcm_uframes_t(count - done));
        if (put == -EAGAIN) {
            snd_pcm_wait(m_pcm, int(sliceNanos / 1000000));
            continue;
        }
        if (put < 0) {
            if (snd_pcm_recover(m_pcm, int(put), 1) < 0)
                return false;
            continue;
        }
        done += int(put);
        m_written += put;
    }
    return true;
}

long long AudioSink::heard()
{
    if (!m_pcm) {
        if (m_startNanos < 0)
            return 0;
        const long long played = (nowNanos() - m_startNanos) * m_rate / nanosPerSecond;
        return std::clamp(played, 0LL, m_written);
    }
    // what the card holds has been written and is not heard yet; a stream that ran dry has
    // played everything
    snd_pcm_sframes_t delay = 0;
    if (snd_pcm_delay(m_pcm, &delay) < 0)
        return m_written;
    return std::clamp(m_written - (long long)delay, 0LL, m_written);
}

bool AudioSink::waitUntilHeard(long long sample)
{
    sample = std::min(sample, m_written);
    if (!m_pcm)
        return waitForRealTime(timeOf(sample));
    // speech shorter than the buffer has not started playing yet
    if (snd_pcm_state(m_pcm) == SND_PCM_STATE_PREPARED)
        snd_pcm_start(m_pcm);
    while (heard() < sample) {
        if (m_stop)
            return false;
        // the buffer has room all the while it drains, so waiting for room would not wait
        pause(std::min(sliceNanos, (sample - heard()) * nanosPerSecond / m_rate + 1));
    }
    return !m_stop;
}

void AudioSink::drain()
{
    waitUntilHeard(m_written);
    if (m_pcm)
        snd_pcm_drop(m_pcm);
}

bool AudioSink::waitForRealTime(long long until)
{
    for (;;) {
        if (m_stop)
            return false;
        const long long left = until - nowNanos();
        if (left <= 0)
            return true;
        pause(std::min(left, sliceNanos));
    }
}
