// The installed scanread program as a user meets it: a device root made by mkroot, a real X
// server, lines scanned with scanline, keys pressed with xdotool, the shell heard through qcop,
// and the speech heard from the file the engine writes at the pace it is heard.

#include "host/speechengine.h"
#include "recorderprocess.h"
#include "screenpixels.h"
#include "spokentext.h"
#include "testdeviceroot.h"
#include "xserver.h"

#include <QtTest>

namespace {

constexpr int stepTimeoutMs = 60000;
// the reading pace: the speech speed of the pen's settings below
constexpr int speed = 50;
// how far from the word being heard its highlight may be seen, for a slow look at the screen
constexpr int toleranceSamples = KOSCAN_TTS_SAMPLE_RATE / 5;

// the selected part of the screen, shown inverted: columns lit in a run taller than any glyph
QRect selectionBox(const QImage &screen)
{
    QRect box;
    for (int x = 0; x < 250; ++x)
        for (int y = 0, run = 0; y < 64 && run < 13; ++y) {
            run = lit(screen, x, y) ? run + 1 : 0;
            if (run == 13)
                box = box.united(QRect(x, y - 12, 1, 13));
        }
    return box;
}

// how many of the words are in the text, in any case: the engine may misread a letter or two
int wordsFound(const QString &words, const QString &text)
{
    int found = 0;
    for (const QString &word : words.split(' '))
        found += text.contains(word, Qt::CaseInsensitive) ? 1 : 0;
    return found;
}

} // namespace

class TestScanReadRun : public QObject
{
    Q_OBJECT

    TestDeviceRoot m_root;
    XServer m_x;
    TiedProcess m_shell;
    QByteArray m_said;
    RecorderProcess m_program{m_root.root()};

    int heard(const QByteArray &line)
    {
        m_said += m_shell.readAllStandardOutput();
        return m_said.count("mainprocess " + line + '\n');
    }
    int logged(const QByteArray &text) { return m_program.standardError().count(text); }
    // the view's places of the words lit so far, in order
    QList<int> dequeued()
    {
        QList<int> places;
        for (const QByteArray &line : m_program.standardError().split('\n'))
            if (line.contains("dequeue pos:"))
                places << line.mid(line.indexOf("dequeue pos:") + 12).trimmed().toInt();
        return places;
    }
    // the text of the view as the program last reported it
    QString viewText()
    {
        const QByteArray err = m_program.standardError();
        const int at = err.lastIndexOf("scanread: view \"") + 16;
        return QString::fromUtf8(err.mid(at, err.indexOf("\" selected", at) - at));
    }
    // drawn aside under hidden names, then put in place together
    bool scan(const QStringList &lines)
    {
        const QString folder = m_root.path("/mnt/mmc/.scanner/");
        for (int i = 0; i < lines.size(); ++i)
            if (QProcess::execute(DEVSIM_BIN_DIR "/scanline",
                                  {lines.at(i), "--output", folder + QString(".%1.png").arg(i)}))
                return false;
        for (int i = 0; i < lines.size(); ++i)
            QFile::rename(folder + QString(".%1.png").arg(i), folder + QString("%1.png").arg(i));
        return true;
    }

private slots:
    void initTestCase()
    {
        for (const char *tool : {"Xvfb", "xdotool", "xwdtopnm"})
            if (QStandardPaths::findExecutable(tool).isEmpty())
                QSKIP("Xvfb, xdotool or netpbm is not installed (scripts/setup)");
        QVERIFY2(m_x.start(), "no Xvfb could be started");
        QCOMPARE(QProcess::execute("bash", {MKROOT, m_root.root(), BUILD_DIR}), 0);
        // reading language English, each line read aloud as it is scanned
        QVERIFY(m_root.writeFile("/apps/config/config.ini",
                                 "[InfoListen]\nLan=1\nReadControl=1\n[SystemSet]\nSpeed=" +
                                     QByteArray::number(speed) + '\n'));
        m_shell.start(QCOP_BIN, {"listen", "mainprocess"});
        QTRY_VERIFY_WITH_TIMEOUT((m_said += m_shell.readAllStandardError()).contains("listening"),
                                 stepTimeoutMs);
        m_program.setProgram(m_root.path("/apps/bin/scanread"));
        m_program.showOn(m_x.display());
        m_program.setEnv("OMP_THREAD_LIMIT", "1");
        m_program.setEnv("DEVSIM_SPEECH", "file");
    }

    void scanReadAloudAndLeave()
    {
        const QString line = "Scanning pens read every word aloud";
        QVERIFY(m_program.start());
        QVERIFY(m_program.waitForError("scanread: scanner ready", stepTimeoutMs));
        QTRY_COMPARE_WITH_TIMEOUT(m_x.visibleWindows(m_program.pid()).size(), 1, stepTimeoutMs);

        // recognised, appended with its blank, selected
        QVERIFY(scan({line}));
        QVERIFY(m_program.waitForError("scanread: view ", stepTimeoutMs));
        const QString text = viewText();
        QVERIFY2(wordsFound(line, text) >= 5 && text.endsWith(' '), qPrintable(text));
        QVERIFY(logged(QStringLiteral("selected 0-%1").arg(text.size()).toUtf8()));
        QTRY_COMPARE_WITH_TIMEOUT(heard("execute(QString) trigger"), 1, stepTimeoutMs);

        // it is read at once: each time a word is lit, its highlight is further on in reading
        // order, and the sample being heard then lies in that word
        QList<QRect> boxes;
        QList<std::pair<int, qint64>> seen; // words lit (counted from 0), samples heard then
        const QString wav = m_root.path("/apps/data/tts/speech.wav");
        int due = 0;
        QTRY_VERIFY_WITH_TIMEOUT(
            [&] {
                if (logged("dequeue pos:") > due) {
                    due = logged("dequeue pos:");
                    const qint64 samples = (QFileInfo(wav).size() - 44) / 2;
                    if (logged("dequeue pos:") == due)
                        seen.append({due - 1, samples});
                    const QRect box = selectionBox(m_x.grab().copy(0, 0, 256, 64));
                    if (!box.isEmpty() && (boxes.isEmpty() || boxes.last() != box))
                        boxes << box;
                }
                return heard("execute(QString) soundno") == 1;
            }(),
            stepTimeoutMs);
        QVERIFY2(boxes.size() >= 3, qPrintable(QString::number(boxes.size())));
        for (int i = 1; i < boxes.size(); ++i)
            QVERIFY(std::pair(boxes[i].top(), boxes[i].left()) >
                        std::pair(boxes[i - 1].top(), boxes[i - 1].left()) &&
                    boxes[i].width() < 100);
        // the engine starts afresh, as this synthesis does, and speaks the same samples
        SpokenText spoken;
        QVERIFY(spoken.synthesise(m_root.path("/mnt/hidmmc/sysdict/ttsrec"),
                                  SpeechEngine::voiceFor(101), SpeechEngine::rateFor(speed), 60,
                                  text));
        const qint64 samples = qint64(spoken.samples.size());
        QCOMPARE((QFileInfo(wav).size() - 44) / 2, samples);
        QMap<int, qint64> starts;
        for (const SpokenText::Word &word : qAsConst(spoken.words))
            starts.insert(word.position, word.sample);
        // every word lit by the end of the speech, in order
        const QList<int> lit = starts.keys();
        QVERIFY2(seen.size() >= 3, qPrintable(QString::number(seen.size())));
        for (const auto &[word, at] : qAsConst(seen)) {
            QVERIFY(word < lit.size());
            const qint64 next = word + 1 < lit.size() ? starts.value(lit.at(word + 1)) : samples;
            QVERIFY2(at >= starts.value(lit.at(word)) - toleranceSamples &&
                         at <= next + toleranceSamples,
                     qPrintable(QString("word %1 lit while sample %2 was heard, it spans %3-%4")
                                    .arg(word)
                                    .arg(at)
                                    .arg(starts.value(lit.at(word)))
                                    .arg(next)));
        }
        QCOMPARE(dequeued(), lit);

        // a line scanned while the one before is recognised is dropped
        QVERIFY(scan({"Second line here", "Third line dropped"}));
        QTRY_COMPARE_WITH_TIMEOUT(logged("scanread: view "), 2, stepTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(heard("execute(QString) trigger"), 3, stepTimeoutMs);
        QTRY_COMPARE_WITH_TIMEOUT(heard("execute(QString) soundno"), 2, stepTimeoutMs);
        QCOMPARE(logged("recognize start"), 2);
        QVERIFY2(viewText().startsWith(text) && wordsFound("Second line here", viewText()) >= 2 &&
                     wordsFound("Third dropped", viewText()) == 0,
                 qPrintable(viewText()));

        // Escape leaves when nothing is read
        QVERIFY(m_x.pressKey(m_program.pid(), "Escape"));
        QVERIFY(m_program.waitForExit(stepTimeoutMs));
        QCOMPARE(m_program.exitCode(), 0);
    }
};

QTEST_MAIN(TestScanReadRun)
#include "tst_scanreadrun.moc"
