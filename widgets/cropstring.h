#pragma once

class QFont;
class QString;

// Fits text into maxWidth pixels of font, shortening it behind suffix. The search for the
// prefix is cut short after ten halvings and keeps the last prefix it tried, so the result may
// be a little wider than maxWidth; callers live with that.
QString crop_string(const QFont &font, const QString &text, int maxWidth, const QString &suffix);
