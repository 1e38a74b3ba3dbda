#include "playerfixture.h"

#include "storage/configwidget.h"

#include <QDir>
#include <QFile>
#include <QProcess>

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

QString PlayerFixture::makeSound(const QString &name, double seconds)
{
    const QString path = m_root.path(QStringLiteral("/mnt/mmc/e_Music/") + name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    const int rc =
        QProcess::execute(QStringLiteral("sox"), {"-n", "-r", "22050", "-c", "1", path, "synth",
                                                  QString::number(seconds), "sine", "440"});
    return rc == 0 && QFileInfo::exists(path) ? path : QString();
}

bool PlayerFixture::installStandIn()
{
    const QString target = m_root.path(QStringLiteral("/usr/bin/mplayer"));
    QDir().mkpath(QFileInfo(target).absolutePath());
    return QFile::copy(QStringLiteral(DEVSIM_SOURCE_DIR "/mplayer"), target) &&
           QFile::setPermissions(target, QFile::ReadOwner | QFile::ExeOwner);
}

bool PlayerFixture::installScriptedPlayer()
{
    const QString mplayer = QStringLiteral("/usr/bin/mplayer");
    return m_root.writeFile(mplayer,
                            "#!/bin/sh\n"
                            "echo $$ >> \"$RECORDER_ROOT/pids\"\n"
                            "echo \"$3\" >> \"$RECORDER_ROOT/played\"\n"
                            "case \"$3\" in\n"
                            "    *ends*) printf 'A:   1.0 (01.0) of 1.0 (01.0)\\n'; exit 0 ;;\n"
                            "    *fails*) exit 1 ;;\n"
                            "esac\n"
                            "while read -r cmd; do\n"
                            "    echo \"$cmd\" >> \"$RECORDER_ROOT/commands\"\n"
                            "    [ \"$cmd\" = quit ] && exit 0\n"
                            "done\n") &&
           QFile::setPermissions(m_root.path(mplayer), QFile::ReadOwner | QFile::ExeOwner);
}

bool PlayerFixture::writeSettings(const QByteArray &lines)
{
    return m_root.writeFile(QStringLiteral("/apps/config/recconfig.ini"),
                            "[RecorderSet]\n" + lines + '\n');
}

QStringList PlayerFixture::lines(const QString &devicePath) const
{
    return QString::fromLocal8Bit(m_root.readFile(devicePath)).split('\n', Qt::SkipEmptyParts);
}
