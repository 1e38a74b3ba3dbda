#include "app/qcopchannel.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

namespace {

// A `qcop listen` process, ready once it has said so on standard error.
class Listener
{
public:
    explicit Listener(const QStringList &channels)
    {
        m_process.start(QStringLiteral(QCOP_BIN), QStringList{QStringLiteral("listen")} + channels);
    }
    ~Listener()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    bool waitReady()
    {
        QElapsedTimer timer;
        timer.start();
        while (!m_errors.contains("qcop: listening")) {
            if (timer.elapsed() > 10000 || m_process.state() == QProcess::NotRunning)
                return false;
            m_process.waitForReadyRead(50);
            m_errors += m_process.readAllStandardError();
        }
        return true;
    }
    // lines seen so far (the process's standard output)
    QStringList lines()
    {
        m_seen += QString::fromLocal8Bit(m_process.readAllStandardOutput());
        return m_seen.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    QProcess m_process;

private:
    QString m_seen;
    QByteArray m_errors;
};

int qcopSend(const QStringList &args,
             const QProcessEnvironment &env = QProcessEnvironment::systemEnvironment())
{
    QProcess send;
    send.setProcessEnvironment(env);
    send.start(QStringLiteral(QCOP_BIN), QStringList{QStringLiteral("send")} + args);
    if (!send.waitForFinished(10000))
        return -1;
    return send.exitStatus() == QProcess::NormalExit ? send.exitCode() : -1;
}

} // namespace

class TestQCopChannel : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void acrossProcessesOnlyTheNamedChannel();
    void channelObjectsHearOnlyTheirChannel();
    void noSessionBus();
};

void TestQCopChannel::initTestCase()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        QSKIP("needs a session bus (the suite runs every test under dbus-run-session)");
}

void TestQCopChannel::acrossProcessesOnlyTheNamedChannel()
{
    Listener shell({QStringLiteral("mainprocess")});
    Listener recorder({QStringLiteral("recorderprocess")});
    QVERIFY(shell.waitReady());
    QVERIFY(recorder.waitReady());

    QCOMPARE(qcopSend({"mainprocess", "Show(QString)", "record"}), 0);
    QTRY_COMPARE(shell.lines(), QStringList{"mainprocess Show(QString) record"});

    // a later message on the other channel proves the first one had its chance to arrive there
    QCOMPARE(qcopSend({"recorderprocess", "execute(QString)", "stop"}), 0);
    QTRY_COMPARE(recorder.lines(), QStringList{"recorderprocess execute(QString) stop"});
    QCOMPARE(shell.lines(), QStringList{"mainprocess Show(QString) record"});
}

void TestQCopChannel::channelObjectsHearOnlyTheirChannel()
{
    QCopChannel shell(QStringLiteral("mainprocess"));
    QCopChannel recorder(QStringLiteral("recorderprocess"));
    QVERIFY(recorder.isListening());
    QSignalSpy shellSpy(&shell, &QCopChannel::received);
    QSignalSpy recorderSpy(&recorder, &QCopChannel::received);
    QCopChannel::flush();
    // from another process, then from this one
    QCOMPARE(qcopSend({"recorderprocess", "execute(QString)", "stoponly"}), 0);
    QVERIFY(QCopChannel::send(QStringLiteral("mainprocess"), QStringLiteral("Show(QString)"),
                              QByteArray("record")));
    QTRY_COMPARE(shellSpy.count(), 1);
    QTRY_COMPARE(recorderSpy.count(), 1);
    QCOMPARE(recorderSpy.at(0).at(0).toString(), QStringLiteral("execute(QString)"));
    // the data block is the bare bytes of the word: no length, no terminator
    QCOMPARE(recorderSpy.at(0).at(1).toByteArray(), QByteArray("stoponly"));
    QCOMPARE(shellSpy.at(0).at(1).toByteArray(), QByteArray("record"));
}

void TestQCopChannel::noSessionBus()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
               QStringLiteral("unix:path=/nonexistent/qcop-test-bus"));
    QCOMPARE(qcopSend({"mainprocess", "Show(QString)", "record"}, env), 1);
}

QTEST_GUILESS_MAIN(TestQCopChannel)
#include "tst_qcopchannel.moc"
