// The music list and its controller with a scripted player: the loop modes at the end of a file,
// F7/F8, files that are gone, lists that are missing or empty; and the musicplayer program itself,
// which leaves on SIGTERM with its player.
#include "player/filemanager.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "playerfixture.h"

#include <QProcess>
#include <QtTest>

namespace {

const QString music = QStringLiteral("/mnt/mmc/e_Music/");

// Writes the list as the scan does (device paths, one a line) and makes the files that exist.
void writeList(PlayerFixture &fixture, const QStringList &names, const QStringList &present)
{
    QByteArray list;
    for (const QString &name : names)
        list += (music + name).toLocal8Bit() + '\n';
    QVERIFY(fixture.root().writeFile("/apps/config/musiclist.txt", list));
    for (const QString &name : present)
        QVERIFY(fixture.root().writeFile(music + name, "not played here"));
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

    void endOfFile_data()
    {
        QTest::addColumn<int>("loopMode");
        QTest::addColumn<QStringList>("list");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<bool>("stops");
        const QStringList two{"a-ends.mp3", "b-ends.mp3"};
        QTest::newRow("repeat-one") << 0 << two << QStringList{"a-ends.mp3", "a-ends.mp3"} << false;
        QTest::newRow("repeat-all-wraps")
            << 1 << two << QStringList{"a-ends.mp3", "b-ends.mp3", "a-ends.mp3"} << false;
        QTest::newRow("not-repeat-stops-at-the-end") << 2 << two << two << true;
        QTest::newRow("gone-files-skipped")
            << 2 << QStringList{"gone.mp3", "a-ends.mp3", "gone2.mp3", "b-ends.mp3"} << two << true;
    }
    void endOfFile()
    {
        QFETCH(int, loopMode);
        QFETCH(QStringList, list);
        QFETCH(QStringList, expected);
        QFETCH(bool, stops);
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        QVERIFY(fixture.root().writeFile("/apps/config/recconfig.ini",
                                         "[RecorderSet]\nLoopMode=" + QByteArray::number(loopMode) +
                                             "\n"));
        writeList(fixture, list, list.filter("ends"));
        FileManager files;
        QCOMPARE(files.load(), list.size());
        playerWnd window;
        MusicPlayerController controller(&files, &window);
        QVERIFY(controller.start());
        QTRY_VERIFY(played(fixture).size() >= expected.size());
        if (stops)
            QTRY_COMPARE(window.shownState(), 0);
        QCOMPARE(played(fixture).mid(0, expected.size()), expected);
    }

    void keys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("next");
        QTest::newRow("next") << int(Qt::Key_F8) << "2.mp3";
        QTest::newRow("previous-wraps") << int(Qt::Key_F7) << "3.mp3";
    }
    void keys()
    {
        QFETCH(int, key);
        QFETCH(QString, next);
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        const QStringList names{"1.mp3", "2.mp3", "3.mp3"};
        writeList(fixture, names, names);
        FileManager files;
        QCOMPARE(files.load(), 3);
        playerWnd window;
        MusicPlayerController controller(&files, &window);
        QVERIFY(controller.start());
        QTest::keyClick(&window, Qt::Key(key));
        QTRY_COMPARE(played(fixture), QStringList({"1.mp3", next}));
        QCOMPARE(controller.currentIndex(), names.indexOf(next));
        // Escape stops without moving on; Escape again leaves
        QSignalSpy finished(&controller, &MusicPlayerController::finished);
        QTest::keyClick(&window, Qt::Key_Escape);
        QTRY_COMPARE(window.shownState(), 0);
        QTest::keyClick(&window, Qt::Key_Escape);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(played(fixture).size(), 2);
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
        QFETCH(int, loaded);
        PlayerFixture fixture;
        QVERIFY(fixture.installScriptedPlayer());
        if (!list.isNull())
            QVERIFY(fixture.root().writeFile("/apps/config/musiclist.txt", list));
        FileManager files;
        QCOMPARE(files.load(), loaded);
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
        writeList(fixture, {"gone.mp3", "song.mp3"}, {"song.mp3"});
        QProcess player;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("QT_QPA_PLATFORM", "offscreen");
        player.setProcessEnvironment(env);
        player.start(QStringLiteral(MUSICPLAYER_BIN), QStringList());
        QVERIFY(player.waitForStarted());
        QTRY_COMPARE_WITH_TIMEOUT(played(fixture), QStringList{"song.mp3"}, 15000);
        QVERIFY(player.readAllStandardError().contains(
            "music file missing, skipped: /mnt/mmc/e_Music/gone.mp3"));
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
