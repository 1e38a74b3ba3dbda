#include "storage/devicepath.h"
#include "storage/tracelog.h"

#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTest>
#include <QTime>

#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

// Runs fn with standard error sent to a file and returns what was written.
template<typename Fn> QByteArray captureStderr(Fn fn)
{
    QTemporaryFile file;
    if (!file.open())
        return QByteArray();
    std::fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    fn();
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    file.seek(0);
    return file.readAll();
}

} // namespace

class TestTraceLog : public QObject
{
    Q_OBJECT
private slots:
    void lineLayout_data();
    void lineLayout();
    void liveLineCarriesCaller_data();
    void liveLineCarriesCaller();
    void threadIdIsTheKernelThread();
    void devicePathMapping_data();
    void devicePathMapping();
    void shellQuoting_data();
    void shellQuoting();
};

void TestTraceLog::lineLayout_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("debug-green") << int(TraceLevel::Debug)
                                 << QByteArray("\033[32m[01:02:03 PID:77 TID:78 D/LOG]  "
                                               "[main.cpp: 42 : (main)]  hello\033[0m\n");
    QTest::newRow("info-cyan") << int(TraceLevel::Info)
                               << QByteArray("\033[36m[01:02:03 PID:77 TID:78 I/LOG]  "
                                             "[main.cpp: 42 : (main)]  hello\033[0m\n");
    QTest::newRow("warning-yellow") << int(TraceLevel::Warning)
                                    << QByteArray("\033[33m[01:02:03 PID:77 TID:78 W/LOG]  "
                                                  "[main.cpp: 42 : (main)]  hello\033[0m\n");
}

void TestTraceLog::lineLayout()
{
    QFETCH(int, level);
    QFETCH(QByteArray, expected);
    // the folder part of the source path never reaches the line
    QCOMPARE(traceLine(TraceLevel(level), QTime(1, 2, 3), 77, 78, "/src/app/main.cpp", 42, "main",
                       "hello"),
             expected);
}

void TestTraceLog::liveLineCarriesCaller_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("colour");
    QTest::addColumn<QString>("tag");
    QTest::newRow("LOGD") << int(TraceLevel::Debug) << "32"
                          << "D/LOG";
    QTest::newRow("LOGI") << int(TraceLevel::Info) << "36"
                          << "I/LOG";
    QTest::newRow("LOGW") << int(TraceLevel::Warning) << "33"
                          << "W/LOG";
}

void TestTraceLog::liveLineCarriesCaller()
{
    QFETCH(int, level);
    QFETCH(QString, colour);
    QFETCH(QString, tag);
    int line = 0;
    const QByteArray out = captureStderr([&] {
        switch (TraceLevel(level)) {
        case TraceLevel::Debug:
            line = __LINE__ + 1;
            LOGD("value %d of %s", 42, "x");
            break;
        case TraceLevel::Info:
            line = __LINE__ + 1;
            LOGI("value %d of %s", 42, "x");
            break;
        case TraceLevel::Warning:
            line = __LINE__ + 1;
            LOGW("value %d of %s", 42, "x");
            break;
        }
    });
    const QRegularExpression layout(
        QStringLiteral("^\\x1b\\[%1m\\[(\\d\\d):(\\d\\d):(\\d\\d) PID:(\\d+) TID:(\\d+) %2\\]  "
                       "\\[tst_tracelog\\.cpp: (\\d+) : \\(operator\\(\\)\\)\\]  value 42 of "
                       "x\\x1b\\[0m\\n$")
            .arg(colour, tag));
    const QRegularExpressionMatch match = layout.match(QString::fromLatin1(out));
    QVERIFY2(match.hasMatch(), out.constData());
    QVERIFY(match.captured(1).toInt() < 24);
    QVERIFY(match.captured(2).toInt() < 60);
    QCOMPARE(match.captured(4).toLong(), long(getpid()));
    QCOMPARE(match.captured(5).toLong(), long(getpid())); // the main thread's id is the pid
    QCOMPARE(match.captured(6).toInt(), line);
}

void TestTraceLog::threadIdIsTheKernelThread()
{
    long workerTid = 0;
    const QByteArray out = captureStderr([&] {
        std::thread worker([&] {
            workerTid = syscall(SYS_gettid);
            LOGD("from worker");
        });
        worker.join();
    });
    QVERIFY(workerTid != 0);
    QVERIFY(workerTid != long(getpid()));
    QVERIFY2(out.contains(QByteArray("TID:") + QByteArray::number(qlonglong(workerTid)) + " D/LOG"),
             out.constData());
}

void TestTraceLog::devicePathMapping_data()
{
    QTest::addColumn<QByteArray>("root");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no-root-device-paths-stand") << QByteArray() << "/apps/config/x.ini"
                                                << "/apps/config/x.ini";
    QTest::newRow("root-in-front") << QByteArray("/tmp/dev") << "/mnt/mmc/e_Recorder"
                                   << "/tmp/dev/mnt/mmc/e_Recorder";
    QTest::newRow("root-with-trailing-slash") << QByteArray("/tmp/dev//") << "/usr/sbin/shine"
                                              << "/tmp/dev/usr/sbin/shine";
    QTest::newRow("relative-path-untouched") << QByteArray("/tmp/dev") << "song.mp3"
                                             << "song.mp3";
}

void TestTraceLog::devicePathMapping()
{
    QFETCH(QByteArray, root);
    QFETCH(QString, path);
    QFETCH(QString, expected);
    const QByteArray saved = qgetenv("RECORDER_ROOT");
    if (root.isEmpty())
        qunsetenv("RECORDER_ROOT");
    else
        qputenv("RECORDER_ROOT", root);
    QCOMPARE(devicePath(path), expected);
    QCOMPARE(devicePathBytes(path.toUtf8().constData()), expected.toUtf8());
    qputenv("RECORDER_ROOT", saved);
}

void TestTraceLog::shellQuoting_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("plain") << "/mnt/mmc/e_Music";
    QTest::newRow("blank") << "/tmp/my root/mnt/mmc";
    QTest::newRow("quote-and-dollar") << "/tmp/it's $HOME;rm -rf x";
}

void TestTraceLog::shellQuoting()
{
    QFETCH(QString, path);
    // the shell must hand the path back byte for byte, whatever it holds
    const QByteArray command = "printf '%s' " + shellQuoted(path);
    FILE *pipe = popen(command.constData(), "r");
    QVERIFY(pipe);
    char buffer[512] = {};
    const size_t n = fread(buffer, 1, sizeof buffer - 1, pipe);
    QCOMPARE(pclose(pipe), 0);
    QCOMPARE(QString::fromUtf8(buffer, int(n)), path);
}

QTEST_GUILESS_MAIN(TestTraceLog)
#include "tst_tracelog.moc"
