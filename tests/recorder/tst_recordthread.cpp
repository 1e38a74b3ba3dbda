#include "recorder/recordthread.h"
#include "testdeviceroot.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTemporaryFile>
#include <QtTest>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

// What the fake encoder wrote into $RECORDER_ROOT/encoder.log.
struct EncoderLog
{
    explicit EncoderLog(const TestDeviceRoot &root)
    {
        const QString text = QString::fromUtf8(root.readFile(QStringLiteral("/encoder.log")));
        for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            if (line.startsWith(QLatin1String("pid ")))
                pid = line.mid(4).toInt();
            else if (line.startsWith(QLatin1String("arg ")))
                arguments << line.mid(4);
            else if (line == QLatin1String("ready"))
                ready = true;
            else if (line == QLatin1String("CONT"))
                ++continued;
        }
    }
    pid_t pid = 0;
    QStringList arguments;
    bool ready = false;
    int continued = 0;
};

// state letter of /proc/<pid>/stat ('T' stopped, 'Z' zombie), 0 when there is no such process
char processState(pid_t pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = stat.readAll();
    const int close = line.lastIndexOf(')');
    return close > 0 && close + 2 < line.size() ? line.at(close + 2) : 0;
}

bool isRunning(pid_t pid)
{
    const char state = processState(pid);
    return state != 0 && state != 'Z';
}

// our child, already reaped by the engine: nothing is left to wait for
bool isReaped(pid_t pid)
{
    return waitpid(pid, nullptr, WNOHANG) == -1 && errno == ECHILD && processState(pid) == 0;
}

int threadCount()
{
    return QDir(QStringLiteral("/proc/self/task"))
        .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
        .size();
}

// Collects what is written to standard output while it exists.
class StdoutCapture
{
public:
    StdoutCapture()
    {
        m_file.open();
        std::fflush(stdout);
        m_saved = dup(STDOUT_FILENO);
        dup2(m_file.handle(), STDOUT_FILENO);
    }
    ~StdoutCapture() { restore(); }
    QByteArray text()
    {
        restore();
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    void restore()
    {
        if (m_saved < 0)
            return;
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
        m_saved = -1;
    }
    QTemporaryFile m_file;
    int m_saved = -1;
};

// One RecordToFile run on a worker thread, as the recorder window starts it.
class Recording
{
public:
    Recording(const QByteArray &fileName, bool mp3, const char *rate = bitrate)
        : m_fileName(fileName), m_thread([this, mp3, rate] {
              m_result = RecordToFile(m_fileName.constData(), &flag, &state, rate, mp3);
              m_done = true;
          })
    {
    }
    ~Recording()
    {
        flag = false;
        m_thread.join();
    }
    bool isDone() const { return m_done; }
    int result() const { return m_result; }

    std::atomic<bool> flag{true};
    std::atomic<int> state{RECSOUND_RECING};

private:
    QByteArray m_fileName;
    int m_result = -2;
    std::atomic<bool> m_done{false};
    std::thread m_thread;
};

int recordChild(const char *fileName)
{
    // the recorder, stripped to its worker: killed from outside while the encoder runs
    std::atomic<bool> flag{true};
    std::atomic<int> state{RECSOUND_RECING};
    std::thread worker([&] { RecordToFile(fileName, &flag, &state, "64", true); });
    worker.join();
    return 0;
}

} // namespace

class TestRecordThread : public QObject
{
    Q_OBJECT

private:
    void installEncoder(const TestDeviceRoot &root, const QString &fake)
    {
        QDir().mkpath(root.path(QStringLiteral("/usr/sbin")));
        for (const char *name : {"/usr/sbin/shine", "/usr/sbin/record2wav"})
            QVERIFY(QFile::link(fake, root.path(QLatin1String(name))));
    }

private slots:
    void nullArguments_data();
    void nullArguments();
    void commandLine_data();
    void commandLine();
    void pauseResumeAndStopWhilePaused();
    void encoderEndsByItself_data();
    void encoderEndsByItself();
    void gainOncePerProcess();
    void recordThreadUsesGlobals();
    void killedRecorderLeavesNoEncoder();
};

void TestRecordThread::nullArguments_data()
{
    QTest::addColumn<bool>("withName");
    QTest::addColumn<bool>("withFlag");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("no-file-name") << false << true
                                  << QByteArray(
                                         "RecordToFile:: filename is (null),line =72 return -1\n");
    QTest::newRow("no-recording-flag")
        << true << false
        << QByteArray("RecordToFile:: filename is /mnt/mmc/a.mp3,line =72 return -1\n");
}

void TestRecordThread::nullArguments()
{
    QFETCH(bool, withName);
    QFETCH(bool, withFlag);
    QFETCH(QByteArray, line);
    TestDeviceRoot root;
    installEncoder(root, QStringLiteral(FAKE_ENCODER_RUN));
    std::atomic<bool> flag{true};
    std::atomic<int> state{RECSOUND_RECING};
    StdoutCapture out;
    QCOMPARE(RecordToFile(withName ? "/mnt/mmc/a.mp3" : nullptr, withFlag ? &flag : nullptr, &state,
                          "64", true),
             -1);
    QCOMPARE(out.text(), line);
    QVERIFY(flag);
    QCOMPARE(state.load(), int(RECSOUND_RECING));
    QVERIFY(!root.exists(QStringLiteral("/encoder.log")));
}

void TestRecordThread::commandLine_data()
{
    QTest::addColumn<bool>("mp3");
    QTest::addColumn<int>("previousQuality");
    QTest::addColumn<int>("quality");
    QTest::addColumn<QString>("rateText");
    QTest::addColumn<QStringList>("arguments");
    const QString file = QStringLiteral("/mnt/mmc/e_Recorder/240101.");
    QTest::newRow("mp3-low-quality")
        << true << 0 << 2 << QStringLiteral("11025")
        << QStringList{"shine", "-b", "64", "-s", "24000", file + "mp3"};
    QTest::newRow("mp3-high-quality-still-24000-hz")
        << true << 2 << 0 << QStringLiteral("44100")
        << QStringList{"shine", "-b", "128", "-s", "24000", file + "mp3"};
    QTest::newRow("wav-low-quality") << false << 0 << 2 << QStringLiteral("11025")
                                     << QStringList{"record2wav", file + "wav", "11025"};
    QTest::newRow("wav-middle-quality") << false << 0 << 1 << QStringLiteral("22050")
                                        << QStringList{"record2wav", file + "wav", "22050"};
    QTest::newRow("unknown-quality-keeps-the-last")
        << true << 1 << 7 << QStringLiteral("22050")
        << QStringList{"shine", "-b", "96", "-s", "24000", file + "mp3"};
}

void TestRecordThread::commandLine()
{
    QFETCH(bool, mp3);
    QFETCH(int, previousQuality);
    QFETCH(int, quality);
    QFETCH(QString, rateText);
    QFETCH(QStringList, arguments);
    TestDeviceRoot root;
    installEncoder(root, QStringLiteral(FAKE_ENCODER_RUN));
    setBitRate(previousQuality);
    QCOMPARE(QString::fromLatin1(setBitRate(quality)), rateText);

    const QString file = arguments.at(mp3 ? 5 : 1);
    arguments[mp3 ? 5 : 1] = root.path(file);
    pid_t pid = 0;
    {
        Recording recording(file.toUtf8(), mp3);
        QTRY_VERIFY(EncoderLog(root).ready);
        const EncoderLog log(root);
        pid = log.pid;
        QCOMPARE(log.arguments, arguments);
        StdoutCapture out;
        recording.flag = false;
        QTRY_VERIFY(recording.isDone());
        QCOMPARE(recording.result(), 0);
        QCOMPARE(recording.state.load(), int(RECSOUND_STOPPED));
        QCOMPARE(out.text(), QByteArray("child process abnormal terminate !!!!!!!!\n"));
    }
    QVERIFY(isReaped(pid));
}

void TestRecordThread::pauseResumeAndStopWhilePaused()
{
    TestDeviceRoot root;
    installEncoder(root, QStringLiteral(FAKE_ENCODER_RUN));
    auto recording = std::make_unique<Recording>("/mnt/mmc/e_Recorder/a.mp3", true);
    QTRY_VERIFY(EncoderLog(root).ready);
    const pid_t pid = EncoderLog(root).pid;
    QVERIFY(isRunning(pid));

    // while the state holds "paused", every pass stops the encoder again
    recording->state = RECSOUND_PAUSED;
    QTRY_COMPARE(processState(pid), 'T');
    for (int woken = 1; woken <= 3; ++woken) {
        ::kill(pid, SIGCONT);
        QTRY_COMPARE(EncoderLog(root).continued, woken);
        QTRY_COMPARE(processState(pid), 'T');
    }

    // "continue" resumes it, with one SIGCONT per 100 ms pass while it holds
    const int before = EncoderLog(root).continued;
    QElapsedTimer held;
    held.start();
    recording->state = RECSOUND_CONTINUE;
    QTest::qWait(1000);
    recording->state = RECSOUND_RECING;
    const qint64 passes = held.elapsed() / 100;
    QTRY_VERIFY(isRunning(pid) && processState(pid) != 'T');
    QTest::qWait(250); // a pass that read the old state may still be under way
    const int sent = EncoderLog(root).continued - before;
    QVERIFY2(sent >= passes * 4 / 10 && sent <= passes + 2,
             qPrintable(QStringLiteral("%1 SIGCONT in %2 passes").arg(sent).arg(passes)));

    // "recording" leaves it alone
    QTest::qWait(500);
    QCOMPARE(EncoderLog(root).continued - before, sent);

    // a stop while paused kills the stopped encoder and reaps it
    recording->state = RECSOUND_PAUSED;
    QTRY_COMPARE(processState(pid), 'T');
    recording->flag = false;
    QTRY_VERIFY(recording->isDone());
    QCOMPARE(recording->result(), 0);
    QCOMPARE(recording->state.load(), int(RECSOUND_STOPPED));
    recording.reset();
    QVERIFY(isReaped(pid));
}

void TestRecordThread::encoderEndsByItself_data()
{
    QTest::addColumn<QString>("encoder");
    QTest::newRow("encoder-missing") << QString();
    QTest::newRow("encoder-exits-at-once") << QStringLiteral(FAKE_ENCODER_EXIT);
    QTest::newRow("encoder-crashes-after-two-seconds") << QStringLiteral(FAKE_ENCODER_ABORT);
}

void TestRecordThread::encoderEndsByItself()
{
    QFETCH(QString, encoder);
    TestDeviceRoot root;
    if (!encoder.isEmpty())
        installEncoder(root, encoder);
    StdoutCapture out;
    Recording recording("/mnt/mmc/e_Recorder/a.mp3", true);
    QTRY_VERIFY_WITH_TIMEOUT(recording.isDone(), 10000);
    QCOMPARE(recording.result(), 1);
    QCOMPARE(recording.state.load(), int(RECSOUND_STOPPED));
    QCOMPARE(recording.flag.load(), false);
    const QByteArray text = out.text();
    QVERIFY2(QRegularExpression(QStringLiteral("^ recordthread.cpp  RecordToFile  215 "
                                               "kill\\((\\d+), SIGTERM\\) != 0\n$"))
                 .match(QString::fromLatin1(text))
                 .hasMatch(),
             text.constData());
    if (!encoder.isEmpty())
        QVERIFY(isReaped(EncoderLog(root).pid));
}

void TestRecordThread::gainOncePerProcess()
{
    TestDeviceRoot root;
    installEncoder(root, QStringLiteral(FAKE_ENCODER_EXIT));
    g_setRecoderVolume = false;
    for (int i = 0; i < 2; ++i) {
        Recording recording("/mnt/mmc/e_Recorder/a.mp3", true);
        QTRY_VERIFY(recording.isDone());
    }
    QCOMPARE(root.amixerCalls(), QStringList{QStringLiteral("amixer set Input PGA 63%")});
    QVERIFY(g_setRecoderVolume);
}

void TestRecordThread::recordThreadUsesGlobals()
{
    TestDeviceRoot root;
    installEncoder(root, QStringLiteral(FAKE_ENCODER_RUN));
    const int threads = threadCount();
    isRecord2Mp3 = false;
    setBitRate(2);
    bRecording = true;
    bRecPause = RECSOUND_RECING;
    QCOMPARE(startRecordThread(QStringLiteral("/mnt/mmc/e_Recorder/b.wav")), 0);
    QTRY_VERIFY(EncoderLog(root).ready);
    const EncoderLog log(root);
    QCOMPARE(log.arguments.last(), QStringLiteral("11025"));
    bRecPause = RECSOUND_PAUSED;
    QTRY_COMPARE(processState(log.pid), 'T');
    bRecording = false;
    QTRY_COMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
    // the worker ends by itself and leaves nothing behind
    QTRY_COMPARE(threadCount(), threads);
    QVERIFY(isReaped(log.pid));
    isRecord2Mp3 = true;
}

void TestRecordThread::killedRecorderLeavesNoEncoder()
{
    TestDeviceRoot root;
    installEncoder(root, QStringLiteral(FAKE_ENCODER_RUN));
    // the orphaned encoder comes to us, so that we can see it end and reap it
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    QProcess recorder;
    recorder.setProcessChannelMode(QProcess::ForwardedChannels);
    recorder.start(QCoreApplication::applicationFilePath(),
                   {QStringLiteral("--record-child"), QStringLiteral("/mnt/mmc/e_Recorder/c.mp3")});
    QVERIFY(recorder.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(EncoderLog(root).ready, 10000);
    const pid_t encoder = EncoderLog(root).pid;
    // whatever happens, no encoder records on after this test
    const auto cleanup = qScopeGuard([encoder] {
        if (isRunning(encoder))
            ::kill(encoder, SIGKILL);
        waitpid(encoder, nullptr, 0);
        prctl(PR_SET_CHILD_SUBREAPER, 0);
    });
    QVERIFY(isRunning(encoder));

    recorder.kill();
    QVERIFY(recorder.waitForFinished());
    QTRY_VERIFY_WITH_TIMEOUT(!isRunning(encoder), 1000);
}

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--record-child") == 0)
        return recordChild(argv[2]);
    QCoreApplication app(argc, argv);
    TestRecordThread test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_recordthread.moc"
