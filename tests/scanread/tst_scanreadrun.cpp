// The installed scanread program as a user meets it: a device root made by mkroot, a real X
// server, lines scanned with scanline, keys pressed with xdotool, the shell heard through qcop.

#include "recorderprocess.h"
#include "screenpixels.h"
#include "testdeviceroot.h"
#include "xserver.h"

#include <QtTest>

namespace {

constexpr int stepTimeoutMs = 60000;
const QString firstLine = QStringLiteral("Scanning pens read every word aloud");

// the selected part of the screen, shown inverted: columns lit in a run taller than any glyph;
// its first row and its left and right end, or an empty rectangle when nothing is selected
QRect selectionBox(const QImage &screen)
{
    QRect box;
    for (int x = 0; x < 250; ++x) {
        for (int y = 0, run = 0; y < 64; ++y) {
            run = lit(screen, x, y) ? run + 1 : 0;
            if (run == 13) {
                box = box.united(QRect(x, y - 12, 1, 13));
                break;
            }
        }
    }
    return box;
}

int editDistance(const QString &a, const QString &b)
{
    QVector<int> row(b.size() + 1);
    for (int j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int above = row[j];
            row[j] = qMin(qMin(above, row[j - 1]) + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1));
            diagonal = above;
        }
    }
    return row[b.size()];
}

} // namespace

class TestScanReadRun : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void scanReadAloudAndLeave();

private:
    int heard(const QByteArray &line);
    int logged(const QByteArray &text) { return m_program.standardError().count(text); }
    bool scan(const QStringList &lines);
    // the last "scanread: view" line: the view's text and its selection
    QString viewLine();

    TestDeviceRoot m_root;
    XServer m_x;
    TiedProcess m_shell;
    QByteArray m_said;
    RecorderProcess m_program{m_root.root()};
};

void TestScanReadRun::initTestCase()
{
    for (const char *tool : {"Xvfb", "xdotool", "xwdtopnm"}) {
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty())
            QSKIP(qPrintable(QStringLiteral("%1 is not installed (scripts/setup)").arg(tool)));
    }
    QVERIFY2(m_x.start(), "no Xvfb could be started");
    QCOMPARE(QProcess::execute("bash", {MKROOT, m_root.root(), BUILD_DIR}), 0);
    // reading language English
    QVERIFY(
        m_root.writeFile("/apps/config/config.ini", "[SystemSet]\nLan=1\n[InfoListen]\nLan=1\n"));
    m_shell.start(QStringLiteral(QCOP_BIN), {"listen", "mainprocess"});
    QTRY_VERIFY_WITH_TIMEOUT((m_said += m_shell.readAllStandardError()).contains("listening"),
                             stepTimeoutMs);
    m_program.setProgram(m_root.path("/apps/bin/scanread"));
    m_program.showOn(m_x.display());
    m_program.setEnv("OMP_THREAD_LIMIT", "1");
    m_program.setEnv("DEVSIM_SPEECH", "file");
}

void TestScanReadRun::cleanupTestCase()
{
    if (QTest::currentTestFailed())
        qWarning("scanread said: %s", m_program.standardError().right(3000).constData());
    m_program.kill();
    m_shell.kill();
    m_shell.waitForFinished();
}

int TestScanReadRun::heard(const QByteArray &line)
{
    m_said += m_shell.readAllStandardOutput();
    return m_said.count("mainprocess " + line + '\n');
}

bool TestScanReadRun::scan(const QStringList &lines)
{
    // drawn aside under hidden names, then put in place together
    const QString folder = m_root.path("/mnt/mmc/.scanner/");
    for (int i = 0; i < lines.size(); ++i) {
        if (QProcess::execute(QStringLiteral(DEVSIM_BIN_DIR "/scanline"),
                              {lines.at(i), "--output", folder + QString(".line%1.png").arg(i)}))
            return false;
    }
    for (int i = 0; i < lines.size(); ++i) {
        if (!QFile::rename(folder + QString(".line%1.png").arg(i),
                           folder + QString("line%1.png").arg(i)))
            return false;
    }
    return true;
}

QString TestScanReadRun::viewLine()
{
    const QList<QByteArray> lines = m_program.standardError().split('\n');
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        if (line->startsWith("scanread: view "))
            return QString::fromUtf8(line->mid(15));
    }
    return QString();
}

void TestScanReadRun::scanReadAloudAndLeave()
{
    QVERIFY(m_program.start());
    QVERIFY(m_program.waitForError("scanread: scanner ready", stepTimeoutMs));
    QTRY_COMPARE_WITH_TIMEOUT(m_x.visibleWindows(m_program.pid()).size(), 1, stepTimeoutMs);

    // one line: recognised, appended with its blank and selected
    QVERIFY(scan({firstLine}));
    QVERIFY(m_program.waitForError("scanread: view ", stepTimeoutMs));
    const QString view = viewLine();
    const QString text = view.section('"', 1, -2);
    QVERIFY2(editDistance(text.simplified().toLower(), firstLine.toLower()) <= 3, qPrintable(view));
    QVERIFY(text.endsWith(' '));
    QVERIFY2(view.endsWith(QStringLiteral("selected 0-%1").arg(text.size())), qPrintable(view));
    QTRY_COMPARE_WITH_TIMEOUT(heard("execute(QString) trigger"), 1, stepTimeoutMs);
    QTRY_VERIFY_WITH_TIMEOUT(!selectionBox(m_x.grab()).isEmpty(), stepTimeoutMs);

    // OK reads it: at each word's time its highlight moves on, in reading order
    QVERIFY(m_x.pressKey(m_program.pid(), "Return"));
    QList<QRect> boxes;
    int due = 0;
    QTRY_VERIFY_WITH_TIMEOUT(
        [&] {
            if (logged("dequeue pos:") > due) {
                due = logged("dequeue pos:");
                const QImage screen = m_x.grab();
                const QRect box = selectionBox(screen);
                if (!box.isEmpty() && (boxes.isEmpty() || boxes.last() != box)) {
                    boxes << box;
                    screen.copy(0, 0, 256, 64)
                        .save(screensDir() + QString("/scanread-reading-%1.png").arg(boxes.size()));
                }
            }
            return heard("execute(QString) soundno") == 1;
        }(),
        stepTimeoutMs);
    QVERIFY2(boxes.size() >= 3, qPrintable(QString::number(boxes.size())));
    for (int i = 1; i < boxes.size(); ++i) {
        const QRect &a = boxes.at(i - 1), &b = boxes.at(i);
        QVERIFY2(b.top() > a.top() || (b.top() == a.top() && b.left() > a.left()),
                 qPrintable(QString("box %1 before %2").arg(i).arg(i - 1)));
        QVERIFY(b.width() < 128);
    }

    // a second line while the one before is still recognised is dropped
    QVERIFY(scan({"Second line here", "Third line dropped"}));
    QTRY_COMPARE_WITH_TIMEOUT(logged("scanread: view "), 2, stepTimeoutMs);
    QTRY_COMPARE_WITH_TIMEOUT(heard("execute(QString) trigger"), 3, stepTimeoutMs);
    QTRY_VERIFY(QDir(m_root.path("/mnt/mmc/.scanner")).isEmpty());
    QCOMPARE(logged("recognize start"), 2);
    const QString second = viewLine().section('"', 1, -2).mid(text.size()).simplified();
    QVERIFY2(editDistance(second.toLower(), QStringLiteral("second line here")) <= 2,
             qPrintable(viewLine()));

    // Escape leaves when nothing is read
    QVERIFY(m_x.pressKey(m_program.pid(), "Escape"));
    QVERIFY(m_program.waitForExit(stepTimeoutMs));
    QCOMPARE(m_program.exitCode(), 0);
}

QTEST_MAIN(TestScanReadRun)
#include "tst_scanreadrun.moc"
