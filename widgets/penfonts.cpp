#include "widgets/penfonts.h"

#include "storage/devicepath.h"

#include <QDir>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

namespace {

const QString nits = QStringLiteral("nits");
const QString nitsBold = QStringLiteral("nitsbold");
// a line of the pen's font; a pixel size, so the screen's dots per inch never change the text
constexpr int linePixels = 12;

} // namespace

QString loadPenFonts()
{
    // Loaded by the program itself rather than through the system's font configuration: the
    // device root carries its own fonts, and the same face at the same pixel size draws the same
    // pixels under every platform plugin.
    if (!QFontDatabase().families().contains(nits) && QFont::substitutes(nits).isEmpty()) {
        const QDir dir(devicePath(QStringLiteral("/apps/res/fonts")));
        for (const QFileInfo &info : dir.entryInfoList(QDir::Files, QDir::Name)) {
            // the file itself, not a link in a test's device root that may be gone before the
            // last text is drawn
            const QStringList families = QFontDatabase::applicationFontFamilies(
                QFontDatabase::addApplicationFont(info.canonicalFilePath()));
            if (!families.isEmpty() && QFont::substitutes(nits).isEmpty()) {
                // the bold one is the same face made bold: the menu asks for weight 75
                QFont::insertSubstitution(nits, families.first());
                QFont::insertSubstitution(nitsBold, families.first());
            }
        }
    }
    QFont standard(nits);
    standard.setPixelSize(linePixels);
    // one-bit pixels, as on the pen's screen
    standard.setStyleStrategy(QFont::NoAntialias);
    QGuiApplication::setFont(standard);
    return QFontInfo(standard).family();
}
