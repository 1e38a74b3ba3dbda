// The scan text view in process: appending and its limit, the reading queue, the highlight
// timing, and scanned images through the real recognition engine, bad ones included.

#include "scanlinerenderer.h"
#include "scanread/configreader.h"
#include "scanread/csoundthread.h"
#include "scanread/myedit.h"
#include "scanread/ocrpen.h"
#include "scanread/recchar.h"
#include "scanread/ttsplayer.h"
#include "shelllistener.h"
#include "testdeviceroot.h"
#include "widgets/messagedialog.h"
#include "widgets/sandglass.h"

#include <QPainter>
#include <QtTest>

namespace {

// the view with its speech link recording what it was given
class RecordingEdit : public MyEdit
{
public:
    using MyEdit::nextHighlight;
    void Sound(QString &text) override { spoken << text; }
    QStringList spoken;
};

QByteArray pixelsOf(const QImage &image)
{
    QByteArray pixels;
    for (int y = 0; y < image.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
    return pixels;
}

QImage noise(int width, int height)
{
    QImage image(width, height, QImage::Format_Grayscale8);
    quint32 state = 7;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = uchar((state = state * 1103515245 + 12345) >> 24);
    return image;
}

// a short line far to the left of a light strip 20,000 pixels long
QImage wideLine()
{
    const QImage line = renderScanLine(QStringLiteral("wide"), ScanLineLook());
    QImage image(20000, line.height(), QImage::Format_Grayscale8);
    image.fill(200);
    QPainter(&image).drawImage(0, 0, line);
    return image;
}

} // namespace

class TestMyEdit : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void appendAtLimit_data();
    void appendAtLimit();
    void blankAfterLine_data();
    void blankAfterLine();
    void readsNewestFirst();
    void highlightTiming_data();
    void highlightTiming();
    void wordNavigation();
    void scannedLineIsAppended();
    void secondImageDuringRecognitionIsDropped();
    void badInputKeepsText_data();
    void badInputKeepsText();

private:
    TestDeviceRoot m_root;
};

void TestMyEdit::initTestCase()
{
    QVERIFY(m_root.installEngines());
    QVERIFY(m_root.installLanguageTable());
    // English: the Latin recognition engine
    QVERIFY(m_root.writeFile(QStringLiteral("/apps/config/config.ini"), "[InfoListen]\nLan=1\n"));
    ConfigReader::reader = new ConfigReader;
}

void TestMyEdit::cleanupTestCase()
{
    TTSPlayer::quitFun();
    OCRPen::quitFun();
    ConfigReader::quitFun();
}

void TestMyEdit::appendAtLimit_data()
{
    QTest::addColumn<int>("extra");
    QTest::addColumn<bool>("accepted");
    // 100 lines of 99 characters: 9,999 characters, 10,098 saved with "\r\n" line ends
    QTest::newRow("exactly-64-KiB") << 0 << true;
    QTest::newRow("one-over-counting-line-ends-twice") << 1 << false;
}

void TestMyEdit::appendAtLimit()
{
    QFETCH(int, extra);
    QFETCH(bool, accepted);
    RecordingEdit edit;
    edit.Init();
    edit.setPlainText(
        QString(99, QLatin1Char('x')).append(QLatin1Char('\n')).repeated(100).chopped(1));
    const QString before = edit.toPlainText();
    QString text(32768 - 10098 + extra, QLatin1Char('y'));
    QString notice;
    // the notice is modal: look at it and let it go
    // the notice is drawn inside the view, which must be on the screen
    edit.show();
    QTimer::singleShot(0, &edit, [&edit, &notice] {
        if (auto *dialog = edit.findChild<MessageDialog *>()) {
            notice = QString::fromLatin1(dialog->metaObject()->className());
            dialog->accept();
        }
    });
    edit.appendText(text);
    QCOMPARE(edit.isTooBig(), !accepted);
    QCOMPARE(notice.isEmpty(), accepted);
    QCOMPARE(edit.toPlainText().size(), before.size() + (accepted ? text.size() : 0));
    QCOMPARE(edit.hasText(), accepted ? 1 : 0);
}

void TestMyEdit::blankAfterLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("inserted");
    QTest::newRow("full-stop") << "Hello."
                               << "Hello. ";
    QTest::newRow("comma") << "one,"
                           << "one, ";
    QTest::newRow("digit") << "page 12"
                           << "page 12 ";
    QTest::newRow("ascii-letter") << "Zebra"
                                  << "Zebra ";
    QTest::newRow("ascii-question-mark") << "why?"
                                         << "why?";
    QTest::newRow("full-width-comma") << QString::fromUtf8("你好，") << QString::fromUtf8("你好，");
    QTest::newRow("full-width-stop") << QString::fromUtf8("好。") << QString::fromUtf8("好。");
    QTest::newRow("full-width-digit") << QString::fromUtf8("第１") << QString::fromUtf8("第１");
    QTest::newRow("outside-gbk") << QString::fromUtf8("ok 😀") << QString::fromUtf8("ok 😀");
}

void TestMyEdit::blankAfterLine()
{
    QFETCH(QString, text);
    QFETCH(QString, inserted);
    RecordingEdit edit;
    edit.Init();
    edit.appendScanText(QStringLiteral("first."));
    edit.appendScanText(text);
    QCOMPARE(edit.toPlainText(), QStringLiteral("first. ") + inserted);
    // the new text, blank included, is selected
    QCOMPARE(edit.textCursor().selectionStart(), 7);
    QCOMPARE(edit.textCursor().selectedText(), inserted);
}

void TestMyEdit::readsNewestFirst()
{
    ShellListener shell;
    RecordingEdit edit;
    edit.Init();
    CSoundThread thread(&edit);
    QSignalSpy finished(&thread, &QThread::finished);
    connect(&thread, &QThread::finished, &edit, &MyEdit::FinishSound);
    for (const char *text : {"A", "B", "C"})
        thread.setContent(QLatin1String(text));
    thread.start();
    QVERIFY(finished.wait());
    QCOMPARE(edit.spoken, QStringList({"C", "B", "A"}));
    QTRY_COMPARE(shell.heard(), QStringList{"execute(QString) soundno"});
    QCOMPARE(edit.soundFinished(), 1);
}

void TestMyEdit::highlightTiming_data()
{
    QTest::addColumn<QList<int>>("pcmPositions");
    QTest::addColumn<QList<int>>("reportTimesMs");
    QTest::addColumn<bool>("inTranslation");
    QTest::addColumn<int>("lastDelay");
    // 16-bit samples at 22050 a second: 44100 bytes a second
    QTest::newRow("10000-samples") << QList<int>{10000} << QList<int>{0} << false << 453;
    QTest::newRow("two-reports-10000-apart")
        << QList<int>{5000, 15000} << QList<int>{0, 300} << false << 453;
    // 400 ms, then 100 ms reported 150 ms later: not before the first word
    QTest::newRow("shorter-after-longer")
        << QList<int>{8820, 11025} << QList<int>{0, 150} << false << 350;
    QTest::newRow("in-translation") << QList<int>{10000} << QList<int>{0} << true << -1;
}

void TestMyEdit::highlightTiming()
{
    QFETCH(QList<int>, pcmPositions);
    QFETCH(QList<int>, reportTimesMs);
    QFETCH(bool, inTranslation);
    QFETCH(int, lastDelay);
    RecordingEdit edit;
    edit.Init();
    edit.setTTSFlagInTrans(inTranslation);
    int delay = 0;
    for (int i = 0; i < pcmPositions.size(); ++i) {
        const timeval at{1000 + reportTimesMs.at(i) / 1000, (reportTimesMs.at(i) % 1000) * 1000};
        delay = edit.highlightAt(i * 5, 4, pcmPositions.at(i), at);
    }
    QCOMPARE(delay, lastDelay);
    QCOMPARE(edit.nextHighlight() != nullptr, !inTranslation);
    // each word is taken off the queue when its time comes
    QTRY_VERIFY(!edit.nextHighlight());
}

void TestMyEdit::wordNavigation()
{
    RecordingEdit edit;
    edit.Init();
    edit.setPlainText(QString::fromUtf8("Hi, pen-reader!\n中文 end"));
    QStringList words;
    for (int i = 0; edit.selectWordNumber(i); ++i)
        words << edit.textCursor().selectedText();
    QCOMPARE(words, QStringList({"Hi", "pen", "reader", QString::fromUtf8("中"),
                                 QString::fromUtf8("文"), "end"}));
    QTest::keyClick(&edit, Qt::Key_Left);
    QTest::keyClick(&edit, Qt::Key_Left);
    QCOMPARE(edit.textCursor().selectedText(), QString::fromUtf8("中"));
    QTest::keyClick(&edit, Qt::Key_Right);
    QCOMPARE(edit.textCursor().selectedText(), QString::fromUtf8("文"));
    // OK reads the selected word, in its place in the view
    QTest::keyClick(&edit, Qt::Key_Return);
    QTRY_VERIFY(!edit.isReading());
    QCOMPARE(edit.spoken, QStringList{QString::fromUtf8("文")});
    QCOMPARE(edit.readStart(), 17);
    QSignalSpy esc(&edit, &MyEdit::signalEsc);
    QTest::keyClick(&edit, Qt::Key_Escape);
    QCOMPARE(esc.count(), 1);
}

void TestMyEdit::scannedLineIsAppended()
{
    ShellListener shell;
    RecordingEdit edit;
    edit.Init();
    edit.setAutoRead(true);
    QSignalSpy finished(&edit, &MyEdit::signalRecFinished);
    QByteArray pixels = pixelsOf(renderScanLine(QStringLiteral("Reading pen"), ScanLineLook()));
    QCOMPARE(RecChar::ReceivePanoImage(nullptr, reinterpret_cast<uchar *>(pixels.data()),
                                       pixels.size() / 64, 64, 0, nullptr),
             0);
    // the busy indicator stands while the line is recognised
    QTRY_VERIFY(edit.findChild<SandGlass *>());
    QCOMPARE(edit.findChild<SandGlass *>()->geometry(), QRect(100, 10, 33, 33));
    QVERIFY(finished.wait(60000));
    QVERIFY(!edit.findChild<SandGlass *>());
    QCOMPARE(finished.at(0).at(0).toString().simplified(), QStringLiteral("Reading pen"));
    QCOMPARE(edit.textCursor().selectedText(), edit.toPlainText());
    QVERIFY(edit.toPlainText().endsWith(QLatin1String("pen ")));
    // read at once, as the read-control setting asks
    QTRY_VERIFY(!edit.isReading());
    QCOMPARE(edit.spoken, QStringList{edit.toPlainText()});
    QCOMPARE(shell.heard().value(0), QStringLiteral("execute(QString) trigger"));
}

void TestMyEdit::secondImageDuringRecognitionIsDropped()
{
    RecordingEdit edit;
    edit.Init();
    QSignalSpy finished(&edit, &MyEdit::signalRecFinished);
    const QImage first = renderScanLine(QStringLiteral("first"), ScanLineLook());
    QByteArray pixels = pixelsOf(first);
    const auto image = [&] {
        return createImg(reinterpret_cast<uchar *>(pixels.data()), first.width(), 64, 0);
    };
    QCOMPARE(edit.Recognize(image()), 0);
    QCOMPARE(edit.Recognize(image()), -1);
    QVERIFY(finished.wait(60000));
    QCOMPARE(edit.toPlainText(), QStringLiteral("first "));
    QCOMPARE(finished.count(), 1);
}

void TestMyEdit::badInputKeepsText_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("blank");
    QTest::newRow("zero-width") << noise(8, 8) << 0 << 8 << true;
    QTest::newRow("zero-height") << noise(8, 8) << 8 << 0 << true;
    QTest::newRow("noise") << noise(400, 64) << 400 << 64 << true;
    QTest::newRow("20000-pixels-wide") << wideLine() << 20000 << 64 << false;
}

void TestMyEdit::badInputKeepsText()
{
    QFETCH(QImage, image);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(bool, blank);
    RecordingEdit edit;
    edit.Init();
    edit.appendScanText(QString::fromUtf8("kept 😀 text."));
    const QString before = edit.toPlainText();
    QSignalSpy finished(&edit, &MyEdit::signalRecFinished);
    // no buffer at all is refused at once
    QCOMPARE(RecChar::ReceivePanoImage(nullptr, nullptr, width, height, 0, nullptr), -1);
    QByteArray pixels = pixelsOf(image);
    QCOMPARE(edit.Recognize(createImg(reinterpret_cast<uchar *>(pixels.data()), width, height, 0)),
             0);
    QVERIFY(edit.findChild<SandGlass *>());
    QTRY_VERIFY_WITH_TIMEOUT(!edit.findChild<SandGlass *>(), 60000);
    QVERIFY(edit.toPlainText().startsWith(before));
    // nothing recognised: nothing appended, nothing reported
    if (blank) {
        QCOMPARE(finished.count(), 0);
        QCOMPARE(edit.toPlainText(), before);
    }
}

QTEST_MAIN(TestMyEdit)
#include "tst_myedit.moc"
