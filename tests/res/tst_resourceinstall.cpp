#include "resfiles.h"

#include <QFileInfo>
#include <QImage>
#include <QMovie>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestResourceInstall : public QObject
{
    Q_OBJECT
private slots:
    void installLaysOutTheDevice();
    void picturesSuitTheScreen();
};

void TestResourceInstall::installLaysOutTheDevice()
{
    QTemporaryDir root;
    QVERIFY(root.isValid());
    QProcess install;
    install.start(QStringLiteral(CMAKE_BIN),
                  {"--install", QStringLiteral(BUILD_DIR), "--prefix", root.path()});
    QVERIFY(install.waitForFinished(120000));
    QVERIFY2(install.exitCode() == 0, install.readAllStandardError().constData());

    QStringList expected{"apps/bin/recorder", "apps/res/sandglass.gif", "apps/res/pause.bmp",
                         "apps/res/play.bmp", "apps/res/pics/settings2.png"};
    for (const QString &name : translationNames())
        expected << "apps/res/recorder_" + name + ".qm";
    for (const QString &file : qAsConst(expected))
        QVERIFY2(QFileInfo(root.filePath(file)).size() > 0, qPrintable(file));
    QVERIFY(QFileInfo(root.filePath("apps/bin/recorder")).isExecutable());
}

void TestResourceInstall::picturesSuitTheScreen()
{
    // the menu draws its background at (0, 10); its rows start at x 40 and must read on black
    const QImage background(QStringLiteral(RES_SOURCE_DIR "/pics/settings2.png"));
    QCOMPARE(background.width(), 256);
    QVERIFY(10 + background.height() <= 64);
    int decorated = 0;
    for (int y = 0; y < background.height(); ++y) {
        for (int x = 0; x < background.width(); ++x) {
            const bool lit = qGray(background.pixel(x, y)) > 128;
            QVERIFY2(!lit || x < 40, qPrintable(QStringLiteral("lit at %1,%2").arg(x).arg(y)));
            decorated += lit;
        }
    }
    QVERIFY(decorated > 0);

    QMovie sandglass(QStringLiteral(RES_SOURCE_DIR "/sandglass.gif"));
    QVERIFY(sandglass.isValid());
    QVERIFY(sandglass.frameCount() > 1);
    QVERIFY(sandglass.jumpToFrame(0));
    QCOMPARE(sandglass.currentImage().size(), QSize(33, 33));

    for (const char *sign : {RES_SOURCE_DIR "/play.bmp", RES_SOURCE_DIR "/pause.bmp"}) {
        const QImage image{QString::fromLatin1(sign)};
        QVERIFY2(!image.isNull(), sign);
        QVERIFY(image.width() <= 16 && image.height() <= 16);
    }
}

QTEST_MAIN(TestResourceInstall)
#include "tst_resourceinstall.moc"
