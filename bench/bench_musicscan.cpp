// scanmusic() over 10,000 card entries beside a bare opendir/readdir/sort/fputs program.
#include "storage/musicscan.h"

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <string>
#include <vector>

namespace {

void bareList(const QByteArray &root, const char *out)
{
    std::vector<std::string> lines;
    for (const QByteArray &dir : {root + "/mnt/mmc/", root + "/mnt/mmc/e_Music/"}) {
        const std::string prefix = dir.toStdString();
        DIR *d = ::opendir(dir.constData());
        while (const dirent *e = ::readdir(d)) {
            if (e->d_name[0] != '.')
                lines.push_back(prefix + e->d_name + '\n');
        }
        ::closedir(d);
    }
    std::sort(lines.begin(), lines.end(), [](const std::string &a, const std::string &b) {
        return std::strcmp(a.c_str(), b.c_str()) > 0;
    });
    FILE *f = std::fopen(out, "wb");
    for (const std::string &l : lines)
        std::fputs(l.c_str(), f);
    std::fclose(f);
}

void touch(const QString &path)
{
    QFile(path).open(QIODevice::WriteOnly);
}

} // namespace

int main()
{
    QTemporaryDir root;
    const QString mmc = root.path() + QStringLiteral("/mnt/mmc/");
    QDir().mkpath(mmc + "e_Music");
    QDir().mkpath(mmc + "e_Recorder");
    QDir().mkpath(root.path() + "/apps/config");
    for (int i = 0; i < 5000; ++i)
        touch(mmc + QStringLiteral("song %1 of the card.mp3").arg(i * 7919 % 10007));
    for (int i = 0; i < 4000; ++i)
        touch(mmc + QStringLiteral("e_Music/track %1.MP3").arg(i * 7919 % 10007));
    for (int i = 0; i < 1000; ++i)
        touch(mmc + QStringLiteral("e_Recorder/%1.wav").arg(i));
    qputenv("RECORDER_ROOT", QFile::encodeName(root.path()));
    const QByteArray rootBytes = QFile::encodeName(root.path());
    const QByteArray bareOut = rootBytes + "/bare.txt";

    qint64 ours = INT64_MAX;
    qint64 floor = INT64_MAX;
    for (int round = 0; round < 30; ++round) {
        QElapsedTimer t;
        t.start();
        scanmusic();
        ours = std::min(ours, t.nsecsElapsed());
        t.restart();
        bareList(rootBytes, bareOut.constData());
        floor = std::min(floor, t.nsecsElapsed());
    }
    QFile list(root.path() + "/apps/config/musiclist.txt");
    list.open(QIODevice::ReadOnly);
    const int lines = list.readAll().count('\n');
    std::printf("scanmusic: %.2f ms (%d lines)\nbare:      %.2f ms\n", ours / 1e6, lines,
                floor / 1e6);
    std::printf("BENCH musicscan ratio=%.2f goal<=1.2\n", double(ours) / double(floor));
    return lines == 9000 ? 0 : 1;
}
