// musicplayer: the player window on the music list, honouring the stored loop mode.
// Escape stops, Escape again leaves; SIGTERM and SIGINT leave the same way, so the player child
// never outlives this program.
#include "app/qcopchannel.h"
#include "app/quitontermination.h"
#include "app/startup.h"
#include "player/cardnamecodec.h"
#include "player/musicplayer.h"
#include "widgets/penfonts.h"

#include <QApplication>
#include <QTranslator>

int main(int argc, char *argv[])
{
    // all narrow text of the device is GBK; the card's names keep their bytes whatever they are
    CardNameCodec::install();
    QApplication app(argc, argv);
    QApplication::setPalette(recorderPalette());
    quitOnTermination(app);
    // the texts in the pen's fonts, in the language the user chose for the pen
    loadPenFonts();
    QTranslator translator;
    applyTranslation(app, translator, readSystemLanguage());

    int result = 0;
    {
        MusicPlayer player;
        player.window().show();
        player.start();
        result = QApplication::exec();
    }
    // the shell must have every message before the process is gone
    QCopChannel::flush();
    return result;
}
