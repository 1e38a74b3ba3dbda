#include "app/qcopchannel.h"
#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "recorder/recordthread.h"
#include "recorderprocess.h"
#include "screenpixels.h"
#include "screenstaging.h"
#include "shelllistener.h"
#include "storage/audioinfo.h"
#include "storage/configwidget.h"
#include "storage/recfilemanager.h"
#include "testdeviceroot.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"

#include <QApplication>
#include <QDate>
#include <QDir>
#include <QPointer>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QTextCodec>
#include <QTimer>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

// Answers the modal dialogs as they come up, in order: each with its own keys.
class ModalAnswerer : public QObject
{
public:
    explicit ModalAnswerer(QList<QList<Qt::Key>> answers) : m_answers(std::move(answers))
    {
        connect(&m_poll, &QTimer::timeout, this, [this] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal || modal == m_last)
                return;
            m_last = modal;
            seen << QString::fromLatin1(modal->metaObject()->className());
            const QList<Qt::Key> keys =
                m_answers.isEmpty() ? QList<Qt::Key>{Qt::Key_Return} : m_answers.takeFirst();
            for (Qt::Key key : keys)
                QTest::keyClick(modal, key);
        });
        m_poll.start(20);
    }
    QStringList seen; // class names of the dialogs met

private:
    QList<QList<Qt::Key>> m_answers;
    QTimer m_poll;
    QPointer<QWidget> m_last;
};

// the settings store is read again, from the device root in use
void freshSettings()
{
    delete ConfigWidget::reader;
    ConfigWidget::reader = nullptr;
}

// size of the file at these bytes, -1 when there is none: no codec in between
qint64 rawSize(const QByteArray &path)
{
    struct stat info;
    return ::stat(path.constData(), &info) == 0 ? info.st_size : -1;
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
    }

    void init()
    {
        root = std::make_unique<TestDeviceRoot>();
        QVERIFY(root->installEncoders());
        freshSettings();
    }

    void cleanup()
    {
        // whatever a test left running is stopped: no encoder may outlive it
        bRecording = false;
        QTRY_VERIFY_WITH_TIMEOUT(bRecPause == RECSOUND_STOPPED, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(childProcesses().isEmpty(), 5000);
        freshSettings();
        root.reset();
    }

    void recordingCycleAndScreens()
    {
        RecordMainWnd window(nullptr, 0);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.size(), QSize(256, 64));

        // idle: the separator, and a dot (an outline) says OK records
        const QImage idle = shoot(window, "recorder-idle");
        QCOMPARE(window.helpText(), QStringLiteral("Press OK to Record"));
        for (int x = 0; x < 256; x += 15)
            QVERIFY(lit(idle, x, 20) && !lit(idle, x, 19));
        QVERIFY(!lit(idle, 178, 36) && lit(idle, 178, 33) && lit(idle, 175, 36));

        QVERIFY(startRecording(window));
        const QString file = window.getCurFileName();
        const QString today = QDate::currentDate().toString(QStringLiteral("yyMMdd"));
        QCOMPARE(file, root->path("/mnt/mmc/e_Recorder/" + today + ".mp3"));
        // listed before anything is recorded, as the pen's path
        QCOMPARE(root->recordingList(), QStringList{"/mnt/mmc/e_Recorder/" + today + ".mp3"});
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() > 0, 10000);
        tickTo(window, 3);
        const QImage recording = shoot(window, "recorder-recording");
        QCOMPARE(window.helpText(), QStringLiteral("Press OK to Pause"));
        QCOMPARE(window.getTimeText(), QStringLiteral("00:03"));
        for (int y = 33; y <= 39; ++y) // two bars with a gap
            QVERIFY(lit(recording, 175, y) && lit(recording, 181, y) && !lit(recording, 178, y));

        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(bRecPause.load(), int(RECSOUND_PAUSED));
        const QImage paused = shoot(window, "recorder-paused");
        QCOMPARE(window.helpText(), QStringLiteral("Press OK to Continue"));
        QVERIFY(!lit(paused, 178, 36) && !lit(paused, 175, 39));
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(bRecPause.load(), int(RECSOUND_CONTINUE));
        QCOMPARE(window.getDisplayState(), int(RecordMainWnd::DisplayRecording));

        tickTo(window, 6);
        ModalAnswerer answers({{Qt::Key_Return}, {Qt::Key_Return}});
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(answers.seen, QStringList({"YesnoSelect", "MessageDialog"}));
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
        QCOMPARE(window.getTimeText(), QStringLiteral("00:00"));
        QVERIFY(QFile::exists(file) && root->recordingList().size() == 1);
        QVERIFY(window.isVisible()); // a stop leaves the window open

        window.newRecordOptionWnd();
        QVERIFY(QTest::qWaitForWindowExposed(window.getOptionMenu()));
        shoot(*window.getOptionMenu(), "recorder-menu");
        // under an open menu the recorder draws nothing at all
        QVERIFY(!lit(window.grab().toImage(), 100, 20));
    }

    void stopRules_data()
    {
        QTest::addColumn<int>("ms");                // real time between OK and Escape
        QTest::addColumn<int>("seconds");           // then counted on the clock
        QTest::addColumn<QList<Qt::Key>>("answer"); // empty: no question expected
        QTest::addColumn<bool>("kept");
        // under 4 s nothing stays, whenever the encoder (300 ms after the fork) makes its file
        for (int ms = 0; ms <= 500; ms += 50)
            QTest::addRow("escape-%dms-after-ok-removed", ms)
                << ms << 0 << QList<Qt::Key>{} << false;
        QTest::newRow("3s-removed-without-question") << 0 << 3 << QList<Qt::Key>{} << false;
        QTest::newRow("4s-kept-without-question") << 0 << 4 << QList<Qt::Key>{} << true;
        // a "Yes" keeps it: recordingCycleAndScreens
        QTest::newRow("5s-asked-no-deletes")
            << 0 << 5 << QList<Qt::Key>{Qt::Key_Right, Qt::Key_Return} << false;
        QTest::newRow("7s-asked-escape-deletes")
            << 0 << 7 << QList<Qt::Key>{Qt::Key_Escape} << false;
    }

    void stopRules()
    {
        QFETCH(int, ms);
        QFETCH(int, seconds);
        QFETCH(QList<Qt::Key>, answer);
        QFETCH(bool, kept);
        RecordMainWnd window(nullptr, 0);
        QVERIFY(startRecording(window));
        const QString file = window.getCurFileName();
        QTest::qWait(ms); // the interval under test, not a wait for something
        if (seconds > 0)  // a file there to keep or delete
            QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(file), 10000);
        tickTo(window, seconds);

        ModalAnswerer answers({answer, {Qt::Key_Return}});
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(answers.seen.isEmpty(), answer.isEmpty());
        // reaped before the stop returned: nothing can make or remove the file any more
        QVERIFY(childProcesses().isEmpty());
        QCOMPARE(QFile::exists(file), kept);
        QCOMPARE(root->recordingList().size(), kept ? 1 : 0);
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
        // a second stop finds nothing to do
        window.stopRecord();
        QCOMPARE(QFile::exists(file), kept);
    }

    void fourHourSplit()
    {
        RecordMainWnd window(nullptr, 0); // not shown: thousands of ticks without painting
        QVERIFY(startRecording(window));
        const QString first = window.getCurFileName();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(first), 10000);
        tickTo(window, 14400);
        QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));

        // the 14 401st second closes the file and a new one starts by itself half a second later
        window.updateRecTime();
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
        QTRY_COMPARE_WITH_TIMEOUT(bRecPause.load(), int(RECSOUND_RECING), 5000);
        QVERIFY(window.getCurFileName().endsWith(QStringLiteral("_1.mp3")));
        const QStringList listed = root->recordingList();
        QCOMPARE(listed.size(), 2);
        QVERIFY(listed.at(1).endsWith(QFileInfo(first).fileName()));
        QCOMPARE(window.getTimeText(), QStringLiteral("00:00"));
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
        ModalAnswerer answers({{Qt::Key_Return}});
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(answers.seen, QStringList{"MessageDialog"});
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
        QVERIFY(childProcesses().isEmpty());
        QCOMPARE(root->readFile("/apps/config/reclist.ini"), list);

        // one fewer leaves room again
        QVERIFY(QFile::remove(root->path("/mnt/mmc/e_Recorder/old_0.mp3")));
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));
    }

    void optionsMenu()
    {
        RecordMainWnd window(nullptr, 0);
        window.show();
        QTest::keyClick(&window, Qt::Key_F12);
        QPointer<ItemMenu> menu = window.getOptionMenu();
        QVERIFY(menu && menu->isVisible());
        QCOMPARE(menu->findChildren<KoSpinBox *>().at(1)->getCurIndex(), 1); // quality "Mid "

        // volume down one step, format to WAV, quality to Low: each stored at once
        for (Qt::Key key : {Qt::Key_Left, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Right})
            QTest::keyClick(menu, key);
        ConfigWidget reread;
        QCOMPARE(reread.getPlayVolume(), 4);
        QCOMPARE(reread.getFileFormat(), 1);
        QCOMPARE(reread.getFileQuality(), 2);

        QTest::keyClick(menu, Qt::Key_Escape);
        QVERIFY(!window.getOptionMenu());
        QTRY_VERIFY(menu.isNull());
        QVERIFY(window.isVisible());

        // a fresh menu shows the stored values; none while recording or paused
        QTest::keyClick(&window, Qt::Key_F12);
        QCOMPARE(window.getOptionMenu()->findChildren<KoSpinBox *>().at(0)->getCurIndex(), 1);
        QTest::keyClick(window.getOptionMenu(), Qt::Key_Escape);
        QTest::keyClick(&window, Qt::Key_Return);
        QTest::keyClick(&window, Qt::Key_F12);
        QVERIFY(!window.getOptionMenu());
        QTest::keyClick(&window, Qt::Key_Return);
        QTest::keyClick(&window, Qt::Key_F12);
        QVERIFY(!window.getOptionMenu());
        window.stopRecord();
    }

    void shellCommands_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("recording"); // a recording runs when the message comes
        QTest::addColumn<bool>("closes");
        QTest::addColumn<QString>("toShell");
        QTest::newRow("presspoweroff-only-flushes")
            << "execute(QString)" << QByteArray("presspoweroff") << true << false << QString();
        QTest::newRow("other-message-name-ignored")
            << "run(QString)" << QByteArray("stop") << true << false << QString();
        QTest::newRow("stop-while-recording")
            << "execute(QString)" << QByteArray("stop") << true << true << QString();
        QTest::newRow("stoponly-while-idle") << "execute(QString)" << QByteArray("stoponly")
                                             << false << true << "ESC(QString) escpressed";
        QTest::newRow("stoponly-while-recording") << "execute(QString)" << QByteArray("stoponly")
                                                  << true << true << "ESC(QString) escpressed";
        QTest::newRow("stop-with-terminating-zero")
            << "execute(QString)" << QByteArray("stop", 5) << true << true << QString();
        QTest::newRow("stoponly-with-terminating-zero")
            << "execute(QString)" << QByteArray("stoponly", 9) << true << true
            << "ESC(QString) escpressed";
    }

    void shellCommands()
    {
        QFETCH(QString, message);
        QFETCH(QByteArray, data);
        QFETCH(bool, recording);
        QFETCH(bool, closes);
        QFETCH(QString, toShell);
        const ShellListener shell;
        RecordMainWnd window(nullptr, 0);
        window.show();
        if (recording)
            QVERIFY(startRecording(window));
        QCopChannel beside(QStringLiteral("recorderprocess"));
        QSignalSpy heard(&beside, &QCopChannel::received);
        QCopChannel::flush();
        // through the bus, as the shell sends it; then one more, which comes in after it
        QVERIFY(QCopChannel::send(QStringLiteral("recorderprocess"), message, data));
        QVERIFY(QCopChannel::send(QStringLiteral("recorderprocess"), "noise(QString)", "x"));
        QTRY_COMPARE_WITH_TIMEOUT(heard.count(), 2, 5000);
        if (closes)
            QTRY_VERIFY_WITH_TIMEOUT(!window.isVisible(), 5000);
        QCOMPARE(window.isVisible(), !closes);
        QCOMPARE(bRecPause.load(), int(recording && !closes ? RECSOUND_RECING : RECSOUND_STOPPED));
        // beyond the recorder's own wake-up messages
        const auto sentToShell = [&shell] {
            return shell.heard().filter(QRegularExpression(QStringLiteral("^(?!recorder\\()")));
        };
        if (!toShell.isEmpty())
            QTRY_COMPARE(sentToShell(), QStringList{toShell});
        else
            QCOMPARE(sentToShell(), QStringList());
        window.stopRecord();
    }

    void encoderEndsByItself_data()
    {
        QTest::addColumn<bool>("cardFull"); // otherwise the encoder gives up at once
        QTest::newRow("card-fills-up-partial-file-kept") << true;
        QTest::newRow("encoder-fails-at-once-nothing-listed") << false;
    }

    void encoderEndsByItself()
    {
        QFETCH(bool, cardFull);
        // a full card: the encoder's writes fail beyond 24000 bytes (two seconds at 96 kbit/s)
        rlimit old{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &old), 0);
        const auto unlimit = [old] {
            setrlimit(RLIMIT_FSIZE, &old);
            std::signal(SIGXFSZ, SIG_DFL);
        };
        const auto restore = qScopeGuard(unlimit);
        const rlimit small{24000, old.rlim_max};
        if (cardFull) {
            std::signal(SIGXFSZ, SIG_IGN);
            QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        } else {
            QVERIFY(root->installEncoders(QStringLiteral(FAKE_ENCODER_EXIT)));
        }
        RecordMainWnd window(nullptr, 0);
        QTest::keyClick(&window, Qt::Key_Return);
        const QString file = window.getCurFileName();
        QTRY_VERIFY_WITH_TIMEOUT(!bRecording && bRecPause == RECSOUND_STOPPED, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(childProcesses().isEmpty(), 5000);
        // the window stops counting at its next tick and shows that it is idle
        QTRY_COMPARE_WITH_TIMEOUT(window.getDisplayState(), int(RecordMainWnd::DisplayIdle), 5000);
        QVERIFY(!window.findChild<QTimer *>()->isActive());
        QCOMPARE(window.helpText(), QStringLiteral("Press OK to Record"));
        audioinfo info;
        QCOMPARE(getaudioinfo(QFile::encodeName(file).constData(), &info) == 0, cardFull);
        QVERIFY(!cardFull || info.seconds >= 1); // what it wrote plays
        QCOMPARE(root->recordingList().size(), cardFull ? 1 : 0);

        // the window goes on working: the next OK starts a new recording
        unlimit();
        QVERIFY(root->installEncoders());
        QTest::keyClick(&window, Qt::Key_Return);
        QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));
        QTRY_VERIFY_WITH_TIMEOUT(!childProcesses().isEmpty(), 5000);
    }

    void nonAsciiRoot_data()
    {
        QTest::addColumn<QByteArray>("folder"); // UTF-8, as the shell makes it
        QTest::newRow("a-umlaut") << QByteArray("r\xc3\xa4"
                                                "c");
        QTest::newRow("cjk") << QByteArray("\xe5\xbd\x95\xe9\x9f\xb3");
    }

    void nonAsciiRoot()
    {
        QFETCH(QByteArray, folder);
        // the program's codec for the locale
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("GBK"));
        const auto restore = qScopeGuard([] { QTextCodec::setCodecForLocale(nullptr); });
        TestDeviceRoot named(folder);
        QVERIFY(named.installEncoders());
        freshSettings();
        RecordMainWnd window(nullptr, 0);
        QVERIFY(startRecording(window));
        const QString name = QFileInfo(window.getCurFileName()).fileName();
        const QByteArray file = named.rootBytes() + "/mnt/mmc/e_Recorder/" + name.toLatin1();
        QTRY_VERIFY_WITH_TIMEOUT(rawSize(file) > 0, 10000);
        tickTo(window, 4);
        QTest::keyClick(&window, Qt::Key_Escape);
        QVERIFY(rawSize(file) > 0);
        QCOMPARE(named.recordingList(), QStringList{"/mnt/mmc/e_Recorder/" + name});
    }

    void messageFloodWhileRecording()
    {
        RecordMainWnd window(nullptr, 0);
        window.show();
        QCopChannel listener(QStringLiteral("recorderprocess"));
        QSignalSpy heard(&listener, &QCopChannel::received);
        QElapsedTimer clock;
        clock.start();
        QTest::keyClick(&window, Qt::Key_Return);
        // mostly messages the recorder ignores, every tenth a command that flushes the disks
        for (int i = 0; i < 10000; ++i) {
            QVERIFY(QCopChannel::send(QStringLiteral("recorderprocess"),
                                      i % 10 ? "noise(QString)" : "execute(QString)",
                                      i % 10 ? QByteArray::number(i) : QByteArray("plugusb")));
        }
        QTRY_COMPARE_WITH_TIMEOUT(heard.count(), 10000, 120000);
        // every second since OK is on the clock, but for the one under way
        QTRY_VERIFY_WITH_TIMEOUT(qAbs(clock.elapsed() / 1000 - window.recordedSeconds()) <= 1,
                                 3000);
        QVERIFY(QCopChannel::send(QStringLiteral("recorderprocess"), "execute(QString)", "stop"));
        QTRY_VERIFY_WITH_TIMEOUT(!window.isVisible(), 30000);
        QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
    }

private:
    std::unique_ptr<TestDeviceRoot> root;
};

QTEST_MAIN(TestRecordMainWnd)
#include "tst_recordmainwnd.moc"
