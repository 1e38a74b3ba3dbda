// The scanner stand-in through the image acquisition operations, as the scan view uses them.

#include "scanread/koscansdk.h"
#include "testdeviceroot.h"

#include <QtTest>

#include <mutex>
#include <thread>

namespace {

struct Delivery
{
    std::thread::id thread;
    int width = 0;
    int height = 0;
    QByteArray pixels;
};

struct Deliveries
{
    std::mutex lock;
    QVector<Delivery> list;

    int count()
    {
        const std::lock_guard<std::mutex> guard(lock);
        return list.size();
    }
};

int receive(void *context, unsigned char *pixels, int width, int height, unsigned char, char *)
{
    auto *deliveries = static_cast<Deliveries *>(context);
    const std::lock_guard<std::mutex> guard(deliveries->lock);
    deliveries->list.append({std::this_thread::get_id(), width, height,
                             QByteArray(reinterpret_cast<const char *>(pixels), width * height)});
    return 0;
}

int threadCount()
{
    return QDir(QStringLiteral("/proc/self/task"))
        .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
        .size();
}

// a picture whose every pixel tells where it is
QImage pattern(int width, int height)
{
    QImage image(width, height, QImage::Format_Grayscale8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = uchar((x * 7 + y * 31) % 256);
    return image;
}

} // namespace

class TestScanner : public QObject
{
    Q_OBJECT

private slots:
    void imageReachesCallbackOnce_data()
    {
        QTest::addColumn<QByteArray>("format");
        QTest::newRow("png") << QByteArray("PNG");
        QTest::newRow("pgm") << QByteArray("PGM");
    }

    // a file that is no picture before it is taken away unseen
    void imageReachesCallbackOnce()
    {
        QFETCH(QByteArray, format);
        TestDeviceRoot root;
        const int threadsBefore = threadCount();
        Deliveries deliveries;
        QCOMPARE(KOSCAN_IAP_Initialize(1, 0, 0, 0), 0);
        QCOMPARE(KOSCAN_IAP_SetReceivePanoImageCallBackFunc(&deliveries, receive), 0);
        int state = 0;
        QCOMPARE(KOSCAN_IAP_GetWorkState(&state), 0);
        QCOMPARE(state, int(KOSCAN_IAP_STATE_SCANNING));

        QVERIFY(drop(root, QStringLiteral("notes.txt"), "not a picture"));
        QTRY_VERIFY(!root.exists(QStringLiteral("/mnt/mmc/.scanner/notes.txt")));
        const QImage image = pattern(301, 47);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QVERIFY(image.save(&buffer, format.constData()));
        QVERIFY(drop(root, QStringLiteral("line.") + format.toLower(), bytes));

        QTRY_COMPARE(deliveries.count(), 1);
        // consumed: the file is gone and nothing more arrives
        QTRY_VERIFY(QDir(root.path(QStringLiteral("/mnt/mmc/.scanner"))).isEmpty());
        const Delivery got = deliveries.list.first();
        QVERIFY(got.thread != std::this_thread::get_id());
        QCOMPARE(got.width, 301);
        QCOMPARE(got.height, 47);
        for (int y = 0; y < 47; ++y)
            QVERIFY(std::equal(got.pixels.constData() + y * 301,
                               got.pixels.constData() + (y + 1) * 301,
                               reinterpret_cast<const char *>(image.constScanLine(y))));

        QCOMPARE(KOSCAN_IAP_Uninitialize(), 0);
        QCOMPARE(KOSCAN_IAP_GetWorkState(&state), 0);
        QCOMPARE(state, int(KOSCAN_IAP_STATE_IDLE));
        QCOMPARE(threadCount(), threadsBefore);
        QCOMPARE(deliveries.count(), 1);
    }

private:
    // drops a file into the watched folder as scanline does: written aside, then renamed
    static bool drop(const TestDeviceRoot &root, const QString &name, const QByteArray &bytes)
    {
        const QString folder = root.path(QStringLiteral("/mnt/mmc/.scanner/"));
        return root.writeFile(QStringLiteral("/mnt/mmc/.scanner/.") + name, bytes) &&
               QFile::rename(folder + QLatin1Char('.') + name, folder + name);
    }
};

QTEST_MAIN(TestScanner)
#include "tst_scanner.moc"
