// Recognition quality of the host's OCR engine through OCRPen, on lines drawn as the pen's camera
// sees them (scanline's renderer: its font and size, a slight skew, sensor noise).

#include "scanlinerenderer.h"
#include "scanread/ocrpen.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <algorithm>
#include <vector>

namespace {

int editDistance(const QString &a, const QString &b)
{
    std::vector<int> row(size_t(b.size()) + 1);
    for (int j = 0; j <= b.size(); ++j)
        row[size_t(j)] = j;
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int above = row[size_t(j)];
            row[size_t(j)] = std::min({above + 1, row[size_t(j) - 1] + 1,
                                       diagonal + (a.at(i - 1) == b.at(j - 1) ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[size_t(b.size())];
}

// Chinese has no spaces between words, which the engine may put in; a typographic apostrophe is
// the same letter
QString normalized(QString text, bool han)
{
    text.replace(QChar(0x2019), QLatin1Char('\''));
    return han ? text.remove(QLatin1Char(' ')) : text.simplified();
}

// the engine takes rows without padding
QByteArray pixelsOf(const QImage &image)
{
    QByteArray pixels;
    for (int y = 0; y < image.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(image.constScanLine(y)), image.width());
    return pixels;
}

} // namespace

class TestRecognition : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_root.installEngines());
        OCRPen::ocr = new OCRPen;
    }

    void cleanupTestCase() { OCRPen::quitFun(); }

    void characterErrorRate_data()
    {
        QTest::addColumn<QString>("lines");
        QTest::addColumn<int>("engine");
        QTest::addColumn<double>("limitPercent");
        QTest::newRow("english") << "en" << 2 << 1.0;
        QTest::newRow("german") << "de" << 2 << 1.0;
        QTest::newRow("french") << "fr" << 2 << 1.0;
        QTest::newRow("italian") << "it" << 2 << 1.0;
        QTest::newRow("spanish") << "es" << 2 << 1.0;
        QTest::newRow("russian") << "ru" << 3 << 1.0;
        QTest::newRow("simplified-chinese") << "zh_CN" << 1 << 3.0;
        QTest::newRow("traditional-chinese") << "zh_TW" << 4 << 3.0;
    }

    void characterErrorRate()
    {
        QFETCH(QString, lines);
        QFETCH(int, engine);
        QFETCH(double, limitPercent);
        QFile file(QStringLiteral(TESTDATA_DIR "/scanlines/") + lines + QStringLiteral(".txt"));
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const QStringList texts =
            QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QVERIFY(texts.size() >= 20);
        int languages[] = {engine, -1};
        QCOMPARE(OCRPen::ocr->setLan(languages), 0);

        const bool han = engine == 1 || engine == 4;
        int errors = 0;
        int characters = 0;
        for (int i = 0; i < texts.size(); ++i) {
            ScanLineLook look;
            look.seed = quint32(i + 1);
            look.skewDegrees = ((i % 5) - 2) * 0.5;
            const QImage line = renderScanLine(texts.at(i), look);
            QByteArray pixels = pixelsOf(line);
            QString read;
            OCRPen::ocr->recognize(reinterpret_cast<uchar *>(pixels.data()), line.width(),
                                   line.height(), 0, 0, read);
            const QString expected = normalized(texts.at(i), han);
            const int wrong = editDistance(expected, normalized(read, han));
            if (wrong > 0)
                qInfo("%s\n    read as %s", qPrintable(texts.at(i)), qPrintable(read));
            errors += wrong;
            characters += expected.size();
        }
        const double rate = 100.0 * errors / characters;
        qInfo("%s: %d errors in %d characters, CER %.2f %% (limit %.0f %%)", qPrintable(lines),
              errors, characters, rate, limitPercent);
        QVERIFY(rate <= limitPercent);
    }

    void emptyResultLeavesTextAlone()
    {
        int languages[] = {2, -1};
        QCOMPARE(OCRPen::ocr->setLan(languages), 0);
        QImage blank(400, 64, QImage::Format_Grayscale8);
        blank.fill(255);
        QString text = QStringLiteral("kept");
        QCOMPARE(OCRPen::ocr->recognize(blank.bits(), 400, 64, 0, 0, text), -1);
        QCOMPARE(text, QStringLiteral("kept"));
    }

private:
    TestDeviceRoot m_root;
};

QTEST_MAIN(TestRecognition)
#include "tst_recognition.moc"
