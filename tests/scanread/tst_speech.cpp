// The speech engine through TTSPlayer as the read-aloud thread uses it: word reports, stopping,
// speed and volume. The audio is the WAV file the host engine writes when there is no sound card.

#include "scanread/koscansdk.h"
#include "scanread/ttsplayer.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <chrono>
#include <cmath>
#include <cstring>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

struct Report
{
    int position;
    int length;
    int pcm;
};

struct Reports
{
    std::mutex lock;
    QVector<Report> list;
};

void collect(void *context, int position, int length, int pcm)
{
    auto *reports = static_cast<Reports *>(context);
    const std::lock_guard<std::mutex> lock(reports->lock);
    reports->list.append({position, length, pcm});
}

const QString sentence = QStringLiteral("The quick brown fox jumps over the lazy dog.");

} // namespace

class TestSpeech : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_root.installEngines());
        qputenv("DEVSIM_SPEECH", "file");
        TTSPlayer::player = new TTSPlayer;
        QCOMPARE(KOSCAN_TTS_SetLang(101), 0);
        QCOMPARE(KOSCAN_TTS_SetProgressCallBackFunc(&m_reports, collect), 0);
    }

    void cleanupTestCase() { TTSPlayer::quitFun(); }

    void reportsEachWordInOrder()
    {
        m_reports.list.clear();
        QCOMPARE(TTSPlayer::player->setSpeed(50), 0);
        QCOMPARE(TTSPlayer::player->play(sentence), 0);

        const QStringList words =
            QString(sentence).remove(QLatin1Char('.')).split(QLatin1Char(' '));
        QCOMPARE(m_reports.list.size(), words.size());
        int previousPcm = 0;
        for (int i = 0; i < words.size(); ++i) {
            const Report &report = m_reports.list.at(i);
            QCOMPARE(sentence.mid(report.position, report.length), words.at(i));
            QVERIFY2(report.pcm > previousPcm, qPrintable(QString::number(i)));
            previousPcm = report.pcm;
        }
        const int made = audio().size();
        QVERIFY2(std::abs(made - previousPcm) <= KOSCAN_TTS_SAMPLE_RATE / 20,
                 qPrintable(QStringLiteral("last word ends at %1, audio has %2 samples")
                                .arg(previousPcm)
                                .arg(made)));
    }

    void stopEndsPlayAtOnce()
    {
        m_reports.list.clear();
        Clock::time_point returned;
        std::thread speaker([&] {
            TTSPlayer::player->play(sentence + QLatin1Char(' ') + sentence);
            returned = Clock::now();
        });
        // stop while the first words are being heard
        QTRY_VERIFY_WITH_TIMEOUT(
            [&] {
                const std::lock_guard<std::mutex> lock(m_reports.lock);
                return !m_reports.list.isEmpty();
            }(),
            20000);
        const Clock::time_point stopped = Clock::now();
        QCOMPARE(TTSPlayer::player->stop(), 0);
        speaker.join();

        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(returned - stopped);
        qInfo("play returned %lld ms after stop", (long long)took.count());
        QVERIFY(took.count() < 100);
        // it ended early, not by finishing the text: few words reported, and not the last one
        QVERIFY(m_reports.list.size() < 18);
    }

    void speedAndVolumeChangeTheAudio()
    {
        const int normal = playedSamples(50, 100);
        const double normalLevel = rms(audio());
        const int fast = playedSamples(90, 100);
        QVERIFY2(fast < normal * 0.8, qPrintable(QStringLiteral("%1 vs %2").arg(fast).arg(normal)));
        playedSamples(50, 25);
        const double quietLevel = rms(audio());
        QVERIFY2(quietLevel < normalLevel * 0.5,
                 qPrintable(QStringLiteral("%1 vs %2").arg(quietLevel).arg(normalLevel)));
    }

private:
    // samples of the last play's audio
    QVector<qint16> audio() const
    {
        const QByteArray wav = m_root.readFile(QStringLiteral("/apps/data/tts/speech.wav"));
        if (wav.size() < 44 || !wav.startsWith("RIFF"))
            return {};
        QVector<qint16> samples((wav.size() - 44) / 2);
        std::memcpy(samples.data(), wav.constData() + 44, size_t(samples.size()) * 2);
        return samples;
    }

    int playedSamples(int speed, int volume)
    {
        TTSPlayer::player->setSpeed(speed);
        TTSPlayer::player->setVolume(volume);
        TTSPlayer::player->play(QStringLiteral("One two three four."));
        return audio().size();
    }

    static double rms(const QVector<qint16> &samples)
    {
        double sum = 0;
        for (qint16 s : samples)
            sum += double(s) * s;
        return samples.isEmpty() ? 0 : std::sqrt(sum / samples.size());
    }

    TestDeviceRoot m_root;
    Reports m_reports;
};

QTEST_MAIN(TestSpeech)
#include "tst_speech.moc"
