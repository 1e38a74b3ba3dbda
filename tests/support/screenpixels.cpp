#include "screenpixels.h"

#include "testdeviceroot.h"

#include <QPixmap>
#include <QWidget>

bool lit(const QImage &image, int x, int y)
{
    return qGray(image.pixel(x, y)) > 128;
}

QImage shoot(QWidget &widget, const QString &name)
{
    const QPixmap pixmap = widget.grab();
    pixmap.save(screensDir() + QLatin1Char('/') + name + QStringLiteral(".png"));
    return pixmap.toImage();
}

QImage litMask(const QImage &image)
{
    QImage mask(image.size(), QImage::Format_Grayscale8);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            mask.scanLine(y)[x] = lit(image, x, y) ? 255 : 0;
    }
    return mask;
}

QImage maskWithout(const QImage &a, const QImage &b)
{
    QImage result = a;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (b.valid(x, y) && b.constScanLine(y)[x])
                result.scanLine(y)[x] = 0;
        }
    }
    return result;
}

QImage maskGrown(const QImage &mask, int r)
{
    QImage result(mask.size(), QImage::Format_Grayscale8);
    result.fill(0);
    for (int y = 0; y < mask.height(); ++y) {
        for (int x = 0; x < mask.width(); ++x) {
            if (!mask.constScanLine(y)[x])
                continue;
            for (int v = qMax(0, y - r); v <= qMin(mask.height() - 1, y + r); ++v) {
                for (int u = qMax(0, x - r); u <= qMin(mask.width() - 1, x + r); ++u)
                    result.scanLine(v)[u] = 255;
            }
        }
    }
    return result;
}

QPoint maskMeet(const QImage &a, const QImage &b)
{
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.constScanLine(y)[x] && b.valid(x, y) && b.constScanLine(y)[x])
                return {x, y};
        }
    }
    return {-1, -1};
}
