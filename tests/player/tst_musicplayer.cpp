// The music list and its controller with a scripted player: the loop modes at the end of a file,
// F7/F8 and Escape, files that are gone, lists that are missing or empty; and the musicplayer
// program itself, which leaves on SIGTERM with its player.
#include "player/filemanager.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "playerfixture.h"

#include <QProcess>
#include <QtTest>

namespace {

// Writes the list as the scan does (device paths, one a line) and makes its files but the gone*.
void writeList(PlayerFixture &fixture, const QStringList &names)
{
    QByteArray list;
    for (const QString &name : names) {
        list += "/mnt/mmc/e_Music/" + name.toLocal8Bit() + '\n';
        if (!name.startsWith("gone"))
            QVERIFY(fixture.root().writeFile("/mnt/mmc/e_Music/" + name, "not played here"));
    }
    QVERIFY(fixture.root().writeFile("/apps/config/musiclist.txt", list));
}

QStringList played(PlayerFixture &fixture)
{
    QStringList names;
    for (const QString &path : fixture.lines("/played"))
        names << QFileInfo(path).fileName();
    return names;
}

} // namespace

class TestMusicPlayer : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QCOMPARE(childProcesses(), QList<qint64>()); }

    // The files played, from the loop mode at each end (files named *ends* end at once) or from
    // a key pressed during the first (the others play until stopped).
    void playsTheList_data()
    {
        QTest::addColumn<int>("loopMode");
        QTest::addColumn<QStringList>("list");
        QTest::addColumn<int>("key");
        QTest::addColumn<QStringList>("expected");
        const QStringList two{"a-ends.mp3", "b-ends.mp3"}, three{"1.mp3", "2.mp3", "3.mp3"};
        QTest::newRow("repeat-one") << 0 << two << 0 << QStringList{"a-ends.mp3", "a-ends.mp3"};
        QTest::newRow("repeat-all-wraps")
            << 1 << two << 0 << QStringList{"a-ends.mp3", "b-ends.mp3", "a-ends.mp3"};
        QTest::newRow("not-repeat-stops-at-the-end") << 2 << two << 0 << two;
        QTest::newRow("gone-files-skipped")
            << 2 << QStringList{"gone.mp3", "a-ends.mp3", "gone2.mp3", "b-ends.mp3"} << 0 << two;
        QTest::newRow("f8-next") << 2 << three << int(Qt::Key_F8) << QStringList{"1.mp3", "2.mp3"};
        QTest::newRow("f7-previous-wraps")
            << 2 << three << int(Qt::Key_F7) << QStringList{"1.mp3", "3.mp3"};
    }
    void playsTheList()
    {
        QFETCH(int, loopMode);
        QFETCH(QStringList, list);
        QFETCH(int, key);
        QFETCH(QStringList, expected);
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        QVERIFY(fixture.writeSettings("LoopMode=" + QByteArray::number(loopMode)));
        writeList(fixture, list);
        FileManager files;
        QCOMPARE(files.load(), list.size());
        playerWnd window;
        MusicPlayerController controller(&files, &window);
        QVERIFY(controller.start());
        if (key)
            QTest::keyClick(&window, Qt::Key(key));
        QTRY_VERIFY(played(fixture).size() >= expected.size());
        if (loopMode == 2 && !key)
            QTRY_COMPARE(window.shownState(), 0);
        QCOMPARE(played(fixture).mid(0, expected.size()), expected);
        if (!key)
            return;
        QCOMPARE(controller.currentIndex(), list.indexOf(expected.last()));
        // Escape stops without moving on; Escape again leaves
        QSignalSpy finished(&controller, &MusicPlayerController::finished);
        QTest::keyClick(&window, Qt::Key_Escape);
        QTRY_COMPARE(window.shownState(), 0);
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(played(fixture), expected);
    }

    void nothingToPlay_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<int>("loaded");
        QTest::newRow("no-list") << QByteArray() << -1;
        QTest::newRow("empty-list") << QByteArray("\n") << 0;
        QTest::newRow("only-gone-files") << QByteArray("/mnt/mmc/e_Music/gone.mp3\n") << 1;
    }
    void nothingToPlay()
    {
        QFETCH(QByteArray, list);
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        if (!list.isNull())
            QVERIFY(fixture.root().writeFile("/apps/config/musiclist.txt", list));
        FileManager files;
        QTEST(files.load(), "loaded");
        playerWnd window;
        MusicPlayerController controller(&files, &window);
        QVERIFY(!controller.start());
        QCOMPARE(window.state(), playerWnd::Stopped);
    }

    // The installed-style program: plays the list, says which files are gone, and ends on
    // SIGTERM taking its player along.
    void program()
    {
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        writeList(fixture, {"gone.mp3", "song.mp3"});
        QProcess player;
        player.start(QStringLiteral(MUSICPLAYER_BIN), QStringList());
        QTRY_COMPARE_WITH_TIMEOUT(played(fixture), QStringList{"song.mp3"}, 15000);
        // the line was written before the song started, but may still be on its way here
        QByteArray said;
        QTRY_VERIFY_WITH_TIMEOUT(
            (said += player.readAllStandardError())
                .contains("music file missing, skipped: /mnt/mmc/e_Music/gone.mp3"),
            15000);
        player.terminate();
        QVERIFY(player.waitForFinished(15000));
        QCOMPARE(player.exitStatus(), QProcess::NormalExit);
        QCOMPARE(player.exitCode(), 0);
        // the scripted player went with the program
        const QStringList pids = fixture.lines("/pids");
        QCOMPARE(pids.size(), 1);
        QVERIFY(!QFileInfo::exists("/proc/" + pids.first()));
    }
};

QTEST_MAIN(TestMusicPlayer)
#include "tst_musicplayer.moc"
