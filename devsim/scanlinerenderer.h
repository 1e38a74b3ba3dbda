#pragma once

#include <QImage>
#include <QString>

// How the pen's line camera sees a line of text.
struct ScanLineLook
{
    QString family;           // empty: a sans font that has the text's script
    int pixelSize = 30;       // height of the font's em
    int height = 64;          // the camera's rows
    double skewDegrees = 1.0; // the pen is never held quite level
    int noise = 10;           // standard deviation of the sensor noise, in grey levels
    quint32 seed = 1;         // the same seed gives the same picture
};

// The line as an 8-bit grey picture: dark text on a light, uneven background, skewed and noisy,
// the camera's rows high and as wide as the text needs. Needs a QGuiApplication for the fonts.
QImage renderScanLine(const QString &text, const ScanLineLook &look);
