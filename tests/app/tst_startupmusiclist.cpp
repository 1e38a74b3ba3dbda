// The music list the recorder writes at start-up on a full card, against the list this test
// knows from the songs it put there: every song's device path, in descending byte order.

#include "app/qcopchannel.h"
#include "recorderprocess.h"
#include "shelllistener.h"
#include "testdeviceroot.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <functional>
#include <sched.h>
#include <unistd.h>

class TestStartupMusicList : public QObject
{
    Q_OBJECT
private slots:
    void fullCardListSurvivesStopAfterShow();
};

void TestStartupMusicList::fullCardListSurvivesStopAfterShow()
{
    TestDeviceRoot root;
    const QByteArray card = QFile::encodeName(root.path(QStringLiteral("/mnt/mmc/")));
    QVERIFY(root.writeFile(QStringLiteral("/mnt/mmc/e_Music/sub/deep.mp3"), "x"));
    QVERIFY(QDir().mkpath(QFile::decodeName(card + "dir.mp3")));
    const QByteArray seed = card + "e_Music/sub/deep.mp3";
    QByteArrayList expected{"/mnt/mmc/dir.mp3\n"};
    // song: the list must hold the name
    const auto add = [&](const QByteArray &folder, const QByteArray &name, bool song) {
        QVERIFY2(::link(seed.constData(), (card + folder + name).constData()) == 0, name);
        if (song)
            expected << "/mnt/mmc/" + folder + name + '\n';
    };
    const char *const suffixes[] = {".mp3", ".MP3", ".Mp3", ".mp3x", ".mp2", ".wav", "_mp3", "."};
    for (int i = 0; i < 3000; ++i) {
        const int n = i * 7919 % 10007;
        const QByteArray folder = i % 10 ? "e_Music/" : "";
        const char *suffix = suffixes[i % 8];
        add(folder, char('A' + n % 58) + QByteArray::number(n) + " song" + suffix, i % 8 < 4);
    }
    // bytes below the line feed, above ASCII, and names on either side of "e_Music/"
    for (const QByteArray &folder : {QByteArray(), QByteArray("e_Music/")}) {
        for (const char *name : {"a.mp3", "a.mp3\tb", "\xe4\xb8\xad.mp3", "\xc3\xa9.MP3", "e.mp3",
                                 "e_Music.mp3", "e_Musiz.mp3", "f.mp3", "mp3"})
            add(folder, name, qstrcmp(name, "mp3") != 0);
    }
    std::sort(expected.begin(), expected.end(), std::greater<QByteArray>());

    const ShellListener shell;
    RecorderProcess recorder(root.root());
    // on one core, as on the pen: the scan then gets the core only once the window leaves it
    cpu_set_t before;
    QCOMPARE(sched_getaffinity(0, sizeof before, &before), 0);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    QCOMPARE(sched_setaffinity(0, sizeof one, &one), 0);
    const bool started = recorder.start();
    sched_setaffinity(0, sizeof before, &before);
    QVERIFY(started);
    QTRY_VERIFY_WITH_TIMEOUT(!shell.spy.isEmpty(), 60000);
    QCOMPARE(shell.heard().first(), QStringLiteral("Show(QString) record"));
    // the shell may leave as soon as the window shows: the list must come out whole all the same
    QVERIFY(QCopChannel::send(QStringLiteral("recorderprocess"), QStringLiteral("execute(QString)"),
                              "stop"));
    QVERIFY(recorder.waitForExit(60000));
    QCOMPARE(recorder.exitCode(), 0);
    QCOMPARE(root.readFile(QStringLiteral("/apps/config/musiclist.txt")), expected.join());
}

QTEST_GUILESS_MAIN(TestStartupMusicList)
#include "tst_startupmusiclist.moc"
