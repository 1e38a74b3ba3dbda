#pragma once

#include <QImage>

class QWidget;

// Pictures of the pen's white-on-black screens, pixel by pixel.

// A lit pixel is a drawn one.
bool lit(const QImage &image, int x, int y);

// The widget as the screen would show it, kept under the screens folder as NAME.png.
QImage shoot(QWidget &widget, const QString &name);
