#include "storage/logsink.h"
#include "storage/musicscan.h"
#include "storage/storagespace.h"
#include "storage/timetext.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <pthread.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>

namespace {

QByteArray wavHeader(quint16 format, quint32 byteRate)
{
    QByteArray h("RIFF\0\0\0\0WAVEfmt \x10\0\0\0", 20);
    const auto le = [&h](quint32 v, int bytes) {
        for (int i = 0; i < bytes; ++i)
            h.append(char(v >> (8 * i)));
    };
    le(format, 2);
    le(2, 2);
    le(44100, 4);
    le(byteRate, 4);
    le(4, 2);
    le(16, 2);
    h.append("data\0\0\0\0", 8);
    return h;
}

struct statfs fakeStatfs;
int fakeStatfsResult = 0;
int fromFakeStatfs(const char *, struct statfs *out)
{
    *out = fakeStatfs;
    return fakeStatfsResult;
}

struct statvfs fakeStatvfs;
int fromFakeStatvfs(const char *, struct statvfs *out)
{
    *out = fakeStatvfs;
    return 0;
}

} // namespace

class TstUtilities : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        setStatfsSource(nullptr);
        setStatvfsSource(nullptr);
    }

    void clockText_data()
    {
        QTest::addColumn<long>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("negative") << -5L << "00:00";
        QTest::newRow("zero") << 0L << "00:00";
        QTest::newRow("under-a-minute") << 59L << "00:59";
        QTest::newRow("last-before-hours") << 3599L << "59:59";
        QTest::newRow("one-hour") << 3600L << "01:00:00";
        QTest::newRow("hours-minutes-seconds") << 3661L << "01:01:01";
        QTest::newRow("hundred-hours") << 360000L << "100:00:00";
    }
    void clockText()
    {
        QFETCH(long, seconds);
        QFETCH(QString, text);
        char out[32];
        QCOMPARE(QString::fromLatin1(sec2string(seconds, out)), text);
    }

    void waveLength_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("ten-seconds-stereo")
            << wavHeader(1, 176400) + QByteArray(1764000, '\0') << "00:10";
        QTest::newRow("just-under-a-second")
            << wavHeader(1, 176400) + QByteArray(176399, '\0') << " ";
        QTest::newRow("header-only") << wavHeader(1, 176400) << " ";
        QTest::newRow("float-samples") << wavHeader(3, 352800) + QByteArray(352800, 0) << " ";
        QTest::newRow("not-riff") << QByteArray(100, 'x') << " ";
        QTest::newRow("short-file") << QByteArray("RIFF") << " ";
    }
    void waveLength()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        TestDeviceRoot root;
        QVERIFY(root.writeFile("/mnt/mmc/a.wav", bytes));
        char out[32] = "untouched";
        QCOMPARE(getWaveDuration(QFile::encodeName(root.path("/mnt/mmc/a.wav")), out), 0);
        QCOMPARE(QString::fromLatin1(out), text);
        QCOMPARE(getWaveDuration(QFile::encodeName(root.path("/mnt/mmc/none.wav")), out), -1);
        QCOMPARE(QString::fromLatin1(out), QStringLiteral(" "));
    }

    void logLines()
    {
        TestDeviceRoot root;
        QVERIFY(root.writeFile("/mnt/mmc/recorderlog.txt", "old line\n"));
        const QMessageLogContext context;
        customMessageHandler(QtDebugMsg, context, "one");
        customMessageHandler(QtWarningMsg, context, "two %1");
        customMessageHandler(QtCriticalMsg, context, QString::fromUtf8("\xe5\xbd\x95"));
        customMessageHandler(QtFatalMsg, context, "four"); // returns: the program goes on
        const QtMessageHandler previous = qInstallMessageHandler(customMessageHandler);
        qDebug() << "through qDebug";
        qInstallMessageHandler(previous);
        QCOMPARE(root.readFile("/mnt/mmc/recorderlog.txt"),
                 "old line\nDebug: one\nWarning: two %1\nCritical: " +
                     QString::fromUtf8("\xe5\xbd\x95").toLocal8Bit() +
                     "\nFatal: four\nDebug: through qDebug\n");
    }

    void freeMebibytes_data()
    {
        QTest::addColumn<int>("result");
        QTest::addColumn<qulonglong>("freeBlocks");
        QTest::addColumn<long long>("mib");
        QTest::newRow("just-under-1MiB") << 0 << 255ULL << 0LL;
        QTest::newRow("exactly-1MiB") << 0 << 256ULL << 1LL;
        QTest::newRow("beyond-32-bits") << 0 << 0x100000000ULL << 16777216LL;
        QTest::newRow("statfs-fails") << -1 << 100000ULL << 0LL;
    }
    void freeMebibytes()
    {
        QFETCH(int, result);
        QFETCH(qulonglong, freeBlocks);
        QFETCH(long long, mib);
        fakeStatfs = {};
        fakeStatfs.f_bsize = 4096;
        fakeStatfs.f_bfree = freeBlocks;
        fakeStatfs.f_bavail = 0; // the superuser's blocks count too
        fakeStatfsResult = result;
        setStatfsSource(fromFakeStatfs);
        QCOMPARE(getFreeSpace(), mib);
    }

    void usageFigures()
    {
        fakeStatvfs = {};
        fakeStatvfs.f_bsize = 4096;
        fakeStatvfs.f_frsize = 0;
        fakeStatvfs.f_blocks = 0xffffffffUL;
        fakeStatvfs.f_bfree = 10;
        fakeStatvfs.f_bavail = 0x80000001UL;
        fakeStatvfs.f_files = 0xffffffffUL;
        fakeStatvfs.f_ffree = 7;
        setStatvfsSource(fromFakeStatvfs);
        fs_usage usage;
        QCOMPARE(get_fs_usage("/x", nullptr, &usage), 0);
        QCOMPARE(usage.block_size, 4096u);
        QCOMPARE(usage.total_blocks, qint64(-1));
        QCOMPARE(usage.free_blocks, qint64(10));
        QCOMPARE(usage.avail_blocks, qint64(-0x7fffffff));
        QVERIFY(usage.avail_top_bit_set);
        QCOMPARE(usage.total_files, qint64(-1));
        QCOMPARE(usage.free_files, qint64(7));

        fakeStatvfs.f_frsize = 1024;
        fakeStatvfs.f_bavail = 0x600000; // 6 GiB of 1 KiB fragments: wraps to 2 GiB
        QCOMPARE(get_free("/x", nullptr, nullptr, 0, 0), 0x80000000u);
        char device[] = "server:/export";
        QCOMPARE(show_free(device, nullptr), 2048u);
        setStatvfsSource(nullptr);
        QCOMPARE(get_fs_usage("/no/such/folder", nullptr, &usage), -1);
        QCOMPARE(get_free("/no/such/folder", nullptr, nullptr, 0, 0), 0u);
    }

    void spaceRecord()
    {
        TestDeviceRoot root;
        long value = 0;
        QCOMPARE(readSpaceRecord(&value), -1);
        writeSpaceToFile(-12);
        QCOMPARE(root.readFile("/apps/config/space.ini"),
                 QByteArray("-12\0\0\0\0\0\0\0\0\0\0\0\0\0", 16));
        QCOMPARE(readSpaceRecord(&value), 0);
        QCOMPARE(value, -12L);
        QVERIFY(root.writeFile("/apps/config/space.ini", "12345"));
        QCOMPARE(readSpaceRecord(&value), -2);
    }

    void musicList_data()
    {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QByteArray>("list");
        QTest::newRow("music-folder-between-root-names")
            << QStringList{"/mnt/mmc/b.mp3", "/mnt/mmc/e_Music/a.mp3", "/mnt/mmc/z.mp3"}
            << QByteArray("/mnt/mmc/z.mp3\n/mnt/mmc/e_Music/a.mp3\n/mnt/mmc/b.mp3\n");
        QTest::newRow("suffix-filter")
            << QStringList{"/mnt/mmc/song.MP3",
                           "/mnt/mmc/song.mp3x",
                           "/mnt/mmc/song.mp2",
                           "/mnt/mmc/mp3",
                           "/mnt/mmc/song.",
                           "/mnt/mmc/e_Music/x.Mp3",
                           "/mnt/mmc/e_Music/sub/deep.mp3"}
            << QByteArray("/mnt/mmc/song.mp3x\n/mnt/mmc/song.MP3\n/mnt/mmc/e_Music/x.Mp3\n");
        QTest::newRow("no-music") << QStringList{"/mnt/mmc/notes.txt"} << QByteArray();
    }
    void musicList()
    {
        QFETCH(QStringList, files);
        QFETCH(QByteArray, list);
        TestDeviceRoot root;
        for (const QString &f : files)
            QVERIFY(root.writeFile(f, "x"));
        pthread_t thread;
        QCOMPARE(pthread_create(&thread, nullptr, scanthread, nullptr), 0);
        QCOMPARE(pthread_join(thread, nullptr), 0);
        QCOMPARE(root.readFile("/apps/config/musiclist.txt"), list);
    }

    void musicListWithoutCard()
    {
        TestDeviceRoot root;
        QVERIFY(QDir(root.path("/mnt/mmc")).removeRecursively());
        QVERIFY(root.writeFile("/apps/config/musiclist.txt", "stale\n"));
        scanmusic();
        QVERIFY(root.exists("/apps/config/musiclist.txt"));
        QCOMPARE(root.readFile("/apps/config/musiclist.txt"), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TstUtilities)
#include "tst_utilities.moc"
