// Feeds files to a fuzz harness outside libFuzzer: each argument is a file or a folder of files.
// Fails when there was nothing to feed, so a missing seed corpus does not pass unnoticed.
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

// libFuzzer's limit for a single allocation, so that an input kept for asking too much fails here
// too (under AddressSanitizer)
extern "C" const char *__asan_default_options() // NOLINT(bugprone-reserved-identifier)
{
    return "max_allocation_size_mb=2048";
}

int main(int argc, char **argv)
{
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const QFileInfo arg(QFile::decodeName(argv[i]));
        QStringList files;
        if (arg.isDir()) {
            const QDir dir(arg.filePath());
            for (const QString &name : dir.entryList(QDir::Files, QDir::Name))
                files << dir.filePath(name);
        } else if (arg.isFile()) {
            files << arg.filePath();
        }
        for (const QString &path : qAsConst(files)) {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            std::fprintf(stderr, "replay %s\n", qPrintable(path));
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.constData()),
                                   static_cast<size_t>(bytes.size()));
            ++replayed;
        }
    }
    std::fprintf(stderr, "%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
