#include "recorder/recordthread.h"
#include "recorderprocess.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <cerrno>
#include <signal.h>
#include <sys/wait.h>

namespace {

// The fake encoders' log: per start its pid, then "ARGV0 ARGV1 ..."; "CONT" for each SIGCONT.
QStringList encoderLog(const TestDeviceRoot &root)
{
    return QString(root.readFile("/encoder.log")).split('\n', Qt::SkipEmptyParts);
}

// our child, already reaped by the engine: nothing is left to wait for
bool isReaped(pid_t pid)
{
    return waitpid(pid, nullptr, WNOHANG) == -1 && errno == ECHILD && processState(pid) == 0;
}

} // namespace

class TestRecordThread : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestDeviceRoot> root;

private slots:
    // an encoder that runs until it is killed, and the state words as the window sets them to start
    void init()
    {
        // an engine a failed case left running ends first, then its root goes
        bRecording = false;
        QVERIFY(waitForEngine(10000));
        root.reset();
        root = std::make_unique<TestDeviceRoot>();
        QVERIFY(root->installEncoders(QStringLiteral(FAKE_ENCODER_RUN)));
        bRecording = true;
        bRecPause = RECSOUND_RECING;
    }

    void nullArguments()
    {
        QCOMPARE(RecordToFile(nullptr, &bRecording, &bRecPause, "64", true), -1);
        QCOMPARE(RecordToFile("/mnt/mmc/a.mp3", nullptr, &bRecPause, "64", true), -1);
        QVERIFY(!root->exists("/encoder.log")); // refused before anything is started
    }

    void pauseResumeAndStopWhilePaused()
    {
        QCOMPARE(startRecordThread(root->path("/mnt/mmc/e_Recorder/a.mp3")), 0);
        QTRY_VERIFY(encoderLog(*root).size() >= 2);
        const pid_t pid = encoderLog(*root).value(0).toInt();
        QVERIFY(!waitForEngine(0));

        // while the state holds "paused", every pass stops the encoder again
        bRecPause = RECSOUND_PAUSED;
        QTRY_COMPARE(processState(pid), 'T');
        ::kill(pid, SIGCONT);
        QTRY_COMPARE(encoderLog(*root).count("CONT"), 1);
        QTRY_COMPARE(processState(pid), 'T');

        // "continue" resumes it, sending SIGCONT again on every 100 ms pass while it holds
        bRecPause = RECSOUND_CONTINUE;
        QTRY_VERIFY(encoderLog(*root).count("CONT") >= 4);
        bRecPause = RECSOUND_RECING;
        QTRY_VERIFY(processState(pid) != 'T');

        // a stop while paused kills the stopped encoder and reaps it; the state word is left for
        // the engine to reset, and the window waits for that end before the next start
        bRecPause = RECSOUND_PAUSED;
        QTRY_COMPARE(processState(pid), 'T');
        bRecording = false;
        QVERIFY(waitForEngine(10000));
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
        QVERIFY(isReaped(pid));
    }

    void encoderEndsByItself_data()
    {
        QTest::addColumn<QString>("encoder");
        QTest::addColumn<bool>("mp3");
        QTest::addColumn<int>("quality");
        QTest::addColumn<QString>("commandLine");
        const QString exits = QStringLiteral(FAKE_ENCODER_EXIT);
        QTest::newRow("mp3-low-quality") << exits << true << 2 << "shine -b 64 -s 24000 FILE";
        QTest::newRow("mp3-high-still-24000-hz")
            << exits << true << 0 << "shine -b 128 -s 24000 FILE";
        QTest::newRow("wav-low-quality") << exits << false << 2 << "record2wav FILE 11025";
        QTest::newRow("encoder-crashes-after-two-seconds")
            << QStringLiteral(FAKE_ENCODER_ABORT) << true << 1 << "shine -b 96 -s 24000 FILE";
        QTest::newRow("encoder-missing") << QString() << true << 1 << QString();
    }

    // the engine ends by itself with result 1, on the caller's thread here
    void encoderEndsByItself()
    {
        QFETCH(QString, encoder);
        QFETCH(bool, mp3);
        QFETCH(int, quality);
        QFETCH(QString, commandLine);
        QVERIFY(encoder.isEmpty() ? QDir(root->path("/usr/sbin")).removeRecursively()
                                  : root->installEncoders(encoder));
        setBitRate(quality);
        g_setRecoderVolume = false;
        const QString file = QStringLiteral("/mnt/mmc/e_Recorder/240101.") + (mp3 ? "mp3" : "wav");
        // two recordings in one process: the first one alone sets the microphone gain
        for (int run = 0; run < 2; ++run) {
            bRecording = true;
            bRecPause = RECSOUND_RECING;
            QCOMPARE(RecordToFile(file.toUtf8(), &bRecording, &bRecPause, bitrate, mp3), 1);
            QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
            QCOMPARE(bRecording.load(), false);
        }
        QCOMPARE(encoderLog(*root).value(1), commandLine.replace("FILE", root->path(file)));
        QVERIFY(encoder.isEmpty() || isReaped(encoderLog(*root).value(0).toInt()));
        QCOMPARE(root->amixerCalls(), QStringList{QStringLiteral("amixer set Input PGA 63%")});
    }
};

QTEST_GUILESS_MAIN(TestRecordThread)
#include "tst_recordthread.moc"
