#include "playerfixture.h"

#include "storage/configwidget.h"

#include <QFile>

PlayerFixture::PlayerFixture()
{
    // no test makes a sound on a machine that has a sound card
    qputenv("DEVSIM_AUDIO", "null");
    // the settings store of this root, not of an earlier test's
    delete ConfigWidget::reader;
    ConfigWidget::reader = nullptr;
}

PlayerFixture::~PlayerFixture()
{
    delete ConfigWidget::reader;
    ConfigWidget::reader = nullptr;
}

bool PlayerFixture::installStandIn()
{
    QFile standIn(QStringLiteral(DEVSIM_SOURCE_DIR "/mplayer"));
    return standIn.open(QIODevice::ReadOnly) &&
           m_root.writeFile("/usr/bin/mplayer", standIn.readAll()) &&
           QFile::setPermissions(m_root.path("/usr/bin/mplayer"),
                                 QFile::ReadOwner | QFile::ExeOwner);
}

// the stand-in's place and rights, with the script in it
bool PlayerFixture::installScriptedPlayer()
{
    return installStandIn() &&
           m_root.writeFile("/usr/bin/mplayer",
                            "#!/bin/sh\n"
                            "echo $$ >> \"$RECORDER_ROOT/pids\"\n"
                            "echo \"$3\" >> \"$RECORDER_ROOT/played\"\n"
                            "case \"$3\" in\n"
                            "    *ends*) printf 'A:   1.0 (01.0) of 1.0 (01.0)\\n'; exit 0 ;;\n"
                            "    *hangs*) exec sleep 600 ;;\n"
                            "esac\n"
                            "while read -r cmd; do\n"
                            "    echo \"$cmd\" >> \"$RECORDER_ROOT/commands\"\n"
                            "    [ \"$cmd\" = quit ] && exit 0\n"
                            "done\n");
}
