#include "scanlinerenderer.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

bool hasHan(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.script() == QChar::Script_Han; });
}

} // namespace

QImage renderScanLine(const QString &text, const ScanLineLook &look)
{
    QFont font(look.family.isEmpty() ? (hasHan(text) ? QStringLiteral("WenQuanYi Zen Hei")
                                                     : QStringLiteral("DejaVu Sans"))
                                     : look.family);
    font.setPixelSize(look.pixelSize);
    // a camera sees smooth edges, whatever the program's own screen font asks for
    font.setStyleStrategy(QFont::PreferAntialias);
    const QFontMetrics metrics(font);
    const int margin = look.height / 2;
    const int width = metrics.horizontalAdvance(text) + 2 * margin;

    // the ink: white text on black, so that turning it keeps the background black
    QImage ink(width, look.height, QImage::Format_Grayscale8);
    ink.fill(0);
    {
        QPainter painter(&ink);
        painter.setRenderHint(QPainter::TextAntialiasing);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.translate(width / 2.0, look.height / 2.0);
        painter.rotate(look.skewDegrees);
        painter.translate(-width / 2.0, -look.height / 2.0);
        const int baseline = (look.height + metrics.ascent() - metrics.descent()) / 2;
        painter.drawText(margin, baseline, text);
    }

    // paper lit unevenly from one side, ink not quite black, and the sensor's noise
    std::mt19937 random(look.seed);
    std::normal_distribution<double> noise(0.0, look.noise);
    QImage line(width, look.height, QImage::Format_Grayscale8);
    for (int y = 0; y < look.height; ++y) {
        const uchar *in = ink.constScanLine(y);
        uchar *out = line.scanLine(y);
        for (int x = 0; x < width; ++x) {
            const double paper = 215.0 + 25.0 * std::sin(3.0 * x / width + 0.5);
            const double level = paper - (paper - 35.0) * in[x] / 255.0 + noise(random);
            out[x] = uchar(std::clamp(std::lround(level), 0L, 255L));
        }
    }
    return line;
}
