#include "mp3fixtures.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <cstdio>

namespace {

// runs `first | second`; true when both end well
bool pipeline(const QStringList &first, const QStringList &second)
{
    QProcess producer;
    QProcess consumer;
    producer.setStandardOutputProcess(&consumer);
    consumer.start(second.first(), second.mid(1));
    producer.start(first.first(), first.mid(1));
    const bool done = producer.waitForFinished(-1) && consumer.waitForFinished(-1);
    return done && producer.exitCode() == 0 && consumer.exitCode() == 0;
}

bool make(const QString &target, const QStringList &source, const QStringList &encoder)
{
    if (QFile::exists(target))
        return true;
    std::printf("making %s ...\n", qPrintable(target));
    std::fflush(stdout);
    const QString partial = target + QStringLiteral(".part");
    QStringList command = encoder;
    command.append(partial);
    bool done = false;
    if (source.isEmpty()) {
        QProcess encode;
        encode.start(command.first(), command.mid(1));
        done = encode.waitForFinished(-1) && encode.exitCode() == 0;
    } else {
        done = pipeline(source, command);
    }
    return done && QFile::rename(partial, target);
}

} // namespace

Mp3Fixtures makeMp3Fixtures()
{
    Mp3Fixtures f;
    for (const char *tool : {"sox", "lame", "shineenc"}) {
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty()) {
            std::printf("%s is missing\n", tool);
            return f;
        }
    }
    const QString dir = QDir::temp().filePath(QStringLiteral("recorder-bench-mp3"));
    QDir().mkpath(dir);
    const auto signal = [](const char *rate, const char *channels) {
        return QStringList{"sox", "-n", "-r",    rate,   "-c",   channels,   "-b",   "16", "-t",
                           "wav", "-",  "synth", "3600", "sine", "200-3000", "sine", "300"};
    };
    f.cbr128 = dir + QStringLiteral("/shine_24k_128.mp3");
    f.cbr64 = dir + QStringLiteral("/shine_24k_64.mp3");
    f.vbrXing = dir + QStringLiteral("/lame_v2_xing.mp3");
    f.vbrBare = dir + QStringLiteral("/lame_v2_bare.mp3");
    // shineenc reads a file, not a pipe
    const QString wav = dir + QStringLiteral("/mono24k.wav");
    bool ok = true;
    if (!QFile::exists(f.cbr128) || !QFile::exists(f.cbr64)) {
        QStringList mono = signal("24000", "1");
        mono.replace(mono.indexOf("-"), wav);
        QProcess sox;
        sox.start(mono.first(), mono.mid(1));
        ok = sox.waitForFinished(-1) && sox.exitCode() == 0;
        ok = ok && make(f.cbr128, {}, {"shineenc", "-q", "-m", "-b", "128", wav});
        ok = ok && make(f.cbr64, {}, {"shineenc", "-q", "-m", "-b", "64", wav});
        QFile::remove(wav);
    }
    ok = ok && make(f.vbrXing, signal("44100", "2"), {"lame", "--quiet", "-V2", "-"});
    ok = ok && make(f.vbrBare, signal("44100", "2"), {"lame", "--quiet", "-V2", "-t", "-"});
    f.ok = ok;
    return f;
}
