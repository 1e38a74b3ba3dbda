#pragma once

#include <QImage>
#include <QPoint>

class QWidget;

// Pictures of the pen's white-on-black screens, pixel by pixel.

// A lit pixel is a drawn one.
bool lit(const QImage &image, int x, int y);

// The widget as the screen would show it, kept under the screens folder as NAME.png.
QImage shoot(QWidget &widget, const QString &name);

// The lit pixels of a picture as a mask: a one-byte image, 255 where lit, 0 elsewhere.
QImage litMask(const QImage &image);
// The pixels of a that b does not have.
QImage maskWithout(const QImage &a, const QImage &b);
// The mask grown by r pixels in every direction (a square around each pixel).
QImage maskGrown(const QImage &mask, int r);
// A pixel set in both masks, or (-1, -1) when they do not meet.
QPoint maskMeet(const QImage &a, const QImage &b);
