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
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    QApplication::setPalette(recorderPalette());
    const QString folder = QString::fromLocal8Bit(argv[1]);
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "screens: cannot make %s\n", argv[1]);
        return 1;
    }
    int failed = 0;
    for (const ReadmeScreen &screen : readmeScreens()) {
        const QString path = folder + QLatin1Char('/') + screen.name + QStringLiteral(".png");
        const QImage picture = screen.draw();
        if (picture.isNull() || !savePicture(picture, path)) {
            std::fprintf(stderr, "screens: %s could not be drawn\n", qPrintable(path));
            ++failed;
            continue;
        }
        std::fprintf(stderr, "screens: %s\n", qPrintable(path));
    }
    return failed == 0 ? 0 : 1;
}
