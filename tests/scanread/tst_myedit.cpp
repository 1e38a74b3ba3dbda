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
    RecordingEdit() { Init(); }
    using MyEdit::nextHighlight;
    void Sound(QString &text) override { spoken << text; }
    QStringList spoken;
};

// a scanned line's record with the image's pixels, rows without padding
_stImg *imageOf(const QImage &image, int width, int height)
{
    QByteArray pixels;
    for (int y = 0; y < image.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
    return createImg(reinterpret_cast<const uchar *>(pixels.constData()), width, height, 0);
}

// widths that are a multiple of 4 have no row padding
QImage noise(int width, int height)
{
    QImage image(width, height, QImage::Format_Grayscale8);
    std::generate_n(image.bits(), image.sizeInBytes(), [] { return uchar(std::rand()); });
    return image;
}

} // namespace

class TestMyEdit : public QObject
{
    Q_OBJECT

    TestDeviceRoot m_root;

private slots:
    void initTestCase()
    {
        QVERIFY(m_root.installEngines());
        QVERIFY(m_root.installLanguageTable());
        // English: the Latin recognition engine
        QVERIFY(m_root.writeFile("/apps/config/config.ini", "[InfoListen]\nLan=1\n"));
        ConfigReader::reader = new ConfigReader;
    }

    void cleanupTestCase()
    {
        TTSPlayer::quitFun();
        OCRPen::quitFun();
        ConfigReader::quitFun();
    }

    void appendAtLimit_data()
    {
        QTest::addColumn<int>("extra");
        // 100 lines of 99 characters: 9,999 characters, 10,098 saved with "\r\n" line ends
        QTest::newRow("exactly-64-KiB") << 0;
        QTest::newRow("one-over-counting-line-ends-twice") << 1;
    }

    void appendAtLimit()
    {
        QFETCH(int, extra);
        RecordingEdit edit;
        edit.setPlainText(QString(99, 'x').append('\n').repeated(100).chopped(1));
        const int before = edit.toPlainText().size();
        QString text(32768 - 10098 + extra, 'y');
        // the notice is drawn inside the view, which must be on the screen; look at it, let it go
        edit.show();
        bool noticed = false;
        QTimer::singleShot(0, &edit, [&] {
            if (auto *dialog = edit.findChild<MessageDialog *>())
                noticed = true, dialog->accept();
        });
        edit.appendText(text);
        QCOMPARE(edit.isTooBig(), extra > 0);
        QCOMPARE(noticed, extra > 0);
        QCOMPARE(edit.toPlainText().size(), before + (extra ? 0 : text.size()));
    }

    void blankAfterLine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("inserted");
        const char *rows[][3] = {
            {"full-stop", "Hello.", "Hello. "},       {"digit", "page 12", "page 12 "},
            {"ascii-letter", "Zebra", "Zebra "},      {"ascii-question-mark", "why?", "why?"},
            {"full-width-comma", "你好，", "你好，"}, {"outside-gbk", "ok 😀", "ok 😀"}};
        for (const auto &row : rows)
            QTest::newRow(row[0]) << QString(row[1]) << QString(row[2]);
    }

    void blankAfterLine()
    {
        QFETCH(QString, text);
        QFETCH(QString, inserted);
        RecordingEdit edit;
        edit.appendScanText("first.");
        edit.appendScanText(text);
        QCOMPARE(edit.toPlainText(), "first. " + inserted);
        // the new text, blank included, is selected
        QCOMPARE(edit.textCursor().selectionStart(), 7);
        QCOMPARE(edit.textCursor().selectedText(), inserted);
    }

    void readsNewestFirst()
    {
        ShellListener shell;
        RecordingEdit edit;
        CSoundThread thread(&edit);
        connect(&thread, &QThread::finished, &edit, &MyEdit::FinishSound);
        for (const char *text : {"A", "B", "C"})
            thread.setContent(text);
        thread.start();
        QTRY_COMPARE(edit.soundFinished(), 1);
        QCOMPARE(edit.spoken, QStringList({"C", "B", "A"}));
        QTRY_COMPARE(shell.heard(), QStringList{"execute(QString) soundno"});
    }

    void highlightTiming_data()
    {
        QTest::addColumn<QList<int>>("pcmPositions");
        QTest::addColumn<QList<int>>("reportTimesMs");
        QTest::addColumn<bool>("inTranslation");
        QTest::addColumn<int>("lastDelay");
        // 16-bit samples at 22050 a second: 44100 bytes a second
        QTest::newRow("10000-samples") << QList<int>{10000} << QList<int>{0} << false << 453;
        // 400 ms, then 100 ms reported 150 ms later: not before the first word
        QTest::newRow("shorter-after-longer")
            << QList<int>{8820, 11025} << QList<int>{0, 150} << false << 350;
        QTest::newRow("in-translation") << QList<int>{10000} << QList<int>{0} << true << -1;
    }

    void highlightTiming()
    {
        QFETCH(QList<int>, pcmPositions);
        QFETCH(QList<int>, reportTimesMs);
        QFETCH(bool, inTranslation);
        QFETCH(int, lastDelay);
        RecordingEdit edit;
        edit.setTTSFlagInTrans(inTranslation);
        int delay = 0;
        for (int i = 0; i < pcmPositions.size(); ++i) {
            const int ms = reportTimesMs.at(i);
            delay = edit.highlightAt(i * 5, 4, pcmPositions.at(i),
                                     {1000 + ms / 1000, ms % 1000 * 1000});
        }
        QCOMPARE(delay, lastDelay);
        QCOMPARE(edit.nextHighlight() != nullptr, !inTranslation);
        // each word is taken off the queue when its time comes
        QTRY_VERIFY(!edit.nextHighlight());
    }

    void wordNavigation()
    {
        RecordingEdit edit;
        edit.setPlainText("Hi, pen-reader!\n中文 end");
        QStringList words;
        for (int i = 0; edit.selectWordNumber(i); ++i)
            words << edit.textCursor().selectedText();
        QCOMPARE(words, QStringList({"Hi", "pen", "reader", "中", "文", "end"}));
        for (auto key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Right, Qt::Key_Return})
            QTest::keyClick(&edit, key);
        // OK reads the selected word, in its place in the view
        QTRY_VERIFY(!edit.isReading());
        QCOMPARE(edit.spoken, QStringList{"文"});
        QCOMPARE(edit.readStart(), 17);
        QSignalSpy esc(&edit, &MyEdit::signalEsc);
        QTest::keyClick(&edit, Qt::Key_Escape);
        QCOMPARE(esc.count(), 1);
    }

    void scannedLineIsAppendedSecondDropped()
    {
        ShellListener shell;
        RecordingEdit edit;
        edit.setAutoRead(true);
        QSignalSpy finished(&edit, &MyEdit::signalRecFinished);
        const QImage line = renderScanLine("Reading pen", ScanLineLook());
        _stImg *scanned = imageOf(line, line.width(), 64);
        QCOMPARE(RecChar::ReceivePanoImage(nullptr, scanned->pixels, line.width(), 64, 0, nullptr),
                 0);
        freeImg(scanned);
        // the same line handed over at once is recognised; the one from the scanner, queued to
        // the GUI thread, comes during that recognition and is dropped
        QCOMPARE(edit.Recognize(imageOf(line, line.width(), 64)), 0);
        // the busy indicator stands while the line is recognised
        QCOMPARE(edit.findChild<SandGlass *>()->geometry(), QRect(100, 10, 33, 33));
        QVERIFY(finished.wait(60000));
        QVERIFY(!edit.findChild<SandGlass *>());
        QCOMPARE(edit.toPlainText(), "Reading pen ");
        QCOMPARE(edit.textCursor().selectedText(), edit.toPlainText());
        // read at once, as the read-control setting asks
        QTRY_VERIFY(!edit.isReading());
        QCOMPARE(edit.spoken, QStringList{edit.toPlainText()});
        QCOMPARE(finished.count(), 1);
        QCOMPARE(shell.heard().value(0), "execute(QString) trigger");
    }

    void badInputKeepsText_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("zero-width") << noise(8, 8) << 0 << 8;
        QTest::newRow("zero-height") << noise(8, 8) << 8 << 0;
        QTest::newRow("noise") << noise(400, 64) << 400 << 64;
        // a short line at the left of a light strip
        QImage wide(20000, 64, QImage::Format_Grayscale8);
        wide.fill(200);
        QPainter(&wide).drawImage(0, 0, renderScanLine("wide", ScanLineLook()));
        QTest::newRow("20000-pixels-wide") << wide << 20000 << 64;
    }

    void badInputKeepsText()
    {
        QFETCH(QImage, image);
        QFETCH(int, width);
        QFETCH(int, height);
        RecordingEdit edit;
        edit.appendScanText("kept 😀 text.");
        const QString before = edit.toPlainText();
        QSignalSpy finished(&edit, &MyEdit::signalRecFinished);
        // no buffer at all is refused at once
        QCOMPARE(RecChar::ReceivePanoImage(nullptr, nullptr, width, height, 0, nullptr), -1);
        QCOMPARE(edit.Recognize(imageOf(image, width, height)), 0);
        QTRY_VERIFY_WITH_TIMEOUT(!edit.findChild<SandGlass *>(), 60000);
        QVERIFY(edit.toPlainText().startsWith(before));
        // nothing recognised: nothing appended, nothing reported
        if (width < 20000) {
            QCOMPARE(finished.count(), 0);
            QCOMPARE(edit.toPlainText(), before);
        }
    }
};

QTEST_MAIN(TestMyEdit)
#include "tst_myedit.moc"
