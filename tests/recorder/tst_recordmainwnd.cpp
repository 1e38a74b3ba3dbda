#include "app/qcopchannel.h"
#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "recorder/recordthread.h"
#include "storage/configwidget.h"
#include "storage/recfilemanager.h"
#include "testdeviceroot.h"
#include "widgets/itemmenu.h"
#include "widgets/kospinbox.h"
#include "widgets/kospinslide.h"

#include <QApplication>
#include <QDate>
#include <QDir>
#include <QImage>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <unistd.h>

namespace {

// Answers the modal dialogs as they come up, in order: each with its own keys.
class ModalAnswerer : public QObject
{
public:
    explicit ModalAnswerer(QList<QList<Qt::Key>> answers) : m_answers(std::move(answers))
    {
        connect(&m_poll, &QTimer::timeout, this, &ModalAnswerer::look);
        m_poll.start(20);
    }
    QStringList seen; // class names of the dialogs met

private:
    void look()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || modal == m_last)
            return;
        m_last = modal;
        seen << QString::fromLatin1(modal->metaObject()->className());
        const QList<Qt::Key> keys =
            m_answers.isEmpty() ? QList<Qt::Key>{Qt::Key_Return} : m_answers.takeFirst();
        for (Qt::Key key : keys)
            QTest::keyClick(modal, key);
    }
    QList<QList<Qt::Key>> m_answers;
    QTimer m_poll;
    QPointer<QWidget> m_last;
};

// The encoders the engine started and has not reaped yet: children of any thread of this test.
QList<int> childProcesses()
{
    QList<int> found;
    for (const QString &task : QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs)) {
        QFile children(QStringLiteral("/proc/self/task/%1/children").arg(task));
        if (children.open(QIODevice::ReadOnly))
            for (const QByteArray &pid : children.readAll().split(' '))
                if (pid.toInt() > 0)
                    found << pid.toInt();
    }
    return found;
}

QStringList listedPaths(const TestDeviceRoot &root)
{
    const QByteArray bytes = root.readFile("/apps/config/reclist.ini");
    if (!bytes.startsWith("\xff\xfe"))
        return QStringList();
    const QString text = QString::fromUtf16(
        reinterpret_cast<const char16_t *>(bytes.constData() + 2), (bytes.size() - 2) / 2);
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool isWhite(const QImage &image, int x, int y)
{
    return qGray(image.pixel(x, y)) > 128;
}

void save(QWidget &widget, const char *name)
{
    widget.grab().save(screensDir() + QStringLiteral("/recorder-") + QLatin1String(name) +
                       QStringLiteral(".png"));
}

} // namespace

class TestRecordMainWnd : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void recordingCycleAndScreens();
    void stopRulesByLength_data();
    void stopRulesByLength();
    void timeTextAndFourHourSplit();
    void fullLibraryRefuses();
    void optionsMenu();
    void shellCommands_data();
    void shellCommands();
    void encoderEndingByItself();

private:
    void startRecording(RecordMainWnd &window);
    void tickTo(RecordMainWnd &window, int seconds);

    std::unique_ptr<TestDeviceRoot> root;
};

void TestRecordMainWnd::initTestCase()
{
    QApplication::setPalette(recorderPalette());
    // the simulated encoders make their own signal: no sound card on a test machine
    qputenv("DEVSIM_SIGNAL", "generated");
}

void TestRecordMainWnd::init()
{
    root = std::make_unique<TestDeviceRoot>();
    QDir().mkpath(root->path("/mnt/mmc/e_Recorder"));
    QDir().mkpath(root->path("/usr/sbin"));
    for (const char *encoder : {"shine", "record2wav"}) {
        QVERIFY(QFile::copy(QStringLiteral(DEVSIM_BIN_DIR "/") + QLatin1String(encoder),
                            root->path(QStringLiteral("/usr/sbin/") + QLatin1String(encoder))));
    }
    // the settings store belongs to the device root of this test
    delete ConfigWidget::reader;
    ConfigWidget::reader = nullptr;
}

void TestRecordMainWnd::cleanup()
{
    // whatever a test left running is stopped: no encoder may outlive it
    bRecording = false;
    QTRY_VERIFY_WITH_TIMEOUT(bRecPause == RECSOUND_STOPPED, 5000);
    QTRY_VERIFY_WITH_TIMEOUT(childProcesses().isEmpty(), 5000);
    delete ConfigWidget::reader;
    ConfigWidget::reader = nullptr;
    root.reset();
}

void TestRecordMainWnd::startRecording(RecordMainWnd &window)
{
    QTest::keyClick(&window, Qt::Key_Return);
    QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));
    // the test counts the seconds itself
    window.findChild<QTimer *>()->stop();
}

void TestRecordMainWnd::tickTo(RecordMainWnd &window, int seconds)
{
    while (window.recordedSeconds() < seconds)
        window.updateRecTime();
    window.findChild<QTimer *>()->stop();
}

void TestRecordMainWnd::recordingCycleAndScreens()
{
    QCopChannel shell(QStringLiteral("mainprocess"));
    QSignalSpy messages(&shell, &QCopChannel::received);
    QCopChannel::flush();
    RecordMainWnd window(nullptr, 0);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.size(), QSize(256, 64));

    // idle: a dot says OK records
    const QImage idle = window.grab().toImage();
    save(window, "idle");
    QCOMPARE(window.helpText(), QStringLiteral("Press OK to Record"));
    QCOMPARE(window.getTimeText(), QStringLiteral("00:00"));
    for (int x = 0; x < 256; x += 15)
        QVERIFY(isWhite(idle, x, 20));
    QVERIFY(!isWhite(idle, 100, 19));
    QVERIFY(!isWhite(idle, 178, 36)); // the dot is an outline
    QVERIFY(isWhite(idle, 178, 33) && isWhite(idle, 175, 36));

    startRecording(window);
    const QString file = window.getCurFileName();
    QCOMPARE(file, root->path(QStringLiteral("/mnt/mmc/e_Recorder/") +
                              QDate::currentDate().toString(QStringLiteral("yyMMdd")) +
                              QStringLiteral(".mp3")));
    // listed before anything is recorded, as the pen's path
    QCOMPARE(listedPaths(*root), QStringList{"/mnt/mmc/e_Recorder/" + QFileInfo(file).fileName()});
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() > 0, 10000);
    tickTo(window, 3);
    const QImage recording = window.grab().toImage();
    save(window, "recording");
    QCOMPARE(window.helpText(), QStringLiteral("Press OK to Pause"));
    QCOMPARE(window.getTimeText(), QStringLiteral("00:03"));
    for (int y = 33; y <= 39; ++y) {
        QVERIFY(isWhite(recording, 175, y) && isWhite(recording, 181, y));
        QVERIFY(!isWhite(recording, 178, y)); // the gap between the bars
    }

    QTest::keyClick(&window, Qt::Key_Return);
    QCOMPARE(bRecPause.load(), int(RECSOUND_PAUSED));
    const QImage paused = window.grab().toImage();
    save(window, "paused");
    QCOMPARE(window.helpText(), QStringLiteral("Press OK to Continue"));
    QVERIFY(!isWhite(paused, 178, 36) && !isWhite(paused, 175, 39));
    QTest::keyClick(&window, Qt::Key_Return);
    QCOMPARE(bRecPause.load(), int(RECSOUND_CONTINUE));
    QCOMPARE(window.getDisplayState(), int(RecordMainWnd::DisplayRecording));

    tickTo(window, 6);
    ModalAnswerer answers({{Qt::Key_Return}, {Qt::Key_Return}});
    QTest::keyClick(&window, Qt::Key_Escape);
    QCOMPARE(answers.seen, QStringList({"YesnoSelect", "MessageDialog"}));
    QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
    QCOMPARE(window.getTimeText(), QStringLiteral("00:00"));
    QVERIFY(QFile::exists(file));
    QVERIFY(window.isVisible()); // a stop leaves the window open
    QTRY_COMPARE(messages.count(), 4);
    QStringList words;
    for (const QList<QVariant> &message : messages)
        words << message.at(0).toString() + QLatin1Char(' ') + message.at(1).toByteArray();
    QCOMPARE(
        words,
        QStringList({"recorder(QString) disableAutoSleep", "lrcplayer(QString) nosleepnew",
                     "recorder(QString) disableAutoSleep", "recorder(QString) enableAutoShut"}));

    // the next recording of the day takes the next number
    startRecording(window);
    QVERIFY(window.getCurFileName().endsWith(QStringLiteral("_1.mp3")));
    QCOMPARE(listedPaths(*root).size(), 2);

    window.stopRecord();
    window.newRecordOptionWnd();
    QVERIFY(QTest::qWaitForWindowExposed(window.getOptionMenu()));
    window.getOptionMenu()->grab().save(screensDir() + QStringLiteral("/recorder-menu.png"));
    // under an open menu the recorder draws nothing at all
    QVERIFY(!isWhite(window.grab().toImage(), 100, 20));
}

void TestRecordMainWnd::stopRulesByLength_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QList<Qt::Key>>("answer"); // empty: no question expected
    QTest::addColumn<bool>("kept");
    QTest::newRow("3s-removed-without-question") << 3 << QList<Qt::Key>{} << false;
    QTest::newRow("4s-kept-without-question") << 4 << QList<Qt::Key>{} << true;
    QTest::newRow("5s-asked-yes-keeps") << 5 << QList<Qt::Key>{Qt::Key_Return} << true;
    QTest::newRow("5s-asked-no-deletes")
        << 5 << QList<Qt::Key>{Qt::Key_Right, Qt::Key_Return} << false;
    QTest::newRow("7s-asked-escape-deletes") << 7 << QList<Qt::Key>{Qt::Key_Escape} << false;
}

void TestRecordMainWnd::stopRulesByLength()
{
    QFETCH(int, seconds);
    QFETCH(QList<Qt::Key>, answer);
    QFETCH(bool, kept);
    RecordMainWnd window(nullptr, 0);
    startRecording(window);
    const QString file = window.getCurFileName();
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(file), 10000);
    tickTo(window, seconds);

    ModalAnswerer answers({answer, {Qt::Key_Return}});
    QTest::keyClick(&window, Qt::Key_Escape);
    QCOMPARE(answers.seen.isEmpty(), answer.isEmpty());
    if (!answer.isEmpty())
        QCOMPARE(answers.seen.first(), QStringLiteral("YesnoSelect"));
    QTRY_VERIFY_WITH_TIMEOUT(childProcesses().isEmpty(), 5000);
    QCOMPARE(QFile::exists(file), kept);
    QCOMPARE(listedPaths(*root).size(), kept ? 1 : 0);
    QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));

    // a second stop finds nothing to do
    window.stopRecord();
    QCOMPARE(QFile::exists(file), kept);
}

void TestRecordMainWnd::timeTextAndFourHourSplit()
{
    RecordMainWnd window(nullptr, 0); // not shown: thousands of ticks without painting
    startRecording(window);
    const QString first = window.getCurFileName();
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(first), 10000);
    tickTo(window, 59);
    QCOMPARE(window.getTimeText(), QStringLiteral("00:59"));
    tickTo(window, 3599);
    QCOMPARE(window.getTimeText(), QStringLiteral("59:59"));
    tickTo(window, 3600);
    QCOMPARE(window.getTimeText(), QStringLiteral("01:00:00"));
    tickTo(window, 14400);
    QCOMPARE(window.getTimeText(), QStringLiteral("04:00:00"));
    QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));

    // the 14 401st second closes the file and a new one starts by itself half a second later
    window.updateRecTime();
    QCOMPARE(bRecPause.load(), int(RECSOUND_STOPPED));
    QTRY_COMPARE_WITH_TIMEOUT(bRecPause.load(), int(RECSOUND_RECING), 5000);
    QVERIFY(window.getCurFileName() != first);
    QVERIFY(window.getCurFileName().endsWith(QStringLiteral("_1.mp3")));
    const QStringList listed = listedPaths(*root);
    QCOMPARE(listed.size(), 2);
    QVERIFY(listed.at(1).endsWith(QFileInfo(first).fileName()));
    QCOMPARE(window.getTimeText(), QStringLiteral("00:00"));
}

void TestRecordMainWnd::fullLibraryRefuses()
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
    QCOMPARE(window.getDisplayState(), int(RecordMainWnd::DisplayIdle));
    QCOMPARE(root->readFile("/apps/config/reclist.ini"), list);

    // one fewer leaves room again
    QVERIFY(QFile::remove(root->path("/mnt/mmc/e_Recorder/old_0.mp3")));
    QTest::keyClick(&window, Qt::Key_Return);
    QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));
}

void TestRecordMainWnd::optionsMenu()
{
    RecordMainWnd window(nullptr, 0);
    window.show();
    QTest::keyClick(&window, Qt::Key_F12);
    QPointer<ItemMenu> menu = window.getOptionMenu();
    QVERIFY(menu);
    QVERIFY(menu->isVisible());
    const QList<KoSpinBox *> boxes = menu->findChildren<KoSpinBox *>();
    QCOMPARE(boxes.size(), 2);
    QCOMPARE(menu->findChildren<KoSpinSlide *>().size(), 1);
    QCOMPARE(boxes.at(1)->getCurIndex(), 1); // quality "Mid " by default

    // volume down one step, format to WAV, quality to Low: each stored at once
    QTest::keyClick(menu, Qt::Key_Left);
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Right);
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Right);
    ConfigWidget reread;
    QCOMPARE(reread.getPlayVolume(), 4);
    QCOMPARE(reread.getFileFormat(), 1);
    QCOMPARE(reread.getFileQuality(), 2);

    QTest::keyClick(menu, Qt::Key_Escape);
    QVERIFY(!window.getOptionMenu());
    QTRY_VERIFY(menu.isNull());
    QVERIFY(window.isVisible());

    // a fresh menu shows the stored values, and the next recording uses them
    QTest::keyClick(&window, Qt::Key_F12);
    QVERIFY(window.getOptionMenu());
    QCOMPARE(window.getOptionMenu()->findChildren<KoSpinBox *>().at(0)->getCurIndex(), 1);
    QTest::keyClick(window.getOptionMenu(), Qt::Key_Escape);
    QTRY_VERIFY(!window.getOptionMenu());
    QTest::keyClick(&window, Qt::Key_Return);
    QVERIFY(window.getCurFileName().endsWith(QStringLiteral(".wav")));
    QCOMPARE(QString::fromLatin1(samplerate.load()), QStringLiteral("11025"));

    // no options while recording or paused
    QTest::keyClick(&window, Qt::Key_F12);
    QVERIFY(!window.getOptionMenu());
    QTest::keyClick(&window, Qt::Key_Return);
    QTest::keyClick(&window, Qt::Key_F12);
    QVERIFY(!window.getOptionMenu());
    window.stopRecord();
}

void TestRecordMainWnd::shellCommands_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("recording"); // a recording runs when the message comes
    QTest::addColumn<bool>("closes");
    QTest::addColumn<QString>("toShell");
    QTest::newRow("presspoweroff-only-flushes")
        << "execute(QString)" << QByteArray("presspoweroff") << true << false << QString();
    QTest::newRow("plugusb-only-flushes")
        << "execute(QString)" << QByteArray("plugusb") << true << false << QString();
    QTest::newRow("other-message-name-ignored")
        << "run(QString)" << QByteArray("stop") << true << false << QString();
    QTest::newRow("stop-while-recording")
        << "execute(QString)" << QByteArray("stop") << true << true << QString();
    QTest::newRow("stoponly-while-idle") << "execute(QString)" << QByteArray("stoponly") << false
                                         << true << "ESC(QString) escpressed";
    QTest::newRow("stoponly-while-recording") << "execute(QString)" << QByteArray("stoponly")
                                              << true << true << "ESC(QString) escpressed";
    QTest::newRow("stop-with-terminating-zero")
        << "execute(QString)" << QByteArray("stop", 5) << true << true << QString();
    QTest::newRow("stoponly-with-terminating-zero")
        << "execute(QString)" << QByteArray("stoponly", 9) << true << true
        << "ESC(QString) escpressed";
}

void TestRecordMainWnd::shellCommands()
{
    QFETCH(QString, message);
    QFETCH(QByteArray, data);
    QFETCH(bool, recording);
    QFETCH(bool, closes);
    QFETCH(QString, toShell);
    QCopChannel shell(QStringLiteral("mainprocess"));
    QSignalSpy messages(&shell, &QCopChannel::received);
    QCopChannel::flush();

    RecordMainWnd window(nullptr, 0);
    window.show();
    if (recording)
        startRecording(window);
    // through the bus, as the shell sends it
    QVERIFY(QCopChannel::send(QStringLiteral("recorderprocess"), message, data));
    if (closes)
        QTRY_VERIFY_WITH_TIMEOUT(!window.isVisible(), 5000);
    else
        QTest::qWait(300); // nothing is expected to happen: give it the chance to
    QCOMPARE(window.isVisible(), !closes);
    QCOMPARE(bRecPause.load(), int(recording && !closes ? RECSOUND_RECING : RECSOUND_STOPPED));
    const auto sentToShell = [&messages] {
        QStringList words;
        for (const QList<QVariant> &message : messages) {
            if (!message.at(0).toString().startsWith(QLatin1String("recorder(")))
                words << message.at(0).toString() + QLatin1Char(' ') + message.at(1).toByteArray();
        }
        return words;
    };
    if (!toShell.isEmpty())
        QTRY_COMPARE(sentToShell(), QStringList{toShell});
    else
        QCOMPARE(sentToShell(), QStringList());
    window.stopRecord();
}

void TestRecordMainWnd::encoderEndingByItself()
{
    // an encoder that gives up at once, as on a full card
    QFile::remove(root->path("/usr/sbin/shine"));
    QVERIFY(QFile::copy(QStringLiteral(FAKE_ENCODER_EXIT), root->path("/usr/sbin/shine")));
    RecordMainWnd window(nullptr, 0);
    QTest::keyClick(&window, Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(bRecPause.load(), int(RECSOUND_STOPPED), 5000);
    QVERIFY(!bRecording);
    QTRY_VERIFY_WITH_TIMEOUT(childProcesses().isEmpty(), 5000);

    // the window goes on working: the next OK starts a new recording
    QFile::remove(root->path("/usr/sbin/shine"));
    QVERIFY(QFile::copy(QStringLiteral(DEVSIM_BIN_DIR "/shine"), root->path("/usr/sbin/shine")));
    window.stopRecord();
    QTest::keyClick(&window, Qt::Key_Return);
    QCOMPARE(bRecPause.load(), int(RECSOUND_RECING));
    QTRY_VERIFY_WITH_TIMEOUT(!childProcesses().isEmpty(), 5000);
}

QTEST_MAIN(TestRecordMainWnd)
#include "tst_recordmainwnd.moc"
