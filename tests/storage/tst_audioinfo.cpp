#include "storage/audioinfo.h"

#include <QtTest>

namespace {

// the frame count a Xing/Info frame states, read straight from the file's first frame
long xingCount(const QByteArray &mp3)
{
    int at = mp3.indexOf("Xing");
    if (at < 0 || at > 64)
        at = mp3.indexOf("Info");
    if (at < 0 || at > 64 || !(mp3[at + 7] & 1))
        return -1;
    const auto *p = reinterpret_cast<const unsigned char *>(mp3.constData() + at + 8);
    return long(p[0]) << 24 | long(p[1]) << 16 | long(p[2]) << 8 | long(p[3]);
}

Mp3FrameScan frames(const QByteArray &bytes)
{
    return scanMp3Frames(reinterpret_cast<const unsigned char *>(bytes.constData()),
                         size_t(bytes.size()));
}

} // namespace

class TstAudioInfo : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString file(const QString &name) const { return m_dir.filePath(name); }
    QByteArray read(const QString &name) const
    {
        QFile f(file(name));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile f(file(name));
        QVERIFY(f.open(QIODevice::WriteOnly));
        QCOMPARE(f.write(bytes), qint64(bytes.size()));
    }
    // runs a tool of the test machine; skips when it is not installed
    void run(const QString &tool, const QStringList &args)
    {
        if (QStandardPaths::findExecutable(tool).isEmpty())
            QSKIP(qPrintable(tool + " is not installed"));
        QProcess p;
        p.setWorkingDirectory(m_dir.path());
        p.start(tool, args);
        QVERIFY2(p.waitForFinished(300000), qPrintable(tool));
        QVERIFY2(p.exitCode() == 0, p.readAllStandardError().constData());
    }
    // a tone of the given length, made once per name
    void tone(const QString &name, int rate, int channels, int seconds)
    {
        if (!QFile::exists(file(name)))
            run("sox", {"-n", "-r", QString::number(rate), "-c", QString::number(channels), "-b",
                        "16", name, "synth", QString::number(seconds), "sine", "200-3000"});
    }

private slots:
    void shineConstantRate_data()
    {
        QTest::addColumn<int>("kbps");
        QTest::addColumn<int>("seconds");
        QTest::newRow("64k-1s") << 64 << 1;
        QTest::newRow("128k-1s") << 128 << 1;
        QTest::newRow("64k-10min") << 64 << 600;
    }
    void shineConstantRate()
    {
        QFETCH(int, kbps);
        QFETCH(int, seconds);
        const QString wav = QStringLiteral("mono24k_%1.wav").arg(seconds);
        const QString mp3 = QStringLiteral("shine_%1_%2.mp3").arg(kbps).arg(seconds);
        tone(wav, 24000, 1, seconds);
        run("shineenc", {"-q", "-m", "-b", QString::number(kbps), wav, mp3});
        // MPEG-2 Layer III at 24 kHz: 576 samples (24 ms) in 72 * bitrate / 24000 bytes, no padding
        const QByteArray bytes = read(mp3);
        const int frameBytes = 72 * kbps * 1000 / 24000;
        const long expected = bytes.size() / frameBytes;
        QCOMPARE(bytes.size() % frameBytes, 0);
        const Mp3FrameScan scan = frames(bytes);
        QCOMPARE(scan.frames, expected);
        QCOMPARE(scan.milliseconds, expected * 24);

        audioinfo info;
        QCOMPARE(getaudioinfo(QFile::encodeName(file(mp3)).constData(), &info), 0);
        QCOMPARE(info.seconds, int(expected * 24 / 1000));
        QCOMPARE(info.bitrate, kbps * 1000);
        QCOMPARE(info.samplerate, 24000);
        QCOMPARE(info.filesize, bytes.size());
        const int s = info.seconds;
        QCOMPARE(QString::fromLatin1(info.play_time),
                 QString::asprintf("%02d:%02d:%02d", s / 3600, s / 60 % 60, s % 60));

        // the last frame counts only when it is whole
        QCOMPARE(frames(bytes.left(bytes.size() - 1)).frames, expected - 1);
        QCOMPARE(frames(bytes.left(bytes.size() - frameBytes)).frames, expected - 1);
    }

    void variableRate_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<int>("seconds");
        QTest::newRow("lame-v2-1s") << "lame" << 1;
        QTest::newRow("lame-v2-61s") << "lame" << 61;
        QTest::newRow("lame-v2-10min") << "lame" << 600;
    }
    void variableRate()
    {
        QFETCH(QString, tool);
        QFETCH(int, seconds);
        const QString wav = QStringLiteral("stereo44k_%1.wav").arg(seconds);
        const QString tagged = QStringLiteral("%1_%2.mp3").arg(tool).arg(seconds);
        const QString bare = QStringLiteral("%1_%2_bare.mp3").arg(tool).arg(seconds);
        tone(wav, 44100, 2, seconds);
        run(tool, {"--quiet", "-V2", wav, tagged});
        run(tool, {"--quiet", "-V2", "-t", wav, bare}); // the same frames, no Xing frame
        const QByteArray withInfo = read(tagged);
        const long stated = xingCount(withInfo);
        QVERIFY(stated > 0);

        const Mp3FrameScan fast = frames(withInfo);
        QVERIFY(fast.fromXingCount);
        QCOMPARE(fast.frames, stated);
        QCOMPARE(fast.samplerate, 44100);
        // without a count the info frame is walked over but never counted as audio
        QByteArray noCount = withInfo;
        noCount[noCount.indexOf("Xing") + 7] = 0;
        const Mp3FrameScan walked = frames(noCount);
        QVERIFY(!walked.fromXingCount);
        QCOMPARE(walked.frames, stated);
        QCOMPARE(walked.milliseconds, fast.milliseconds);
        QCOMPARE(walked.milliseconds, stated * 1152 * 1000 / 44100);

        QCOMPARE(frames(read(bare)).frames, stated);
        audioinfo info;
        QCOMPARE(getaudioinfo(QFile::encodeName(file(bare)).constData(), &info), 0);
        QCOMPARE(info.seconds, int(fast.milliseconds / 1000));
        QVERIFY(info.bitrate > 32000 && info.bitrate < 320000);
    }

    void soxConstantRateWithPadding()
    {
        tone("stereo44k_61.wav", 44100, 2, 61);
        run("sox", {"stereo44k_61.wav", "-C", "128", "sox_128.mp3"});
        // 417 or 418 bytes a frame, padded so that the mean is 144 * 128000 / 44100 bytes
        const QByteArray bytes = read("sox_128.mp3");
        const long expected = qRound(bytes.size() * 44100.0 / (144 * 128000));
        QCOMPARE(frames(bytes).frames, expected);
        QCOMPARE(frames(bytes).bitrate, 128000);
    }

    void tags_data()
    {
        QTest::addColumn<QString>("option");
        QTest::newRow("id3v1-at-the-end") << "--id3v1-only";
        QTest::newRow("id3v2-at-the-start") << "--id3v2-only";
    }
    void tags()
    {
        QFETCH(QString, option);
        tone("stereo44k_1.wav", 44100, 2, 1);
        const QString mp3 = "tag" + option + ".mp3";
        run("lame", {"--quiet", "-b", "128", "-t", option, "--tt", "  A Title  ", "--ta",
                     "Somebody With A Long Artist Name", "stereo44k_1.wav", mp3});
        run("lame", {"--quiet", "-b", "128", "-t", "stereo44k_1.wav", "untagged.mp3"});
        audioinfo info;
        QCOMPARE(getaudioinfo(QFile::encodeName(file(mp3)).constData(), &info), 0);
        QVERIFY(info.isid3tag);
        QCOMPARE(QByteArray(info.name), QByteArray("A Title"));
        QCOMPARE(QByteArray(info.Artist), QByteArray("Somebody With A Long Artist N"));
        QCOMPARE(frames(read(mp3).left(info.stearmsize)).frames,
                 frames(read("untagged.mp3")).frames);
    }

    void brokenFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("result");
        QByteArray noise(200000, '\0');
        QRandomGenerator generator(7);
        for (char &c : noise)
            c = char(generator.bounded(256));
        QByteArray wav("RIFF\0\0\0\0WAVEfmt ", 16);
        wav += QByteArray(28, '\0') + noise;
        QTest::newRow("empty") << QByteArray() << -1;
        QTest::newRow("shorter-than-128") << QByteArray(127, '\xff') << -1;
        QTest::newRow("all-sync-bytes") << QByteArray(4096, '\xff') << 0;
        QTest::newRow("random-bytes") << noise << 0;
        QTest::newRow("wav-renamed") << wav << 0;
        QTest::newRow("only-a-tag") << QByteArray("TAG") + QByteArray(125, ' ') << 0;
    }
    void brokenFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, result);
        write("broken.mp3", bytes);
        audioinfo info;
        QCOMPARE(getaudioinfo(QFile::encodeName(file("broken.mp3")).constData(), &info), result);
        QVERIFY(info.seconds >= 0);
    }

    void unreadablePaths()
    {
        audioinfo info;
        QCOMPARE(getaudioinfo(nullptr, &info), -5);
        QCOMPARE(getaudioinfo(QFile::encodeName(file("missing.mp3")).constData(), &info), -3);
        QCOMPARE(getaudioinfo(QFile::encodeName(m_dir.path()).constData(), &info), -1);
    }
};

QTEST_GUILESS_MAIN(TstAudioInfo)
#include "tst_audioinfo.moc"
