// Draws every screen of the README into the folder given (scripts/screens: docs/screens), staged
// as the tests stage them, enlarged with sharp pixels. Prints each picture written.
#include "app/startup.h"
#include "screenstaging.h"

#include <QApplication>
#include <QDir>
#include <QPalette>

#include <cstdio>

int main(int argc, char **argv)
{
    // the same pixels whether or not a display is there
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setPalette(recorderPalette());
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "usage: %s FOLDER (one it can make)\n", argv[0]);
        return 2;
    }
    int failed = 0;
    for (const ReadmeScreen &screen : readmeScreens()) {
        const QString path = QString::fromLocal8Bit(argv[1]) + '/' + screen.name + ".png";
        const bool saved = savePicture(screen.draw(), path);
        std::fprintf(stderr, "screens: %s%s\n", qPrintable(path),
                     saved ? "" : " could not be drawn");
        failed += saved ? 0 : 1;
    }
    return failed == 0 ? 0 : 1;
}
