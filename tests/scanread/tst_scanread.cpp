// The scan-and-read part in process, against the real engines in the test's device root: the
// scanner stand-in, speech word reports, the scan text view (appending and its limit, the reading
// queue, the highlight timing, scanned images, bad ones included), recognition quality and the
// reader settings.

#include "scanlinerenderer.h"
#include "scanread/configreader.h"
#include "scanread/csoundthread.h"
#include "scanread/koscansdk.h"
#include "scanread/myedit.h"
#include "scanread/ocrpen.h"
#include "scanread/recchar.h"
#include "scanread/scanreadedit.h"
#include "scanread/ttsplayer.h"
#include "storage/languagemanager.h"
#include "storage/threadhandoff.h"
#include "storage/volume.h"
#include "testdeviceroot.h"
#include "widgets/messagedialog.h"
#include "widgets/sandglass.h"

#include <QPainter>
#include <QtTest>

#include <numeric>

namespace {

const QString sentence = QStringLiteral("The quick brown fox jumps over the lazy dog.");
QStringList messages;

// the view with its speech link recording what it was given
class RecordingEdit : public MyEdit
{
public:
    RecordingEdit() { Init(); }
    using MyEdit::nextHighlight;
    void Sound(QString &text) override { spoken << text; }
    void hignFun() override
    {
        ++due;
        MyEdit::hignFun();
    }
    QStringList spoken;
    int due = 0;
};

// what an engine handed over from its own thread: the calls are read once count says so
struct Received
{
    // a word report: position, length, PCM position, and the samples in the engine's file then
    QVector<QVector<int>> calls;
    QString wav;
    QList<QImage> images;
    std::atomic<int> count{0};
};

void onWord(void *context, int position, int length, int pcm)
{
    auto *got = static_cast<Received *>(context);
    got->calls.append({position, length, pcm, int((QFileInfo(got->wav).size() - 44) / 2)});
    ++got->count;
}

int onImage(void *context, uchar *pixels, int width, int height, uchar, char *)
{
    auto *got = static_cast<Received *>(context);
    got->images << QImage(pixels, width, height, width, QImage::Format_Grayscale8).copy();
    ++got->count;
    return 0;
}

// the engines take rows without padding
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
    std::generate_n(image.bits(), image.sizeInBytes(), [] { return uchar(std::rand()); });
    return image;
}

// what the recognition engine reads in the picture
QString recognized(const QImage &image)
{
    QString text;
    OCRPen::ocr->recognize(reinterpret_cast<uchar *>(pixelsOf(image).data()), image.width(),
                           image.height(), 0, 0, text);
    return text;
}

int editDistance(const QString &a, const QString &b)
{
    QVector<int> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = std::exchange(row[0], i);
        for (int j = 1; j <= b.size(); ++j)
            diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1,
                                                       diagonal + int(a[i - 1] != b[j - 1])}));
    }
    return row.last();
}

// Chinese has no spaces between words, which the engine may put in; a typographic apostrophe is
// the same letter
QString normalized(QString text, bool han)
{
    text.replace(QChar(0x2019), QLatin1Char('\''));
    return han ? text.remove(QLatin1Char(' ')) : text.simplified();
}

} // namespace

class TestScanRead : public QObject
{
    Q_OBJECT

    TestDeviceRoot m_root;
    Received m_got;

    // a new reader on this settings file, its log kept
    void configure(const QByteArray &ini)
    {
        ConfigReader::quitFun();
        ConfigReader::reader = nullptr;
        QVERIFY(m_root.writeFile("/apps/config/config.ini", ini));
        messages.clear();
        const QtMessageHandler previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &text) { messages << text; });
        ConfigReader::reader = new ConfigReader;
        qInstallMessageHandler(previous);
    }

    // the view's recognition of a scanned picture, to its end
    static void scan(MyEdit &edit, const QImage &image, QSize size = {})
    {
        size = size.isValid() ? size : image.size();
        QCOMPARE(edit.Recognize(createImg(reinterpret_cast<const uchar *>(pixelsOf(image).data()),
                                          size.width(), size.height(), 0)),
                 0);
        // the busy indicator stands while the image is recognised
        QCOMPARE(edit.findChild<SandGlass *>()->geometry(), QRect(100, 10, 33, 33));
        QTRY_VERIFY_WITH_TIMEOUT(!edit.findChild<SandGlass *>(), 60000);
    }

    // the length in samples of the last play's audio: the WAV file the host engine writes when
    // there is no sound card
    int played() const { return (m_root.readFile("/apps/data/tts/speech.wav").size() - 44) / 2; }

private slots:
    void initTestCase()
    {
        QVERIFY(m_root.installEngines() && m_root.installLanguageTable());
        QCOMPARE(languageInit(), 0);
        // English, the Latin recognition engine
        configure("[InfoListen]\nLan=1\n");
    }

    void cleanupTestCase()
    {
        TTSPlayer::quitFun();
        OCRPen::quitFun();
        ConfigReader::quitFun();
    }

    // a file that is no picture is taken away unseen; pictures reach the callback once each, every
    // pixel in place, and the watching thread ends with the scanner
    void scannerDeliversEachPictureOnce()
    {
        const uint threadsBefore = QDir("/proc/self/task").count();
        QCOMPARE(KOSCAN_IAP_Initialize(1, 0, 0, 0), 0);
        QCOMPARE(KOSCAN_IAP_SetReceivePanoImageCallBackFunc(&m_got, onImage), 0);
        const QString folder = m_root.path("/mnt/mmc/.scanner/");
        const QImage image = noise(301, 47);
        // written aside, then renamed, as scanline does
        QVERIFY(m_root.writeFile("/mnt/mmc/.scanner/.notes.txt", "not a picture"));
        QVERIFY(image.save(folder + ".line.png") && image.save(folder + ".line.pgm"));
        for (const QString name : {"notes.txt", "line.png", "line.pgm"})
            QVERIFY(QFile::rename(folder + '.' + name, folder + name));
        QTRY_COMPARE(m_got.count, 2);
        // consumed: the files are gone and nothing more arrives
        QTRY_VERIFY(QDir(folder).isEmpty());
        QCOMPARE(KOSCAN_IAP_Uninitialize(), 0);
        QCOMPARE(QDir("/proc/self/task").count(), threadsBefore);
        QCOMPARE(m_got.images, QList<QImage>({image, image}));
    }

    // each word is told one word ahead of the audio, with the sample it starts at: as the word
    // before it starts to be heard (the first as the audio starts); stops: stopsAreNeverLost
    void speechReportsEachWord()
    {
        QCOMPARE(KOSCAN_TTS_SetProgressCallBackFunc(&m_got, onWord), 0);
        m_got.wav = m_root.path("/apps/data/tts/speech.wav");
        TTSPlayer::player->setSpeed(90);
        TTSPlayer::player->play(sentence);
        const int fast = played();
        m_got.calls.clear();
        TTSPlayer::player->setSpeed(50);
        QCOMPARE(TTSPlayer::player->play(sentence), 0);
        QStringList words;
        int before = 0;
        for (const QVector<int> &report : qAsConst(m_got.calls)) {
            words << sentence.mid(report[0], report[1]);
            QVERIFY2(report[2] >= before && report[3] > before &&
                         report[3] <= before + KOSCAN_TTS_SAMPLE_RATE / 50,
                     qPrintable(QString("%1 %2 %3").arg(before).arg(report[2]).arg(report[3])));
            before = report[2];
        }
        QCOMPARE(words, QString(sentence).remove('.').split(' '));
        // the last word is heard after its report; faster is shorter
        QVERIFY(played() - before > KOSCAN_TTS_SAMPLE_RATE / 10);
        QVERIFY(fast < played() * 0.8);
    }

    // reading aloud: OK reads the selected word, in its place in the view; each reported word
    // lights up when its audio comes (16-bit samples at 22050 a second: 44100 bytes a second), a
    // word of 100 ms reported 150 ms after one of 400 ms not before it
    void reading()
    {
        RecordingEdit edit, other;
        edit.setPlainText("Hi, pen-reader!\n中文 end");
        QStringList words;
        for (int i = 0; edit.selectWordNumber(i); ++i)
            words << edit.textCursor().selectedText();
        QCOMPARE(words, QStringList({"Hi", "pen", "reader", "中", "文", "end"}));
        for (auto key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Right, Qt::Key_Return})
            QTest::keyClick(&edit, key);
        QTRY_VERIFY(!edit.isReading());
        QCOMPARE(edit.spoken, QStringList{"文"});
        QCOMPARE(edit.readStart(), 17);
        // texts queued together are spoken newest first
        CSoundThread queue(&other);
        for (const char *text : {"A", "B", "C"})
            queue.setContent(text);
        queue.start();
        QVERIFY(queue.wait(10000));
        takeOverThread(&queue); // Qt's wait orders it, out of ThreadSanitizer's sight
        QCOMPARE(other.spoken, QStringList({"C", "B", "A"}));
        // while translating, a report is neither queued nor scheduled
        other.setTTSFlagInTrans(true);
        QCOMPARE(other.highlightAt(0, 4, 0, {1000, 0}), -1);
        QVERIFY(!other.nextHighlight());
        other.setTTSFlagInTrans(false);
        QCOMPARE(edit.highlightAt(0, 4, 10000, {1000, 0}), 453);
        QCOMPARE(other.highlightAt(0, 4, 8820, {1000, 0}), 400);
        QCOMPARE(other.highlightAt(5, 4, 11025, {1000, 150000}), 350);
        // each word is taken off the queue when its time comes
        QTRY_VERIFY(!edit.nextHighlight() && !other.nextHighlight());
        QCOMPARE(other.due, 2);
    }

    // A stop made at any moment around the start of a reading ends it (the text takes half a
    // minute), also one pressed with Escape; a reading asked for while another runs replaces it
    // at once, without the view waiting for the first to end.
    void stopsAreNeverLost()
    {
        ScanReadEdit edit;
        edit.Init();
        const QString longer = (sentence + ' ').repeated(8);
        edit.setPlainText(longer + "Hi there.");
        QSignalSpy left(&edit, &MyEdit::signalEsc);
        for (int after : {-1, 0, 1, 2, 3, 5, 8, 13, 21, 34, 55}) {
            edit.readText(longer, 0);
            const auto stop = [&] {
                if (after % 2)
                    QTest::keyClick(&edit, Qt::Key_Escape);
                else
                    edit.StopTTS();
            };
            if (after < 0)
                stop();
            else
                QTimer::singleShot(after, &edit, stop);
            QTRY_VERIFY2_WITH_TIMEOUT(!edit.isReading(), qPrintable(QString::number(after)), 8000);
        }
        QCOMPARE(left.count(), 0);
        QList<int> lit;
        connect(&edit, &QTextEdit::selectionChanged, &edit, [&] {
            if (edit.isReading())
                lit << edit.textCursor().selectionStart();
        });
        edit.readText(longer, 0);
        edit.readText("Hi there.", longer.size());
        QTRY_VERIFY_WITH_TIMEOUT(!edit.isReading(), 8000);
        QCOMPARE(lit, QList<int>({longer.size(), longer.size() + 3}));
    }

    // a line scanned while another is recognised is dropped: tst_scanreadrun's third line
    void append_data()
    {
        // a null one: a line is scanned first, which a scan that finds nothing must not bring back
        QTest::addColumn<QString>("before");
        // appended as text; a null one appends nothing, the image is scanned instead
        QTest::addColumn<QString>("text");
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QSize>("size");
        // a null text: refused with a notice
        QTest::addColumn<QString>("inserted");
        const QString kept = QStringLiteral("kept 😀 text.");
        const char *rows[][3] = {
            {"full-stop", "Hello.", "Hello. "},       {"digit", "page 12", "page 12 "},
            {"ascii-letter", "Zebra", "Zebra "},      {"ascii-question-mark", "why?", "why?"},
            {"full-width-comma", "你好，", "你好，"}, {"outside-gbk", "ok 😀", "ok 😀"}};
        for (const auto &row : rows)
            QTest::newRow(row[0]) << kept << QString(row[1]) << QImage() << QSize() << row[2];
        // 100 lines of 99 characters and a blank: 10,000 characters, 10,099 saved with "\r\n"
        // line ends
        const QString lines = QString(99, 'x').append('\n').repeated(100).chopped(1);
        const QString fits(32768 - 10099, 'y');
        QTest::newRow("exactly-64-KiB") << lines << fits << QImage() << QSize() << fits + ' ';
        QTest::newRow("one-over-counting-line-ends-twice")
            << lines << fits + 'y' << QImage() << QSize() << QString();
        QTest::newRow("zero-width") << kept << QString() << QImage() << QSize(0, 8) << "";
        QTest::newRow("zero-height") << kept << QString() << QImage() << QSize(8, 0) << "";
        QTest::newRow("noise-after-a-line")
            << QString() << QString() << noise(400, 64) << QSize(400, 64) << "";
        // a short line at the left of a long light strip
        QImage wide(20000, 64, QImage::Format_Grayscale8);
        wide.fill(200);
        QPainter(&wide).drawImage(0, 0, renderScanLine("Reading pen", ScanLineLook()));
        QTest::newRow("line-20000-pixels-wide-after-a-line")
            << QString() << QString() << wide << wide.size() << "Reading pen ";
    }

    // appended, selected and read at once, as the read-control setting asks; nothing recognised:
    // nothing appended, reported or read, the selection as it was
    void append()
    {
        QFETCH(QString, before);
        QFETCH(QString, text);
        QFETCH(QImage, image);
        QFETCH(QSize, size);
        QFETCH(QString, inserted);
        RecordingEdit edit;
        if (before.isNull())
            scan(edit, renderScanLine("Kept line", ScanLineLook()));
        else
            edit.appendScanText(before);
        const QString kept = edit.toPlainText();
        QVERIFY(!kept.isEmpty());
        edit.setAutoRead(true);
        QSignalSpy finished(&edit, &MyEdit::signalRecFinished);
        // the notice is drawn inside the view, which must be on the screen; look at it, let it go
        edit.show();
        bool noticed = false;
        QTimer::singleShot(0, &edit, [&] {
            if (auto *dialog = edit.findChild<MessageDialog *>())
                noticed = true, dialog->accept();
        });
        if (text.isNull()) {
            // a scan without a buffer is refused before anything is queued
            QCOMPARE(RecChar::ReceivePanoImage(nullptr, nullptr, size.width(), size.height(), 0,
                                               nullptr),
                     -1);
            scan(edit, image, size);
        }
        edit.appendScanText(text);
        QCOMPARE(noticed, inserted.isNull());
        QCOMPARE(edit.toPlainText(), kept + inserted);
        QCOMPARE(edit.textCursor().selectionStart(), inserted.isEmpty() ? 0 : kept.size());
        QCOMPARE(finished.count(), int(text.isNull() && !inserted.isEmpty()));
        QTRY_VERIFY(!edit.isReading());
        QCOMPARE(edit.spoken.join(QString()), inserted);
    }

    // Paper without print gives no text in any language, and the caller's text is left as it
    // was; a line of one letter is still read. These and the two below set the engines'
    // languages: the cases above want English, so they come last.
    void blankPaperReadsAsNothing()
    {
        const QImage paper = renderScanLine(QString(40, ' '), ScanLineLook());
        // a book's serif letters: a lone sans-serif capital I is a bar to any reader
        ScanLineLook book;
        book.family = "DejaVu Serif";
        QImage speck = paper;
        QPainter(&speck).fillRect(200, 30, 3, 3, Qt::black);
        QImage grey(8, 8, QImage::Format_Grayscale8), dot(1, 1, QImage::Format_Grayscale8);
        grey.fill(128);
        dot.fill(0);
        const QList<std::pair<QImage, QString>> lines{{dot, ""},
                                                      {grey, ""},
                                                      {renderScanLine("", ScanLineLook()), ""},
                                                      {paper, ""},
                                                      {speck, ""},
                                                      {renderScanLine("I", book), "I"},
                                                      {renderScanLine("a", book), "a"},
                                                      {renderScanLine("5", book), "5"}};
        QVERIFY(paper.width() >= 400 && lines[2].first.size() == QSize(64, 64));
        for (int engine : {2, 1, 3, 4}) {
            int languages[] = {engine, -1};
            QCOMPARE(OCRPen::ocr->setLan(languages), 0);
            for (const auto &line : lines) {
                if (engine != 2 && !line.second.isEmpty())
                    continue;
                QString text = "kept";
                const int status =
                    OCRPen::ocr->recognize(reinterpret_cast<uchar *>(pixelsOf(line.first).data()),
                                           line.first.width(), line.first.height(), 0, 0, text);
                QCOMPARE(std::pair(status, text),
                         std::pair(line.second.isEmpty() ? -1 : 0,
                                   line.second.isEmpty() ? QString("kept") : line.second));
            }
        }
    }

    void characterErrorRate_data()
    {
        QTest::addColumn<int>("engine");
        for (auto lines : {"en", "de", "fr", "it", "es"})
            QTest::newRow(lines) << 2;
        QTest::newRow("ru") << 3;
        QTest::newRow("zh_CN") << 1;
        QTest::newRow("zh_TW") << 4;
    }

    // lines drawn as the pen's camera sees them: scanline's font and size, a slight skew, noise;
    // a blank one reads as nothing
    void characterErrorRate()
    {
        QFETCH(int, engine);
        QFile file(TESTDATA_DIR "/scanlines/" + QString(QTest::currentDataTag()) + ".txt");
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const QStringList texts = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
        int languages[] = {engine, -1};
        QCOMPARE(OCRPen::ocr->setLan(languages), 0);
        QStringList read;
        for (int i = 0; i < texts.size(); ++i)
            read << recognized(
                renderScanLine(texts.at(i), {{}, 30, 64, ((i % 5) - 2) * 0.5, 10, quint32(i + 1)}));
        const bool han = engine == 1 || engine == 4;
        const QString expected = normalized(texts.join(' '), han);
        const int errors = editDistance(expected, normalized(read.join(' '), han));
        QVERIFY2(errors * 100 <= expected.size() * (han ? 3 : 1), qPrintable(read.join('\n')));
    }

    void settingsReachEnginesInOrder_data()
    {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<QList<int>>("applied");
        // language, scan direction, read control, then the engines' own log: OCR engine, speech
        // language, speeds, volumes (the last one the speaker volume of the sound record)
        const int speaker = int(getSpeakerVolume());
        QTest::newRow("russian-loud-fast-read-at-once")
            << QByteArray("[InfoListen]\nLan=5\nScanDirect=1\nVolum=5\nReadSpeed=2\n"
                          "ReadControl=1\n[SystemSet]\nSpeed=65\n")
            << QList<int>{5, 1, 1, 3, 151, 65, 65, 100, speaker};
        QTest::newRow("english-slow") << QByteArray("[InfoListen]\nLan=1\nReadSpeed=0\n")
                                      << QList<int>{1, 0, 0, 2, 101, 30, 1, 60, speaker};
        // language 0 is the table's first shown row, simplified Chinese (1); a speed that is no
        // step goes to the engine as it stands
        QTest::newRow("no-language-unlisted-speed")
            << QByteArray("[InfoListen]\nReadSpeed=7\nVolum=2\n")
            << QList<int>{0, 0, 0, 1, 1, 7, 1, 40, speaker};
        QTest::newRow("not-numbers-give-defaults")
            << QByteArray("[InfoListen]\nLan=abc\nScanDirect=x\nVolum=loud\nReadSpeed=fast\n"
                          "ReadControl=yes\n[SystemSet]\nSpeed=quick\n")
            << QList<int>{0, 0, 0, 1, 1, 50, 1, 60, speaker};
    }

    void settingsReachEnginesInOrder()
    {
        QFETCH(QByteArray, ini);
        QFETCH(QList<int>, applied);
        configure(ini);
        QList<int> got{ConfigReader::reader->getLanInfo(),
                       ConfigReader::reader->getScanDirectInfo(),
                       ConfigReader::reader->getReadControlInfo()};
        for (const QString prefix : {"aLanguages=", "TTSPlayer::setLan", "in TTSPlayer::setSpeed",
                                     "##########in TTSPlayer::setVolume---"})
            for (const QString &message : qAsConst(messages))
                if (message.startsWith(prefix))
                    got << message.mid(prefix.size()).trimmed().toInt();
        QCOMPARE(got, applied);
        // the language is written back even when it did not change; the speech engine's
        // refusal of a language is not passed on
        ConfigReader::quitFun();
        ConfigReader::reader = nullptr;
        const QSettings written(m_root.path("/apps/config/config.ini"), QSettings::IniFormat);
        QCOMPARE(written.value("InfoListen/Lan", -1).toInt(), applied.first());
        QCOMPARE(std::pair(KOSCAN_TTS_SetLang(999), TTSPlayer::player->setLan(999)),
                 std::pair(-1, 0));
    }
};

QTEST_MAIN(TestScanRead)
#include "tst_scanread.moc"
