#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "recorder/recordthread.h"
#include "recorderprocess.h"
#include "screenstaging.h"
#include "shelllistener.h"
#include "storage/audioinfo.h"
#include "storage/configwidget.h"
#include "storage/recfilemanager.h"
#include "testdeviceroot.h"
#include "widgets/itemmenu.h"

#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using Keys = QList<Qt::Key>;

// The key pressed on the window, the modal dialogs that come up meanwhile answered in order, each
// with its own keys (Return once none are left); gives the class names of the dialogs met.
QStringList pressAnswering(QWidget &window, Qt::Key key, QList<Keys> answers)
{
    QStringList seen;
    QPointer<QWidget> last;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || modal == last)
            return;
        last = modal;
        seen << modal->metaObject()->className();
        for (Qt::Key answer : answers.isEmpty() ? Keys{Qt::Key_Return} : answers.takeFirst())
            QTest::keyClick(modal, answer);
    });
    poll.start(20);
    QTest::keyClick(&window, key);
    return seen;
}

// size of the file at these bytes, -1 when there is none: no codec in between
qint64 rawSize(const QByteArray &path)
{
    struct stat info;
    return ::stat(path.constData(), &info) == 0 ? info.st_size : -1;
}

// "ARGV0 ARGV1 ..." of this process's one child, the encoder of the recording under way
QString encoderCommandLine()
{
    QFile arguments(QStringLiteral("/proc/%1/cmdline").arg(childProcesses().value(0)));
    return arguments.open(QIODevice::ReadOnly) ? arguments.readAll().replace('\0', ' ').trimmed()
                                               : QString();
}

} // namespace

class TestRecordMainWnd : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QApplication::setPalette(recorderPalette());
        // the simulated encoders make their own signal: no sound card on a test machine
        qputenv("DEVSIM_SIGNAL", "generated");
        // a write beyond the file size limit (a full card) fails instead of ending the writer
        std::signal(SIGXFSZ, SIG_IGN);
    }

    void init() { QVERIFY(useRoot()); }

    void cleanup()
    {
        // whatever a test left running is stopped: no encoder may outlive it
        bRecording = false;
        QVERIFY(waitForEngine(5000));
        QTRY_VERIFY_WITH_TIMEOUT(childProcesses().isEmpty(), 5000);
    }

    // one window through the four-hour split, pause, a stop while paused, the save question and
    // the options; how each state looks is compared with docs/screens by tst_screens
    void recordingCycle()
    {
        RecordMainWnd window(nullptr, 0); // not shown yet: thousands of ticks without painting
        QVERIFY(startRecording(window));
        const QString day = "/mnt/mmc/e_Recorder/" + QDate::currentDate().toString("yyMMdd");
        // listed before anything is recorded, as the pen's path
        QCOMPARE(root->recordingList(), QStringList{day + ".mp3"});
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(root->path(day + ".mp3")).size() > 0, 10000);
        tickTo(window, 14400);
        QCOMPARE(root->recordingList().size(), 1);
        // the 14 401st second closes the file and a new one starts by itself half a second later
        window.updateRecTime();
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
        QTRY_COMPARE_WITH_TIMEOUT(bRecPause.load(), int(RECSOUND_RECING), 5000);
        QCOMPARE(window.getCurFileName(), root->path(day + "_1.mp3"));
        QCOMPARE(root->recordingList(), QStringList({day + "_1.mp3", day + ".mp3"}));
        QCOMPARE(window.getTimeText(), QStringLiteral("00:00"));

        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(window.getCurFileName()), 10000);
        const qint64 encoder = childProcesses().value(0);
        tickTo(window, 6);
        window.show();
        // no options while recording, nor paused; a paused encoder is held stopped
        for (int state : {RECSOUND_PAUSED, RECSOUND_CONTINUE, RECSOUND_PAUSED}) {
            QTest::keyClick(&window, Qt::Key_F12);
            QVERIFY(!window.getOptionMenu());
            QTest::keyClick(&window, Qt::Key_Return);
            QCOMPARE(bRecPause.load(), state);
            QTRY_COMPARE(processState(encoder) == 'T', state == RECSOUND_PAUSED);
        }
        QCOMPARE(pressAnswering(window, Qt::Key_Escape, {}),
                 QStringList({"YesnoSelect", "MessageDialog"})); // the marked answer is "Yes"
        // the held encoder is killed and reaped before the question comes
        QVERIFY(childProcesses().isEmpty());

        QTest::keyClick(&window, Qt::Key_F12);
        ItemMenu *menu = window.getOptionMenu();
        // volume down one step, format to WAV, quality to Low: each stored at once
        for (Qt::Key key : {Qt::Key_Left, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Right})
            QTest::keyClick(menu, key);
        const ConfigWidget c;
        QCOMPARE(QList<int>({c.getPlayVolume(), c.getFileFormat(), c.getFileQuality()}),
                 QList<int>({4, 1, 2}));
    }

    void stopRules_data()
    {
        QTest::addColumn<int>("ms");      // real time between OK and Escape
        QTest::addColumn<int>("seconds"); // then counted on the clock
        QTest::addColumn<Keys>("answer"); // empty: no question expected
        QTest::addColumn<bool>("kept");
        QTest::addColumn<QByteArray>("folder"); // of a root of its own, UTF-8 as the shell makes it
        const auto row = [](const char *name, int ms, int seconds, Keys answer, bool kept,
                            const QByteArray &folder = {}) {
            QTest::newRow(name) << ms << seconds << answer << kept << folder;
        };
        // under 4 s nothing stays, whenever the encoder (300 ms after the fork) makes its file
        for (int ms = 0; ms <= 500; ms += 50)
            row(qPrintable(QString("escape-%1ms-after-ok-removed").arg(ms)), ms, 0, {}, false);
        row("3s-removed-without-question", 0, 3, {}, false);
        row("4s-kept-without-question", 0, 4, {}, true);
        row("4s-kept-root-a-umlaut", 0, 4, {}, true, "b\xc3\xa4r");
        row("4s-kept-root-cjk", 0, 4, {}, true, "\xe5\xbd\x95\xe9\x9f\xb3");
        // a "Yes" keeps it: recordingCycle
        row("5s-asked-no-deletes", 0, 5, {Qt::Key_Right, Qt::Key_Return}, false);
        row("7s-asked-escape-deletes", 0, 7, {Qt::Key_Escape}, false);
    }

    void stopRules()
    {
        QFETCH(int, ms);
        QFETCH(int, seconds);
        QFETCH(Keys, answer);
        QFETCH(bool, kept);
        QFETCH(QByteArray, folder);
        // the program's codec for the locale
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("GBK"));
        const auto restore = qScopeGuard([] { QTextCodec::setCodecForLocale(nullptr); });
        QVERIFY(useRoot(folder));
        RecordMainWnd window(nullptr, 0);
        QVERIFY(startRecording(window));
        const QString name = QFileInfo(window.getCurFileName()).fileName();
        const QByteArray file = root->rootBytes() + "/mnt/mmc/e_Recorder/" + name.toLatin1();
        QTest::qWait(ms); // the interval under test, not a wait for something
        if (seconds > 0)  // a file there to keep or delete
            QTRY_VERIFY_WITH_TIMEOUT(rawSize(file) > 0, 10000);
        tickTo(window, seconds);
        QCOMPARE(pressAnswering(window, Qt::Key_Escape, {answer}).isEmpty(), answer.isEmpty());
        // reaped before the stop returned: nothing can make or remove the file any more
        QVERIFY(childProcesses().isEmpty());
        QCOMPARE(rawSize(file) > 0, kept);
        QCOMPARE(root->recordingList(),
                 kept ? QStringList{"/mnt/mmc/e_Recorder/" + name} : QStringList());
    }

    void fullLibraryRefuses()
    {
        QByteArray list;
        for (int i = 0; i < RecFileManager::maxFiles; ++i) {
            const QByteArray name = "/mnt/mmc/e_Recorder/old_" + QByteArray::number(i) + ".mp3";
            QVERIFY(root->writeFile(QString::fromLatin1(name), "x"));
            list += name + '\n';
        }
        QVERIFY(root->writeFile("/apps/config/reclist.ini", list));
        RecordMainWnd window(nullptr, 0);
        QCOMPARE(pressAnswering(window, Qt::Key_Return, {}), QStringList{"MessageDialog"});
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED)); // no engine started
        QCOMPARE(root->readFile("/apps/config/reclist.ini"), list);
        // one fewer leaves room again
        QVERIFY(QFile::remove(root->path("/mnt/mmc/e_Recorder/old_0.mp3")));
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));
    }

    void shellCommands_data()
    {
        QTest::addColumn<QByteArray>("data"); // of "execute(QString)"
        QTest::addColumn<bool>("recording");  // a recording runs when the message comes
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("escToShell");
        QTest::addColumn<int>("flood"); // ignored messages sent first
        const auto row = [](const char *name, const QByteArray &data, bool recording, bool closes,
                            bool esc, int flood = 0) {
            QTest::newRow(name) << data << recording << closes << esc << flood;
        };
        row("presspoweroff-only-flushes", "presspoweroff", true, false, false);
        row("stoponly-while-idle", "stoponly", false, true, true);
        row("stop-with-terminating-zero", QByteArray("stop", 5), true, true, false);
        row("stoponly-with-terminating-zero", QByteArray("stoponly", 9), true, true, true);
        row("stop-after-10000-messages-clock-loses-nothing", "stop", true, true, false, 10000);
    }

    void shellCommands()
    {
        QFETCH(QByteArray, data);
        QFETCH(bool, recording);
        QFETCH(bool, closes);
        QFETCH(bool, escToShell);
        QFETCH(int, flood);
        const ShellListener shell;
        RecordMainWnd window(nullptr, 0);
        window.show();
        const QString channel = QStringLiteral("recorderprocess");
        QCopChannel beside(channel);
        QSignalSpy heard(&beside, &QCopChannel::received);
        QCopChannel::flush();
        QElapsedTimer clock;
        clock.start();
        if (recording)
            QTest::keyClick(&window, Qt::Key_Return);
        // "stop" under a name the recorder ignores, every tenth a command that flushes the disks
        for (int i = 0; i < flood; ++i)
            QVERIFY(QCopChannel::send(channel, i % 10 ? "run(QString)" : "execute(QString)",
                                      i % 10 ? "stop" : "plugusb"));
        QTRY_COMPARE_WITH_TIMEOUT(heard.count(), flood, 120000);
        // every second since OK is on the clock, but for the one under way
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(clock.elapsed() / 1000 - window.recordedSeconds()) <= 1,
                                 3000);
        // through the bus, as the shell sends it; then one more, which comes in after it
        QVERIFY(QCopChannel::send(channel, "execute(QString)", data));
        QVERIFY(QCopChannel::send(channel, "noise(QString)", "x"));
        QTRY_COMPARE_WITH_TIMEOUT(heard.count(), flood + 2, 30000);
        QTRY_COMPARE_WITH_TIMEOUT(window.isVisible(), !closes, 30000);
        QCOMPARE(bRecPause.load(), int(recording && !closes ? RECSOUND_RECING : RECSOUND_STOPPED));
        // beyond the recorder's own wake-up messages
        QTRY_COMPARE(shell.heard().filter(QRegularExpression("^(?!recorder\\()")),
                     escToShell ? QStringList{"ESC(QString) escpressed"} : QStringList());
    }

    void encoderEndsByItself_data()
    {
        QTest::addColumn<QString>("encoder");     // none: the simulation's, on a card that fills up
        QTest::addColumn<int>("quality");         // High, Mid, Low
        QTest::addColumn<QString>("commandLine"); // of the next recording, with the simulation's
        const QString mid = QStringLiteral("shine -b 96 -s 24000 FILE");
        QTest::newRow("card-fills-up-partial-file-kept") << QString() << 1 << mid;
        QTest::newRow("exits-at-once-low") << "/bin/true" << 2 << "shine -b 64 -s 24000 FILE";
        QTest::newRow("exits-at-once-high-still-24000-hz")
            << "/bin/true" << 0 << "shine -b 128 -s 24000 FILE";
        QTest::newRow("missing-nothing-listed") << "missing" << 1 << mid;
    }

    void encoderEndsByItself()
    {
        QFETCH(QString, encoder);
        QFETCH(int, quality);
        QFETCH(QString, commandLine);
        // a full card: the encoder's writes fail beyond 24000 bytes (two seconds at 96 kbit/s)
        rlimit old{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &old), 0);
        const auto restore = qScopeGuard([old] { setrlimit(RLIMIT_FSIZE, &old); });
        const rlimit small{24000, old.rlim_max};
        const bool cardFull = encoder.isEmpty();
        QVERIFY(cardFull               ? setrlimit(RLIMIT_FSIZE, &small) == 0
                : encoder == "missing" ? QDir(root->path("/usr/sbin")).removeRecursively()
                                       : root->installEncoders(encoder));
        g_setRecoderVolume = false; // as in a new process
        RecordMainWnd window(nullptr, 0);
        window.fileQualityChangeSlot(quality, {});
        QTest::keyClick(&window, Qt::Key_Return);
        const QString file = window.getCurFileName();
        // the window stops counting at its next tick and shows that it is idle, the engine ended
        QTRY_COMPARE_WITH_TIMEOUT(window.getDisplayState(), int(RecordMainWnd::DisplayIdle), 20000);
        QTRY_VERIFY(!bRecording && bRecPause == RECSOUND_STOPPED && childProcesses().isEmpty());
        QVERIFY(!window.findChild<QTimer *>()->isActive());
        audioinfo info;
        QCOMPARE(getaudioinfo(QFile::encodeName(file).constData(), &info) == 0, cardFull);
        QVERIFY(!cardFull || info.seconds >= 1); // what it wrote plays
        QCOMPARE(root->recordingList().size(), cardFull ? 1 : 0);

        // the window goes on working: the next OK starts a new recording at the same quality;
        // the first one alone set the microphone gain, before its encoder started
        setrlimit(RLIMIT_FSIZE, &old);
        QVERIFY(root->installEncoders());
        QTest::keyClick(&window, Qt::Key_Return);
        QTRY_COMPARE(encoderCommandLine(), commandLine.replace("FILE", window.getCurFileName()));
        QCOMPARE(root->amixerCalls(), QStringList{"amixer set Input PGA 63%"});
    }

private:
    // a device root of its own with the encoders, the settings read again from there
    bool useRoot(const QByteArray &folder = {})
    {
        root.reset(); // its environment goes before the next one is set
        root = std::make_unique<TestDeviceRoot>(folder);
        delete ConfigWidget::reader;
        ConfigWidget::reader = nullptr;
        return root->installEncoders();
    }

    std::unique_ptr<TestDeviceRoot> root;
};

QTEST_MAIN(TestRecordMainWnd)
#include "tst_recordmainwnd.moc"
