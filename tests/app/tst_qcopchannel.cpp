#include "app/qcopchannel.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

namespace {

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

// What travels between processes beyond this is shown by the recorder's own tests, which hear
// the shell's channel through `qcop listen`.
class TestQCopChannel : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs a session bus (the suite runs every test under dbus-run-session)");
    }

    void channelObjectsHearOnlyTheirChannel()
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

    void noSessionBus()
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                   QStringLiteral("unix:path=/nonexistent/qcop-test-bus"));
        QCOMPARE(qcopSend({"mainprocess", "Show(QString)", "record"}, env), 1);
    }
};

QTEST_GUILESS_MAIN(TestQCopChannel)
#include "tst_qcopchannel.moc"
