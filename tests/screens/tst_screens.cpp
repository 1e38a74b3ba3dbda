// The pictures in docs/screens are what scripts/screens draws from the code as it is now, and the
// README shows each of them: a change that alters a screen brings its new picture along.
#include <QtTest>

class TestScreens : public QObject
{
    Q_OBJECT

private slots:
    void picturesCurrent()
    {
        QTemporaryDir drawn;
        QCOMPARE(QProcess::execute(QStringLiteral(SCREENS_BIN), {drawn.path()}), 0);
        const QStringList names = QDir(drawn.path()).entryList({"*.png"});
        const QDir committed(QStringLiteral(SOURCE_DIR "/docs/screens"));
        // a picture missing, or one that no screen draws any more: run scripts/screens (it
        // removes those of screens that are gone) and commit docs/screens with the change
        QCOMPARE(names, committed.entryList({"*.png"}));
        QFile readme(QStringLiteral(SOURCE_DIR "/README.md"));
        const QByteArray readmeText = readme.open(QIODevice::ReadOnly) ? readme.readAll() : "";
        // compared as decoded pixels: another zlib may pack the same picture into other bytes
        const auto pixels = [](const QString &path) {
            return QImage(path).convertToFormat(QImage::Format_RGB32);
        };
        for (const QString &name : names) {
            const QString there = "docs/screens/" + name;
            QVERIFY2(pixels(drawn.filePath(name)) == pixels(committed.filePath(name)),
                     qPrintable(there + " differs from the screen: run scripts/screens and "
                                        "commit docs/screens with the change"));
            QVERIFY2(readmeText.contains("(" + there.toUtf8() + ")"),
                     qPrintable(there + " is not shown in README.md"));
        }
    }
};

QTEST_MAIN(TestScreens)
#include "tst_screens.moc"
