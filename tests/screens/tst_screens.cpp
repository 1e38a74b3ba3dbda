// The pictures in docs/screens are what scripts/screens draws from the code as it is now, and the
// README shows each of them: a change that alters a screen brings its new picture along.
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString committed = QStringLiteral(SOURCE_DIR "/docs/screens");
const char refresh[] = "run scripts/screens and commit docs/screens with the change";

QStringList pictures(const QString &folder)
{
    return QDir(folder).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
}

QImage pixels(const QString &path)
{
    return QImage(path).convertToFormat(QImage::Format_RGB32);
}

} // namespace

class TestScreens : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(drawn.isValid());
        QProcess screens;
        screens.setProcessChannelMode(QProcess::MergedChannels);
        screens.start(QStringLiteral(SCREENS_BIN), {drawn.path()});
        QVERIFY(screens.waitForFinished(300000));
        QVERIFY2(screens.exitStatus() == QProcess::NormalExit && screens.exitCode() == 0,
                 screens.readAll().right(2000).constData());
        QFile readme(QStringLiteral(SOURCE_DIR "/README.md"));
        QVERIFY(readme.open(QIODevice::ReadOnly));
        readmeText = QString::fromUtf8(readme.readAll());
    }

    // Compared as decoded pixels: another zlib may pack the same picture into other bytes.
    void pictureCurrent_data()
    {
        QTest::addColumn<QString>("name");
        QStringList names = pictures(drawn.path()) + pictures(committed);
        names.removeDuplicates();
        names.sort();
        for (const QString &name : names)
            QTest::newRow(qPrintable(name)) << name;
    }
    void pictureCurrent()
    {
        QFETCH(QString, name);
        const QString there = "docs/screens/" + name;
        QVERIFY2(QFile::exists(committed + '/' + name),
                 qPrintable(there + " is missing: " + refresh));
        QVERIFY2(QFile::exists(drawn.filePath(name)),
                 qPrintable(there +
                            " is drawn by no screen any more: remove it (scripts/screens does)"));
        const QImage now = pixels(drawn.filePath(name));
        const QImage kept = pixels(committed + '/' + name);
        QVERIFY2(kept.size() == now.size(), qPrintable(there + " has another size: " + refresh));
        QPoint differs(-1, -1);
        for (int y = 0; y < now.height() && differs.x() < 0; ++y) {
            for (int x = 0; x < now.width() && differs.x() < 0; ++x) {
                if (now.pixel(x, y) != kept.pixel(x, y))
                    differs = QPoint(x, y);
            }
        }
        QVERIFY2(differs.x() < 0,
                 qPrintable(QStringLiteral("%1 differs from the screen at (%2, %3) "
                                           "of the picture: %4")
                                .arg(there)
                                .arg(differs.x())
                                .arg(differs.y())
                                .arg(refresh)));
        QVERIFY2(readmeText.contains("(" + there + ")"),
                 qPrintable(there + " is not shown in README.md"));
    }

private:
    QTemporaryDir drawn;
    QString readmeText;
};

QTEST_MAIN(TestScreens)
#include "tst_screens.moc"
