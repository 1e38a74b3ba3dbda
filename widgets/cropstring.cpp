#include "widgets/cropstring.h"

#include <QFont>
#include <QFontMetrics>
#include <QString>

QString crop_string(const QFont &font, const QString &text, int maxWidth, const QString &suffix)
{
    const QFontMetrics metrics(font);
    if (metrics.horizontalAdvance(text) <= maxWidth)
        return text;

    const int available = maxWidth - metrics.horizontalAdvance(suffix);
    int low = 0;
    int high = text.length();
    QString result;
    // a short search is enough on a 256-pixel screen; the last prefix tried is kept even when
    // it was too wide
    for (int step = 0; step < 10; ++step) {
        const int mid = (low + high) / 2;
        if (mid >= high || low >= high || mid <= low)
            break;
        result = text.left(mid);
        const int width = metrics.horizontalAdvance(result);
        if (width == available)
            break;
        if (width < available)
            low = mid;
        else
            high = mid;
    }
    return result + suffix;
}
