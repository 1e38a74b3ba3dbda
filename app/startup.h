#pragma once

#include <QString>

class QApplication;
class QPalette;
class QTranslator;

// Makes sure a media folder of the card exists, creating it through the shell's mkdir.
// 0 when the folder is there afterwards (or mkdir ran), -1 when mkdir could not be run at all.
int ensureMediaFolder(const char *folder, const char *presentLine);

// White text on black, inverted selection: the pen's one-bit look.
QPalette recorderPalette();

// "SystemSet/Lan" of /apps/config/config.ini; 0 when the file or the key is missing.
int readSystemLanguage();

// The translation file of a language number, empty for a number outside the table.
QString translationFileFor(int languageNumber);

// Logs the language's line, loads its file into the translator and installs the translator
// (also when the load failed). Numbers outside the table load nothing: English texts.
void applyTranslation(QApplication &app, QTranslator &translator, int languageNumber);
