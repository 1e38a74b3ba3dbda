#include "app/deviceaudio.h"
#include "app/startup.h"
#include "storage/configwidget.h"
#include "storage/languagemanager.h"
#include "storage/tracelog.h"
#include "storage/volume.h"

#include <QApplication>
#include <QDebug>
#include <QPalette>
#include <QTextCodec>
#include <QTranslator>

QApplication *qApp1 = nullptr;
QTranslator *translatorpass = nullptr;

int main(int argc, char *argv[])
{
    if (!ConfigWidget::reader)
        ConfigWidget::reader = new ConfigWidget;
    const int playVolume = ConfigWidget::reader->getPlayVolume();
    Set_mic_record_mode(0);
    set_volume(playVolume * 20);

    if (ensureMediaFolder("/mnt/mmc/e_Recorder", "recorder dir exit") != 0)
        return -1;
    if (ensureMediaFolder("/mnt/mmc/e_Music", "music dir exit") != 0)
        return -1;

    // all narrow text of the device is GBK
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("GBK"));

    QApplication app(argc, argv);
    qApp1 = &app;
    QApplication::setPalette(recorderPalette());

    QTranslator translator;
    translatorpass = &translator;

    const int lan = readSystemLanguage();
    int result = -1;
    if (LanguageManager::Instance()->init() == -1) {
        LOGD("Initlanguage failed.");
    } else {
        const int lanNumber = LanguageManager::Instance()->getLanIntByID(lan);
        qDebug() << "show lan is" << lanNumber;
        applyTranslation(app, translator, lanNumber);
        result = QApplication::exec();
    }

    translatorpass = nullptr;
    qApp1 = nullptr;
    return result;
}
