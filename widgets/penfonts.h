#pragma once

#include <QString>

// Every text of the pen is drawn in its small pixel fonts "nits" and "nitsbold", one line about 12
// pixels high. Where the system lacks them (a PC), the font files under /apps/res/fonts/ stand in
// for both families. Makes the 12-pixel "nits" the application's font and returns the family that
// QFont("nits") is drawn with. Needs the application object; calling it again changes nothing.
QString loadPenFonts();
