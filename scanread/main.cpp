// scanread: the scan text view full screen, with speech. Lines scanned with the pen (on a PC:
// devsim/scanline) are recognised, appended and selected; OK reads the selection aloud with the
// spoken word highlighted, Left/Right select words, Escape stops reading and then leaves.
// Each recognised line and the view's text are reported on standard error.
#include "app/qcopchannel.h"
#include "app/quitontermination.h"
#include "app/startup.h"
#include "scanread/configreader.h"
#include "scanread/ocrpen.h"
#include "scanread/recchar.h"
#include "scanread/scanreadedit.h"
#include "scanread/ttsplayer.h"
#include "storage/devicepath.h"
#include "storage/languagemanager.h"
#include "widgets/penfonts.h"

#include <QApplication>
#include <QSettings>
#include <QTextCodec>
#include <QTranslator>

#include <cstdio>

int main(int argc, char *argv[])
{
    // all narrow text of the device is GBK
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("GBK"));
    QApplication app(argc, argv);
    QApplication::setPalette(recorderPalette());
    loadPenFonts();
    quitOnTermination(app);
    // the view's messages in the language the user chose for the pen
    QTranslator translator;
    applyTranslation(app, translator, readSystemLanguage());

    // the reading language is a row of the language table
    LanguageManager::Instance()->init();
    ConfigReader::reader = new ConfigReader;
    // The settings end with the sound record's speaker volume, which this build does not keep
    // (always 0): speak at the reading volume step instead, as the language setting does.
    const QSettings settings(devicePath(QStringLiteral("/apps/config/config.ini")),
                             QSettings::IniFormat);
    TTSPlayer::player->setVolume(settings.value(QStringLiteral("InfoListen/Volum"), 3).toInt() *
                                 20);
    int result = 0;
    {
        ScanReadEdit view;
        view.Init();
        // the reader's setting decides whether each scanned line is read out at once
        view.setAutoRead(ConfigReader::reader->getReadControlInfo() != 0);
        view.setFixedSize(256, 64);
        view.move(0, 0);
        view.setWindowFlags(Qt::FramelessWindowHint);
        QObject::connect(&view, &MyEdit::signalEsc, &app, &QApplication::quit);
        QObject::connect(&view, &MyEdit::signalRecFinished, &view, [&view](const QString &text) {
            const QTextCursor cursor = view.textCursor();
            std::fprintf(stderr,
                         "scanread: recognised \"%s\"\nscanread: view \"%s\" selected %d-%d\n",
                         text.toUtf8().constData(), view.toPlainText().toUtf8().constData(),
                         cursor.selectionStart(), cursor.selectionEnd());
        });
        view.show();
        std::fputs(RecChar::init() == 0 ? "scanread: scanner ready\n" : "scanread: no scanner\n",
                   stderr);
        result = QApplication::exec();
        // no scanned line may reach the view while it goes
        RecChar::Uninitial();
    }
    // the shell must have every message before the process is gone
    QCopChannel::flush();
    TTSPlayer::quitFun();
    OCRPen::quitFun();
    ConfigReader::quitFun();
    return result;
}
