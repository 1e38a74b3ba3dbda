// The installed recorder as a user meets it: a device root made by mkroot, a real X server, keys
// pressed with xdotool, the shell's channel heard through qcop, and the files on the card.

#include "recorderprocess.h"
#include "shelllistener.h"
#include "storage/audioinfo.h"
#include "testdeviceroot.h"
#include "xserver.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTextCodec>
#include <QtEndian>
#include <QtTest>

#include <cerrno>
#include <memory>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace {

// A loaded machine may take a while to start a Qt program or to show a window.
constexpr int startTimeoutMs = 60000;
constexpr int stepTimeoutMs = 20000;

const QString shellChannel = QStringLiteral("mainprocess");

// The encoders running from a device root's usr/sbin, found by their executable.
QList<qint64> encoderPids(const QString &root)
{
    const QString sbin = QDir(root + QStringLiteral("/usr/sbin")).canonicalPath() + '/';
    QList<qint64> pids;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &entry : entries) {
        bool number = false;
        const qint64 pid = entry.toLongLong(&number);
        if (!number)
            continue;
        // a zombie has no executable any more: it no longer records
        const QString exe = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(pid));
        if (exe.startsWith(sbin))
            pids << pid;
    }
    return pids;
}

QStringList commandLine(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/cmdline").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList arguments;
    for (const QByteArray &argument : file.readAll().split('\0'))
        arguments << QString::fromLocal8Bit(argument);
    if (!arguments.isEmpty() && arguments.last().isEmpty())
        arguments.removeLast();
    return arguments;
}

// state letter of /proc/<pid>/stat ('T' stopped by a signal), 0 when there is no such process
char processState(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = stat.readAll();
    const int close = line.lastIndexOf(')');
    return close > 0 && close + 2 < line.size() ? line.at(close + 2) : 0;
}

// The recording list as the program wrote it: FF FE, then UTF-16LE lines.
QStringList listedRecordings(const TestDeviceRoot &root)
{
    const QByteArray bytes = root.readFile(QStringLiteral("/apps/config/reclist.ini"));
    if (!bytes.startsWith("\xff\xfe"))
        return {QStringLiteral("no byte-order mark")};
    const QString text = QTextCodec::codecForName("UTF-16LE")->toUnicode(bytes.mid(2));
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QByteArray listBytes(const QStringList &paths)
{
    // the codec would put a byte-order mark before every piece: one is written by hand
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QString text = paths.join(QLatin1Char('\n')) + QLatin1Char('\n');
    return QByteArray("\xff\xfe") +
           QTextCodec::codecForName("UTF-16LE")->fromUnicode(text.constData(), text.size(), &state);
}

int recorderSetting(const TestDeviceRoot &root, const QString &key)
{
    const QSettings settings(root.path(QStringLiteral("/apps/config/recconfig.ini")),
                             QSettings::IniFormat);
    return settings.value(QStringLiteral("RecorderSet/") + key, -1).toInt();
}

// White on black: a lit pixel is a drawn one.
bool lit(const QImage &screen, int x, int y)
{
    return qGray(screen.pixel(x, y)) > 128;
}

// The recorder's screen sits at the origin; its separator runs the whole width at y = 20.
bool separatorDrawn(const QImage &screen)
{
    for (int x = 0; x < 256; x += 15) {
        if (!lit(screen, x, 20))
            return false;
    }
    return !lit(screen, 128, 19) && !lit(screen, 128, 21);
}

// The pause symbol's bars fill the corner that the record dot's circle leaves dark.
bool pauseSymbolShown(const QImage &screen)
{
    return lit(screen, 175, 33);
}

// One run of the program: a fresh device root from mkroot, the shell listening, the recorder on
// the X server. Everything started here ends with this object.
struct Session
{
    explicit Session(const XServer &x) : x(x) {}

    bool makeRoot()
    {
        QProcess mkroot;
        mkroot.setProcessChannelMode(QProcess::ForwardedChannels);
        mkroot.start(QStringLiteral("bash"),
                     {QStringLiteral(MKROOT), root.root(), QStringLiteral(BUILD_DIR)});
        return mkroot.waitForFinished(startTimeoutMs) && mkroot.exitCode() == 0;
    }

    bool start()
    {
        if (!shell.start(shellChannel))
            return false;
        recorder.setEnv(QStringLiteral("DISPLAY"), x.display());
        recorder.setEnv(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        recorder.setEnv(QStringLiteral("DEVSIM_SIGNAL"), QStringLiteral("generated"));
        // the screen is painted in software; the GL libraries Qt would load and unload again
        // leave allocations behind that no leak report can place
        recorder.setEnv(QStringLiteral("QT_XCB_GL_INTEGRATION"), QStringLiteral("none"));
        // Qt's xcb plugin hands strndup() an X reply that has no terminating zero; in a
        // sanitizer build that would end the program before its window ever shows
        const QByteArray asan = qgetenv("ASAN_OPTIONS");
        recorder.setEnv(QStringLiteral("ASAN_OPTIONS"),
                        QString::fromLocal8Bit(asan) + QStringLiteral(":strict_string_checks=0"));
        return recorder.start();
    }

    QStringList windows() const { return x.visibleWindows(recorder.pid()); }
    bool press(const QString &key) const { return x.pressKey(recorder.pid(), key); }

    // The screen's top-left 256 x 64, kept as a picture under the screens folder.
    QImage shot(const QString &name) const
    {
        const QImage screen = x.grab().copy(0, 0, 256, 64);
        screen.save(screensDir() + QStringLiteral("/endtoend_") + name + QStringLiteral(".png"));
        return screen;
    }

    QString card(const QString &name) const
    {
        return QStringLiteral("/mnt/mmc/e_Recorder/") + name;
    }

    const XServer &x;
    TestDeviceRoot root;
    ShellListener shell;
    RecorderProcess recorder{root.root()};
};

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void recordPauseResumeAndKeep();
    void wavLowFromMenuThenShellStopsWhilePaused();
    void killedRecorderTakesItsEncoderAlong();

private:
    // Waits until the program shows its one window and gives it the first key.
    bool waitForMainWindow(Session &session);
    qint64 waitForEncoder(const Session &session);

    std::unique_ptr<XServer> m_x;
    QList<qint64> m_encoders;
};

void TestEndToEnd::initTestCase()
{
    for (const char *tool : {"Xvfb", "xdotool", "xdpyinfo"}) {
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
            QSKIP(qPrintable(QStringLiteral("%1 is not installed (scripts/setup)").arg(tool)));
    }
    // an encoder whose recorder was killed comes to this process, which can then reap it
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    m_x = std::make_unique<XServer>();
    QVERIFY2(m_x->start(), "no Xvfb could be started");
}

void TestEndToEnd::cleanup()
{
    // nothing a failed case started may record on into the next one
    for (qint64 pid : qAsConst(m_encoders)) {
        if (QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(pid)).contains("/usr/sbin/"))
            ::kill(pid_t(pid), SIGKILL);
        // only an orphan is this process's child; any other pid answers ECHILD at once
        while (waitpid(pid_t(pid), nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    m_encoders.clear();
}

bool TestEndToEnd::waitForMainWindow(Session &session)
{
    QDeadlineTimer deadline(startTimeoutMs);
    while (session.windows().size() != 1) {
        if (deadline.hasExpired() || !session.recorder.isRunning()) {
            qWarning("recorder said: %s", session.recorder.standardError().right(3000).constData());
            return false;
        }
        QTest::qWait(100);
    }
    return true;
}

qint64 TestEndToEnd::waitForEncoder(const Session &session)
{
    QDeadlineTimer deadline(stepTimeoutMs);
    QList<qint64> pids;
    while ((pids = encoderPids(session.root.root())).isEmpty() && !deadline.hasExpired())
        QTest::qWait(50);
    m_encoders << pids;
    return pids.size() == 1 ? pids.first() : 0;
}

void TestEndToEnd::recordPauseResumeAndKeep()
{
    Session session(*m_x);
    QVERIFY(session.makeRoot());
    QVERIFY(session.start());
    QVERIFY(waitForMainWindow(session));
    const QString day = QDate::currentDate().toString(QStringLiteral("yyMMdd"));
    QTRY_VERIFY_WITH_TIMEOUT(separatorDrawn(session.shot(QStringLiteral("idle"))), stepTimeoutMs);
    QVERIFY(!pauseSymbolShown(session.shot(QStringLiteral("idle"))));

    QVERIFY(session.press(QStringLiteral("Return")));
    const qint64 encoder = waitForEncoder(session);
    QVERIFY(encoder > 0);
    QCOMPARE(commandLine(encoder), QStringList({"shine", "-b", "96", "-s", "24000",
                                                session.root.path(session.card(day + ".mp3"))}));
    QTRY_VERIFY_WITH_TIMEOUT(pauseSymbolShown(session.shot(QStringLiteral("recording"))),
                             stepTimeoutMs);
    QTest::qWait(6000);

    QVERIFY(session.press(QStringLiteral("Return")));
    QTRY_COMPARE_WITH_TIMEOUT(processState(encoder), 'T', stepTimeoutMs);
    QTRY_VERIFY_WITH_TIMEOUT(!pauseSymbolShown(session.shot(QStringLiteral("paused"))),
                             stepTimeoutMs);
    QTest::qWait(2000);

    QVERIFY(session.press(QStringLiteral("Return")));
    QTRY_VERIFY_WITH_TIMEOUT(processState(encoder) != 'T', stepTimeoutMs);
    QTest::qWait(2000);

    QVERIFY(session.press(QStringLiteral("Escape")));
    QTRY_COMPARE_WITH_TIMEOUT(session.windows().size(), 2, stepTimeoutMs);
    QVERIFY(encoderPids(session.root.root()).isEmpty());
    session.shot(QStringLiteral("save-question"));
    // the marked first answer is "Yes"
    QVERIFY(session.press(QStringLiteral("Return")));
    // the confirmation goes away by itself after two seconds
    QTRY_COMPARE_WITH_TIMEOUT(session.windows().size(), 1, stepTimeoutMs);

    QVERIFY(session.root.exists(session.card(day + ".mp3")));
    QCOMPARE(listedRecordings(session.root).value(0), session.card(day + ".mp3"));
    audioinfo info;
    QCOMPARE(getaudioinfo(session.root.path(session.card(day + ".mp3")).toLocal8Bit(), &info), 0);
    // six seconds recorded, two paused, two more recorded
    QVERIFY2(qAbs(info.seconds - 8) <= 1.5, qPrintable(QString::number(info.seconds)));

    // an Escape while idle leaves the program
    QVERIFY(session.press(QStringLiteral("Escape")));
    QVERIFY(session.recorder.waitForExit(stepTimeoutMs));
    QVERIFY2(session.recorder.exitCode() == 0,
             session.recorder.standardError().right(4000).constData());
    QTRY_COMPARE_WITH_TIMEOUT(session.shell.count("mainprocess recorder(QString) enableAutoShut"),
                              2, stepTimeoutMs);
    QCOMPARE(session.shell.count("mainprocess Show(QString) record"), 1);
    QCOMPARE(session.shell.count("mainprocess recorder(QString) disableAutoSleep"), 2);
    QCOMPARE(session.shell.count("mainprocess lrcplayer(QString) nosleepnew"), 1);
    QVERIFY(encoderPids(session.root.root()).isEmpty());
}

void TestEndToEnd::wavLowFromMenuThenShellStopsWhilePaused()
{
    Session session(*m_x);
    QVERIFY(session.makeRoot());
    const QString day = QDate::currentDate().toString(QStringLiteral("yyMMdd"));
    // the day's first recording is already on the card and in the list
    QVERIFY(session.root.writeFile(session.card(day + ".mp3"), QByteArray(4096, '\0')));
    QVERIFY(session.root.writeFile(QStringLiteral("/apps/config/reclist.ini"),
                                   listBytes({session.card(day + ".mp3")})));
    QVERIFY(session.start());
    QVERIFY(waitForMainWindow(session));
    const QString mainWindow = session.windows().value(0);

    // options: volume, format, quality; Right moves a row to its next value
    QVERIFY(session.press(QStringLiteral("F12")));
    QTRY_VERIFY_WITH_TIMEOUT(session.windows().value(session.windows().size() - 1) != mainWindow,
                             stepTimeoutMs);
    QVERIFY(session.press(QStringLiteral("Down")));
    QVERIFY(session.press(QStringLiteral("Right")));
    QTRY_COMPARE_WITH_TIMEOUT(recorderSetting(session.root, QStringLiteral("Format")), 1,
                              stepTimeoutMs);
    QVERIFY(session.press(QStringLiteral("Down")));
    QVERIFY(session.press(QStringLiteral("Right")));
    QTRY_COMPARE_WITH_TIMEOUT(recorderSetting(session.root, QStringLiteral("Quality")), 2,
                              stepTimeoutMs);
    session.shot(QStringLiteral("options-menu"));
    QVERIFY(session.press(QStringLiteral("Escape")));
    QTRY_COMPARE_WITH_TIMEOUT(session.windows(), QStringList{mainWindow}, stepTimeoutMs);
    QTRY_VERIFY_WITH_TIMEOUT(separatorDrawn(session.shot(QStringLiteral("menu-left"))),
                             stepTimeoutMs);

    QVERIFY(session.press(QStringLiteral("Return")));
    const qint64 encoder = waitForEncoder(session);
    QVERIFY(encoder > 0);
    const QString file = session.card(day + "_1.wav");
    QCOMPARE(commandLine(encoder), QStringList({"record2wav", session.root.path(file), "11025"}));
    QTest::qWait(6000);
    QVERIFY(session.press(QStringLiteral("Return")));
    QTRY_COMPARE_WITH_TIMEOUT(processState(encoder), 'T', stepTimeoutMs);

    // the shell ends the program: the stopped encoder goes with it, the recording is kept
    QCOMPARE(QProcess::execute(QStringLiteral(QCOP_BIN),
                               {"send", "recorderprocess", "execute(QString)", "stop"}),
             0);
    QVERIFY(session.recorder.waitForExit(stepTimeoutMs));
    QCOMPARE(session.recorder.exitStatus(), QProcess::NormalExit);
    QVERIFY2(session.recorder.exitCode() == 0,
             session.recorder.standardError().right(4000).constData());
    QVERIFY(encoderPids(session.root.root()).isEmpty());
    QCOMPARE(listedRecordings(session.root), QStringList({file, session.card(day + ".mp3")}));

    const QByteArray wav = session.root.readFile(file);
    QVERIFY(wav.startsWith("RIFF"));
    QCOMPARE(qFromLittleEndian<quint32>(wav.constData() + 24), 11025u);
    const double seconds = double(wav.size() - 44) / (11025 * 2);
    QVERIFY2(qAbs(seconds - 6) <= 1.5, qPrintable(QString::number(seconds)));
}

void TestEndToEnd::killedRecorderTakesItsEncoderAlong()
{
    Session session(*m_x);
    QVERIFY(session.makeRoot());
    QVERIFY(session.start());
    QVERIFY(waitForMainWindow(session));
    const QString day = QDate::currentDate().toString(QStringLiteral("yyMMdd"));

    QVERIFY(session.press(QStringLiteral("Return")));
    QVERIFY(waitForEncoder(session) > 0);
    QTest::qWait(2000);
    session.recorder.kill();
    QTRY_VERIFY_WITH_TIMEOUT(encoderPids(session.root.root()).isEmpty(), 1000);
    // listed when it started, so a crash does not lose it
    QCOMPARE(listedRecordings(session.root), QStringList{session.card(day + ".mp3")});
    QVERIFY(session.root.exists(session.card(day + ".mp3")));
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
