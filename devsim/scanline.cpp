// scanline TEXT [options]: "scans" a line of text: renders it as the pen's line camera would and
// drops the picture into the scanner stand-in's folder of the device root (RECORDER_ROOT).

#include "scanlinerenderer.h"
#include "storage/devicepath.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QGuiApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    // fonts need a platform, a screen does not
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    ScanLineLook look;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Renders TEXT as the pen's line camera would and drops it into /mnt/mmc/.scanner/."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("TEXT"), QStringLiteral("the line to scan"));
    const QCommandLineOption font(QStringLiteral("font"), QStringLiteral("font family"),
                                  QStringLiteral("FAMILY"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("font size in pixels"),
                                  QStringLiteral("PX"), QString::number(look.pixelSize));
    const QCommandLineOption height(QStringLiteral("height"), QStringLiteral("image height"),
                                    QStringLiteral("PX"), QString::number(look.height));
    const QCommandLineOption skew(QStringLiteral("skew"), QStringLiteral("tilt in degrees"),
                                  QStringLiteral("DEG"), QString::number(look.skewDegrees));
    const QCommandLineOption noise(QStringLiteral("noise"),
                                   QStringLiteral("sensor noise in grey levels"),
                                   QStringLiteral("LEVEL"), QString::number(look.noise));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("noise seed"),
                                  QStringLiteral("N"));
    const QCommandLineOption output(QStringLiteral("output"),
                                    QStringLiteral("write FILE instead of scanning"),
                                    QStringLiteral("FILE"));
    parser.addOptions({font, size, height, skew, noise, seed, output});
    parser.process(app);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    look.family = parser.value(font);
    look.pixelSize = parser.value(size).toInt();
    look.height = parser.value(height).toInt();
    look.skewDegrees = parser.value(skew).toDouble();
    look.noise = parser.value(noise).toInt();
    look.seed = parser.isSet(seed) ? parser.value(seed).toUInt()
                                   : quint32(QDateTime::currentMSecsSinceEpoch());
    if (look.pixelSize <= 0 || look.height <= 0 || look.noise < 0) {
        std::fprintf(stderr, "scanline: size, height and noise must be positive\n");
        return 2;
    }
    const QImage line = renderScanLine(parser.positionalArguments().constFirst(), look);

    if (parser.isSet(output))
        return line.save(parser.value(output), "PNG") ? 0 : 1;

    // written under a hidden name and renamed, so the scanner never sees half a picture
    const QString folder = devicePath(QStringLiteral("/mnt/mmc/.scanner"));
    QDir().mkpath(folder);
    const QString name = QStringLiteral("line-%1-%2.png")
                             .arg(QDateTime::currentMSecsSinceEpoch())
                             .arg(QCoreApplication::applicationPid());
    const QString temporary = folder + QStringLiteral("/.") + name;
    if (!line.save(temporary, "PNG") ||
        std::rename(QFile::encodeName(temporary).constData(),
                    QFile::encodeName(folder + QLatin1Char('/') + name).constData()) != 0) {
        std::fprintf(stderr, "scanline: cannot write into %s\n", qPrintable(folder));
        QFile::remove(temporary);
        return 1;
    }
    std::printf("%s\n", qPrintable(folder + QLatin1Char('/') + name));
    return 0;
}
