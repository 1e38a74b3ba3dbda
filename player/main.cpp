// musicplayer: the player window on the music list, honouring the stored loop mode.
// Escape stops, Escape again leaves; SIGTERM and SIGINT leave the same way, so the player child
// never outlives this program.
#include "app/qcopchannel.h"
#include "app/startup.h"
#include "player/filemanager.h"
#include "player/musicplayercontroller.h"
#include "player/playerwnd.h"
#include "storage/tracelog.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QTextCodec>
#include <QTranslator>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};

void onTermination(int)
{
    const char byte = 1;
    // nothing to do about a full pipe: one byte is enough to wake the loop
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

// A termination request ends the event loop, so the window's destruction reaps the player.
void quitOnTermination(QApplication &app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0)
        return;
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, &QApplication::quit);
    struct sigaction action = {};
    action.sa_handler = onTermination;
    sigemptyset(&action.sa_mask);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

} // namespace

int main(int argc, char *argv[])
{
    // all narrow text of the device is GBK
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("GBK"));
    QApplication app(argc, argv);
    QApplication::setPalette(recorderPalette());
    quitOnTermination(app);
    // the texts in the language the user chose for the pen
    QTranslator translator;
    applyTranslation(app, translator, readSystemLanguage());

    FileManager files;
    files.load();
    int result = 0;
    {
        playerWnd window;
        MusicPlayerController controller(&files, &window);
        window.show();
        if (!controller.start())
            LOGW("nothing to play; Escape leaves");
        result = QApplication::exec();
    }
    // the shell must have every message before the process is gone
    QCopChannel::flush();
    return result;
}
