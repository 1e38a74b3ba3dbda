#include "app/deviceaudio.h"
#include "app/qcopchannel.h"
#include "app/startup.h"
#include "recorder/recordmainwnd.h"
#include "storage/configwidget.h"
#include "storage/languagemanager.h"
#include "storage/musicscan.h"
#include "storage/storagespace.h"
#include "storage/tracelog.h"
#include "storage/volume.h"
#include "widgets/messagedialog.h"
#include "widgets/penfonts.h"

#include <QApplication>
#include <QDebug>
#include <QPalette>
#include <QTextCodec>
#include <QTranslator>

#include <memory>

QApplication *qApp1 = nullptr;
QTranslator *translatorpass = nullptr;

int main(int argc, char *argv[])
{
    // the music list is written beside everything else, yielding the core until the window shows
    startMusicScan();

    const int playVolume = ConfigWidget::instance()->getPlayVolume();
    Set_mic_record_mode(0);
    set_volume(static_cast<long>(playVolume) * 20);

    if (ensureMediaFolder("/mnt/mmc/e_Recorder", "recorder dir exit") != 0 ||
        ensureMediaFolder("/mnt/mmc/e_Music", "music dir exit") != 0) {
        waitForMusicScan();
        return -1;
    }

    // all narrow text of the device is GBK
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("GBK"));

    QApplication app(argc, argv);
    qApp1 = &app;
    QApplication::setPalette(recorderPalette());
    qDebug() << "font nits is" << loadPenFonts();

    QTranslator translator;
    translatorpass = &translator;

    const int lan = readSystemLanguage();
    int result = -1;
    std::unique_ptr<RecordMainWnd> window;
    if (LanguageManager::Instance()->init() == -1) {
        LOGD("Initlanguage failed.");
    } else {
        const int lanNumber = LanguageManager::Instance()->getLanIntByID(lan);
        qDebug() << "show lan is" << lanNumber;
        applyTranslation(app, translator, lanNumber);

        const long long freeSpace = getFreeSpace();
        window = std::make_unique<RecordMainWnd>(nullptr, 0);
        window->setVisible(true);
        window->SendShow();
        musicScanWindowShown();
        if (freeSpace <= 0) {
            MessageDialog message(nullptr,
                                  QCoreApplication::translate(
                                      "main", "No enough storage space, please remove some files."),
                                  0);
            message.exec();
            window->close();
            // ended through the teardown below, as after the event loop: exit() here would leave
            // the application object and Qt's font cache behind
            result = 0;
        } else {
            result = QApplication::exec();
        }
    }

    // the shell must have every message before the process is gone
    QCopChannel::flush();
    window.reset();
    translatorpass = nullptr;
    qApp1 = nullptr;
    // a stop soon after the window showed must not cut the music list short
    waitForMusicScan();
    return result;
}
