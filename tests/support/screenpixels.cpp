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
