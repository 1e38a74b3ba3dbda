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
#include "scanread/ttsplayer.h"
#include "shelllistener.h"
#include "storage/languagemanager.h"
#include "storage/volume.h"
#include "testdeviceroot.h"
#include "widgets/messagedialog.h"
#include "widgets/sandglass.h"

#include <QPainter>
#include <QtTest>

#include <cmath>
#include <numeric>
#include <thread>

namespace {

const std::thread::id mainThread = std::this_thread::get_id();
const QString sentence = QStringLiteral("The quick brown fox jumps over the lazy dog.");
QStringList messages;

// the view with its speech link recording what it was given
class RecordingEdit : public MyEdit
{
public:
    RecordingEdit() { Init(); }
    using MyEdit::nextHighlight;
    void Sound(QString &text) override { spoken << text; }
    QStringList spoken;
};

// what an engine handed over from its own thread: the calls are read once count says so
struct Received
{
    QVector<QVector<int>> calls;
    QByteArrayList pixels;
    std::atomic<int> count{0};
};

void onWord(void *context, int position, int length, int pcm)
{
    auto *got = static_cast<Received *>(context);
    got->calls.append({position, length, pcm});
    ++got->count;
}

int onImage(void *context, uchar *pixels, int width, int height, uchar, char *)
{
    auto *got = static_cast<Received *>(context);
    got->calls.append({width, height, std::this_thread::get_id() == mainThread});
    got->pixels.append(QByteArray(reinterpret_cast<const char *>(pixels), width * height));
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

    // dropped into the watched folder as scanline does: written aside, then renamed
    bool drop(const QString &name, const QByteArray &bytes) const
    {
        const QString folder = m_root.path("/mnt/mmc/.scanner/");
        return m_root.writeFile("/mnt/mmc/.scanner/." + name, bytes) &&
               QFile::rename(folder + '.' + name, folder + name);
    }

    // the length in samples and the level of the last play's audio: the WAV file the host engine
    // writes when there is no sound card
    QPair<int, double> audio() const
    {
        const QByteArray wav = m_root.readFile("/apps/data/tts/speech.wav");
        const int count = wav.startsWith("RIFF") ? (wav.size() - 44) / 2 : 0;
        const auto *samples = reinterpret_cast<const qint16 *>(wav.constData() + 44);
        double sum = 0;
        for (int i = 0; i < count; ++i)
            sum += double(samples[i]) * samples[i];
        return {count, count ? std::sqrt(sum / count) : 0};
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_root.installEngines());
        QVERIFY(m_root.installLanguageTable());
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

    // a file that is no picture is taken away unseen; pictures reach the callback once each
    void scannerDeliversEachPictureOnce()
    {
        const uint threadsBefore = QDir("/proc/self/task").count();
        QCOMPARE(KOSCAN_IAP_Initialize(1, 0, 0, 0), 0);
        QCOMPARE(KOSCAN_IAP_SetReceivePanoImageCallBackFunc(&m_got, onImage), 0);
        int state = 0;
        QCOMPARE(KOSCAN_IAP_GetWorkState(&state), 0);
        QCOMPARE(state, int(KOSCAN_IAP_STATE_SCANNING));
        QVERIFY(drop("notes.txt", "not a picture"));
        QTRY_VERIFY(!m_root.exists("/mnt/mmc/.scanner/notes.txt"));
        const QImage image = noise(301, 47);
        for (const char *format : {"png", "pgm"}) {
            QByteArray bytes;
            QBuffer buffer(&bytes);
            QVERIFY(image.save(&buffer, format));
            QVERIFY(drop(QStringLiteral("line.") + format, bytes));
        }
        QTRY_COMPARE(m_got.count, 2);
        // consumed: the files are gone and nothing more arrives
        QTRY_VERIFY(QDir(m_root.path("/mnt/mmc/.scanner")).isEmpty());
        QCOMPARE(KOSCAN_IAP_Uninitialize(), 0);
        QCOMPARE(KOSCAN_IAP_GetWorkState(&state), 0);
        QCOMPARE(state, int(KOSCAN_IAP_STATE_IDLE));
        QCOMPARE(QDir("/proc/self/task").count(), threadsBefore);
        // sizes, not on the GUI thread, every pixel where it was
        QCOMPARE(m_got.calls, QVector<QVector<int>>(2, {301, 47, 0}));
        QCOMPARE(m_got.pixels, QByteArrayList({pixelsOf(image), pixelsOf(image)}));
    }

    void speechReportsEachWordAndStops()
    {
        m_got.calls.clear();
        QCOMPARE(KOSCAN_TTS_SetProgressCallBackFunc(&m_got, onWord), 0);
        QCOMPARE(TTSPlayer::player->setSpeed(50), 0);
        QCOMPARE(TTSPlayer::player->setVolume(100), 0);
        QCOMPARE(TTSPlayer::player->play(sentence), 0);
        const QStringList words = QString(sentence).remove('.').split(' ');
        QCOMPARE(m_got.calls.size(), words.size());
        for (int i = 0; i < words.size(); ++i) {
            const QVector<int> &report = m_got.calls.at(i);
            QCOMPARE(sentence.mid(report[0], report[1]), words.at(i));
            QVERIFY2(report[2] > (i ? m_got.calls.at(i - 1)[2] : 0), qPrintable(words.at(i)));
        }
        const QPair<int, double> normal = audio();
        qInfo("last word ends at %d, audio has %d samples", m_got.calls.last()[2], normal.first);
        QVERIFY(std::abs(normal.first - m_got.calls.last()[2]) <= KOSCAN_TTS_SAMPLE_RATE / 20);

        // faster is shorter, quieter is lower
        TTSPlayer::player->setSpeed(90);
        TTSPlayer::player->play(sentence);
        const int fast = audio().first;
        TTSPlayer::player->setSpeed(50);
        TTSPlayer::player->setVolume(25);
        TTSPlayer::player->play(sentence);
        const double quiet = audio().second;
        qInfo("fast %d samples; level %.0f, quiet %.0f", fast, normal.second, quiet);
        QVERIFY(fast < normal.first * 0.8);
        QVERIFY(quiet < normal.second * 0.5);

        // stopped while the first words are heard, play returns at once
        m_got.calls.clear();
        m_got.count = 0;
        std::thread speaker([] { TTSPlayer::player->play(sentence + ' ' + sentence); });
        QTRY_VERIFY_WITH_TIMEOUT(m_got.count > 0, 20000);
        QElapsedTimer sinceStop;
        sinceStop.start();
        QCOMPARE(TTSPlayer::player->stop(), 0);
        speaker.join();
        const qint64 took = sinceStop.elapsed();
        qInfo("play returned %lld ms after stop", took);
        QVERIFY(took < 100);
        // it ended early, not by finishing the text: few words reported, and not the last one
        QVERIFY(m_got.count < 18);
    }

    void append_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("inserted");
        const char *rows[][3] = {
            {"full-stop", "Hello.", "Hello. "},       {"digit", "page 12", "page 12 "},
            {"ascii-letter", "Zebra", "Zebra "},      {"ascii-question-mark", "why?", "why?"},
            {"full-width-comma", "你好，", "你好，"}, {"outside-gbk", "ok 😀", "ok 😀"}};
        for (const auto &row : rows)
            QTest::newRow(row[0]) << "first." << QString(row[1]) << QString(row[2]);
        // 100 lines of 99 characters and a blank: 10,000 characters, 10,099 saved with "\r\n"
        // line ends; a null text inserted: refused with a notice
        const QString lines = QString(99, 'x').append('\n').repeated(100).chopped(1);
        const QString fits(32768 - 10099, 'y');
        QTest::newRow("exactly-64-KiB") << lines << fits << fits + ' ';
        QTest::newRow("one-over-counting-line-ends-twice") << lines << fits + 'y' << QString();
    }

    void append()
    {
        QFETCH(QString, before);
        QFETCH(QString, text);
        QFETCH(QString, inserted);
        RecordingEdit edit;
        edit.appendScanText(before);
        const QString kept = edit.toPlainText();
        // the notice is drawn inside the view, which must be on the screen; look at it, let it go
        edit.show();
        bool noticed = false;
        QTimer::singleShot(0, &edit, [&] {
            if (auto *dialog = edit.findChild<MessageDialog *>())
                noticed = true, dialog->accept();
        });
        edit.appendScanText(text);
        QCOMPARE(edit.isTooBig(), inserted.isNull());
        QCOMPARE(noticed, inserted.isNull());
        QCOMPARE(edit.toPlainText(), kept + inserted);
        if (inserted.isNull())
            return;
        // the new text, blank included, is selected
        QCOMPARE(edit.textCursor().selectionStart(), kept.size());
        QCOMPARE(edit.textCursor().selectedText(), inserted);
    }

    // queued texts are read newest first; OK reads the selected word, in its place in the view
    void reading()
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
        edit.spoken.clear();
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
    }

    void highlightTiming_data()
    {
        // each word's PCM position and the time it is reported at, in ms
        QTest::addColumn<QList<int>>("reports");
        QTest::addColumn<bool>("inTranslation");
        QTest::addColumn<int>("lastDelay");
        // 16-bit samples at 22050 a second: 44100 bytes a second
        QTest::newRow("10000-samples") << QList<int>{10000, 0} << false << 453;
        // 400 ms, then 100 ms reported 150 ms later: not before the first word
        QTest::newRow("shorter-after-longer") << QList<int>{8820, 0, 11025, 150} << false << 350;
        QTest::newRow("in-translation") << QList<int>{10000, 0} << true << -1;
    }

    void highlightTiming()
    {
        QFETCH(QList<int>, reports);
        QFETCH(bool, inTranslation);
        RecordingEdit edit;
        edit.setTTSFlagInTrans(inTranslation);
        int delay = 0;
        for (int i = 0; i < reports.size(); i += 2) {
            const int ms = reports.at(i + 1);
            delay = edit.highlightAt(i * 5, 4, reports.at(i), {1000 + ms / 1000, ms % 1000 * 1000});
        }
        QTEST(delay, "lastDelay");
        QCOMPARE(edit.nextHighlight() != nullptr, !inTranslation);
        // each word is taken off the queue when its time comes
        QTRY_VERIFY(!edit.nextHighlight());
    }

    // a line scanned while another is recognised is dropped: tst_scanreadrun's third line
    void scannedImage_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QString>("appended");
        const QImage line = renderScanLine("Reading pen", ScanLineLook());
        QTest::newRow("line") << line << QSize(line.width(), 64) << "Reading pen ";
        QTest::newRow("zero-width") << QImage() << QSize(0, 8) << "";
        QTest::newRow("zero-height") << QImage() << QSize(8, 0) << "";
        QTest::newRow("noise") << noise(400, 64) << QSize(400, 64) << "";
        // a short line at the left of a light strip: whatever is read, the text before stays
        QImage wide(20000, 64, QImage::Format_Grayscale8);
        wide.fill(200);
        QPainter(&wide).drawImage(0, 0, renderScanLine("wide", ScanLineLook()));
        QTest::newRow("20000-pixels-wide") << wide << QSize(20000, 64) << QString();
    }

    void scannedImage()
    {
        QFETCH(QImage, image);
        QFETCH(QSize, size);
        QFETCH(QString, appended);
        RecordingEdit edit;
        edit.appendScanText("kept 😀 text.");
        const QString before = edit.toPlainText();
        edit.setAutoRead(true);
        QSignalSpy finished(&edit, &MyEdit::signalRecFinished);
        // no buffer at all is refused at once
        QCOMPARE(
            RecChar::ReceivePanoImage(nullptr, nullptr, size.width(), size.height(), 0, nullptr),
            -1);
        QCOMPARE(edit.Recognize(createImg(reinterpret_cast<const uchar *>(pixelsOf(image).data()),
                                          size.width(), size.height(), 0)),
                 0);
        // the busy indicator stands while the image is recognised
        QCOMPARE(edit.findChild<SandGlass *>()->geometry(), QRect(100, 10, 33, 33));
        QTRY_VERIFY_WITH_TIMEOUT(!edit.findChild<SandGlass *>(), 60000);
        QVERIFY(edit.toPlainText().startsWith(before));
        if (appended.isNull())
            return;
        // nothing recognised: nothing appended, reported or read, the selection as it was
        QCOMPARE(edit.toPlainText(), before + appended);
        QCOMPARE(edit.textCursor().selectedText(), appended.isEmpty() ? before : appended);
        QCOMPARE(finished.count(), appended.isEmpty() ? 0 : 1);
        // read at once, as the read-control setting asks
        QTRY_VERIFY(!edit.isReading());
        QCOMPARE(edit.spoken, appended.isEmpty() ? QStringList() : QStringList{appended});
    }

    // these two set the engines' languages: the cases above want English, so they come last
    void characterErrorRate_data()
    {
        QTest::addColumn<int>("engine");
        for (auto lines : {"en", "de", "fr", "it", "es"})
            QTest::newRow(lines) << 2;
        QTest::newRow("ru") << 3;
        QTest::newRow("zh_CN") << 1;
        QTest::newRow("zh_TW") << 4;
    }

    // lines drawn as the pen's camera sees them: scanline's font and size, a slight skew, noise
    void characterErrorRate()
    {
        QFETCH(int, engine);
        QFile file(TESTDATA_DIR "/scanlines/" + QString(QTest::currentDataTag()) + ".txt");
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const QStringList texts = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
        QVERIFY(texts.size() >= 20);
        int languages[] = {engine, -1};
        QCOMPARE(OCRPen::ocr->setLan(languages), 0);
        const bool han = engine == 1 || engine == 4;
        int errors = 0;
        int characters = 0;
        for (int i = 0; i < texts.size(); ++i) {
            const QImage line =
                renderScanLine(texts.at(i), {{}, 30, 64, ((i % 5) - 2) * 0.5, 10, quint32(i + 1)});
            QString read;
            OCRPen::ocr->recognize(reinterpret_cast<uchar *>(pixelsOf(line).data()), line.width(),
                                   line.height(), 0, 0, read);
            const QString expected = normalized(texts.at(i), han);
            const int wrong = editDistance(expected, normalized(read, han));
            if (wrong > 0)
                qInfo("%s\n    read as %s", qPrintable(texts.at(i)), qPrintable(read));
            errors += wrong;
            characters += expected.size();
        }
        const double rate = 100.0 * errors / characters;
        qInfo("%d errors in %d characters, CER %.2f %%", errors, characters, rate);
        QVERIFY(rate <= (han ? 3.0 : 1.0));
        // an empty result leaves the text alone
        QImage blank(400, 64, QImage::Format_Grayscale8);
        blank.fill(255);
        QString kept = QStringLiteral("kept");
        QCOMPARE(OCRPen::ocr->recognize(blank.bits(), 400, 64, 0, 0, kept), -1);
        QCOMPARE(kept, QStringLiteral("kept"));
    }

    void settingsReachEnginesInOrder_data()
    {
        QTest::addColumn<QByteArray>("ini");
        QTest::addColumn<QList<int>>("applied");
        // language, scan direction, then the engines' own log: OCR engine, speech language,
        // speeds, volumes (the last one the speaker volume of the sound record)
        const int speaker = int(getSpeakerVolume());
        // language 0 is the table's first shown row, simplified Chinese (1)
        QTest::newRow("empty-file") << QByteArray() << QList<int>{0, 0, 1, 1, 50, 1, 60, speaker};
        QTest::newRow("read-speed-step-passes-as-it-is")
            << QByteArray("[InfoListen]\nReadSpeed=7\n")
            << QList<int>{0, 0, 1, 1, 7, 1, 60, speaker};
        QTest::newRow("russian-loud-fast")
            << QByteArray("[InfoListen]\nLan=5\nScanDirect=1\nVolum=5\nReadSpeed=2\n"
                          "[SystemSet]\nSpeed=65\n")
            << QList<int>{5, 1, 3, 151, 65, 65, 100, speaker};
        QTest::newRow("english-slow") << QByteArray("[InfoListen]\nLan=1\nReadSpeed=0\n")
                                      << QList<int>{1, 0, 2, 101, 30, 1, 60, speaker};
        QTest::newRow("not-numbers-give-defaults")
            << QByteArray("[InfoListen]\nLan=abc\nScanDirect=x\nVolum=loud\nReadSpeed=fast\n"
                          "[SystemSet]\nSpeed=quick\n")
            << QList<int>{0, 0, 1, 1, 50, 1, 60, speaker};
    }

    void settingsReachEnginesInOrder()
    {
        QFETCH(QByteArray, ini);
        QFETCH(QList<int>, applied);
        configure(ini);
        QList<int> got{ConfigReader::reader->getLanInfo(),
                       ConfigReader::reader->getScanDirectInfo()};
        for (const QString prefix : {"aLanguages=", "TTSPlayer::setLan", "in TTSPlayer::setSpeed",
                                     "##########in TTSPlayer::setVolume---"})
            for (const QString &message : qAsConst(messages))
                if (message.startsWith(prefix))
                    got << message.mid(prefix.size()).trimmed().toInt();
        QCOMPARE(got, applied);
        QVERIFY(messages.contains("SetSpeed success"));
        // the language is written back even when it did not change
        ConfigReader::quitFun();
        ConfigReader::reader = nullptr;
        const QSettings written(m_root.path("/apps/config/config.ini"), QSettings::IniFormat);
        QCOMPARE(written.value("InfoListen/Lan").toInt(), applied.first());
        // simplified Chinese and Russian have engines of their own; every other language,
        // traditional Chinese too, and none at all read with the Latin one
        for (int lanInt : {0, 2, 104})
            QCOMPARE(ConfigReader::getEngineID(lanInt), 2);
    }
};

QTEST_MAIN(TestScanRead)
#include "tst_scanread.moc"
