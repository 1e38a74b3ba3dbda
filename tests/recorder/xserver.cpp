#include "xserver.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QtEndian>

namespace {

// Xvfb keeps its screen in this file as an X window dump: a header of big-endian 32-bit fields,
// a colour map, then the pixels in the server's own byte order.
enum XwdField {
    HeaderSize = 0,
    PixmapWidth = 4,
    PixmapHeight = 5,
    ByteOrder = 7,
    BitsPerPixel = 11,
    BytesPerLine = 12,
    RedMask = 14,
    GreenMask = 15,
    BlueMask = 16,
    ColourCount = 19,
    FieldCount = 25
};
constexpr int xwdColourSize = 12;

quint32 field(const QByteArray &dump, int index)
{
    return qFromBigEndian<quint32>(dump.constData() + 4 * index);
}

// the mask's bits scaled to 0..255
int channel(quint32 pixel, quint32 mask)
{
    if (mask == 0)
        return 0;
    int shift = 0;
    while (!((mask >> shift) & 1u))
        ++shift;
    const quint32 top = mask >> shift;
    return int(((pixel & mask) >> shift) * 255u / top);
}

QImage imageFromDump(const QByteArray &dump)
{
    if (dump.size() < 4 * FieldCount || field(dump, BitsPerPixel) != 32)
        return QImage();
    const int width = int(field(dump, PixmapWidth));
    const int height = int(field(dump, PixmapHeight));
    const qint64 stride = field(dump, BytesPerLine);
    const qint64 start = qint64(field(dump, HeaderSize)) + xwdColourSize * field(dump, ColourCount);
    if (start + stride * height > dump.size() || stride < 4 * width)
        return QImage();
    const bool msbFirst = field(dump, ByteOrder) != 0;
    const quint32 red = field(dump, RedMask);
    const quint32 green = field(dump, GreenMask);
    const quint32 blue = field(dump, BlueMask);

    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        const char *row = dump.constData() + start + stride * y;
        auto *out = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const quint32 pixel = msbFirst ? qFromBigEndian<quint32>(row + 4 * x)
                                           : qFromLittleEndian<quint32>(row + 4 * x);
            out[x] = qRgb(channel(pixel, red), channel(pixel, green), channel(pixel, blue));
        }
    }
    return image;
}

} // namespace

XServer::XServer()
{
    // Xvfb's chatter is of no use to the tests; the display number arrives on standard output
    m_xvfb.setStandardErrorFile(QProcess::nullDevice());
}

XServer::~XServer()
{
    if (m_xvfb.state() == QProcess::NotRunning)
        return;
    // asked politely first, so that the server takes its lock file and socket away
    m_xvfb.terminate();
    if (!m_xvfb.waitForFinished(5000)) {
        m_xvfb.kill();
        m_xvfb.waitForFinished(5000);
    }
}

bool XServer::start(int firstDisplay, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    for (int number = firstDisplay; number < firstDisplay + 100 && !deadline.hasExpired();
         ++number) {
        if (QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(number)) ||
            QFileInfo::exists(QStringLiteral("/tmp/.X%1-lock").arg(number)))
            continue;
        if (tryDisplay(number, int(deadline.remainingTime())))
            return true;
    }
    return false;
}

bool XServer::tryDisplay(int number, int timeoutMs)
{
    const QString display = QStringLiteral(":%1").arg(number);
    // -displayfd: the server writes the number once it listens, so there is no guessing
    m_xvfb.start(QStringLiteral("Xvfb"),
                 {display, QStringLiteral("-displayfd"), QStringLiteral("1"),
                  QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("640x480x24"),
                  QStringLiteral("-nolisten"), QStringLiteral("tcp"), QStringLiteral("-fbdir"),
                  m_frameBuffer.path()});
    if (!m_xvfb.waitForStarted(10000))
        return false;
    const QDeadlineTimer deadline(timeoutMs);
    QByteArray announced;
    while (!announced.contains('\n')) {
        // another server took the display first: this one ends at once
        if (m_xvfb.state() == QProcess::NotRunning || deadline.hasExpired()) {
            m_xvfb.kill();
            m_xvfb.waitForFinished(5000);
            return false;
        }
        m_xvfb.waitForReadyRead(100);
        announced += m_xvfb.readAllStandardOutput();
    }
    m_display = display;
    if (runTool({QStringLiteral("xdpyinfo"), QStringLiteral("-display"), display}))
        return true;
    m_display.clear();
    m_xvfb.kill();
    m_xvfb.waitForFinished(5000);
    return false;
}

bool XServer::runTool(const QStringList &command, QByteArray *output) const
{
    QProcess tool;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DISPLAY"), m_display);
    tool.setProcessEnvironment(env);
    tool.setStandardErrorFile(QProcess::nullDevice());
    tool.start(command.first(), command.mid(1));
    if (!tool.waitForStarted(10000))
        return false;
    if (!tool.waitForFinished(20000)) {
        tool.kill();
        tool.waitForFinished(5000);
        return false;
    }
    if (output)
        *output = tool.readAllStandardOutput();
    return tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0;
}

QImage XServer::grab() const
{
    QFile screen(m_frameBuffer.path() + QStringLiteral("/Xvfb_screen0"));
    if (!screen.open(QIODevice::ReadOnly))
        return QImage();
    return imageFromDump(screen.readAll());
}

QStringList XServer::visibleWindows(qint64 pid) const
{
    QByteArray ids;
    // xdotool ends with 1 when nothing matches: that is an empty list, not a failure
    runTool({QStringLiteral("xdotool"), QStringLiteral("search"), QStringLiteral("--onlyvisible"),
             QStringLiteral("--pid"), QString::number(pid)},
            &ids);
    return QString::fromLatin1(ids).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool XServer::pressKey(qint64 pid, const QString &key) const
{
    const QStringList windows = visibleWindows(pid);
    if (windows.isEmpty())
        return false;
    // without a window manager nobody hands the keyboard to a new window: do it as one would
    return runTool({QStringLiteral("xdotool"), QStringLiteral("windowfocus"),
                    QStringLiteral("--sync"), windows.last()}) &&
           runTool({QStringLiteral("xdotool"), QStringLiteral("key"), key});
}
