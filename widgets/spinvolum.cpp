#include "widgets/spinvolum.h"

#include <QDebug>
#include <QFontMetrics>
#include <QPainter>
#include <QPointF>
#include <QProgressBar>
#include <QTextCodec>

#include <cstdio>

namespace {

// "read-aloud volume" as the device's GB2312 text
QString volumeCaption()
{
    static const char caption[] = "\xC0\xCA\xB6\xC1\xD2\xF4\xC1\xBF";
    QTextCodec *gbk = QTextCodec::codecForName("GBK");
    if (!gbk) {
        fprintf(stderr, "SpinVolum: no GBK codec\n");
        return QString::fromLatin1(caption);
    }
    return gbk->toUnicode(caption);
}

} // namespace

SpinVolum::SpinVolum(QWidget *parent) : SpinItems(parent)
{
    m_progress = new QProgressBar(this);
    m_progress->setStyleSheet(
        QStringLiteral("QProgressBar{padding: 0px ;margin: 0px ;}QProgressBar::chunk "
                       "{background-color: white;width: 8px;margin: 3px;}"));
    m_progress->setTextVisible(false);
    m_progress->setRange(0, 15);
    setText1(volumeCaption());
    showText();
    showSpin();
}

void SpinVolum::moveNext()
{
    if (m_curIndex == m_items.size() - 1)
        return;
    ++m_curIndex;
    showSpin();
    update();
}

void SpinVolum::movePrev()
{
    if (m_curIndex == 0)
        return;
    --m_curIndex;
    showSpin();
    update();
}

void SpinVolum::setCurIndex(int i)
{
    if (i < 0 || i >= m_items.size())
        return;
    m_curIndex = i;
    showSpin();
    update();
}

void SpinVolum::setTextFont(QFont &font)
{
    setFont(font);
}

void SpinVolum::showSpin()
{
    m_progress->setGeometry(m_barX + 3, m_barY, m_barWidth - 3, 18);
    m_progress->setValue(m_curIndex * 3);
}

void SpinVolum::showText()
{
    // Outside a paint event the row only works out where its bar goes.
    QPainter painter;
    if (m_painting) {
        painter.begin(this);
        painter.setBrush(palette().brush(QPalette::Text));
    }

    // the highlighted row shows the bar alone and keeps its last positions
    if (m_select)
        return;

    const long x = drawCaption(painter, false);
    qDebug() << "SpinVolum::showText itemX" << x + m_interSpace;

    // the bar sits where the slider of the spin slider would, the arrows hug it on both sides
    const int s = m_barWidth + m_interSpace + 10;
    m_barX = (232 - s) + m_interSpace - 10;
    m_barY = 1;
    m_leftX = m_barX - 5;
    m_rightX = 232;
    if (!painter.isActive())
        return;
    const QPointF leftArrow[3] = {QPointF(m_leftX - 7, 9), QPointF(m_leftX, 5),
                                  QPointF(m_leftX, 13)};
    const QPointF rightArrow[3] = {QPointF(m_rightX, 5), QPointF(m_rightX, 13),
                                   QPointF(m_rightX + 7, 9)};
    painter.drawPolygon(leftArrow, 3, Qt::OddEvenFill);
    painter.drawPolygon(rightArrow, 3, Qt::OddEvenFill);
}

void SpinVolum::paintEvent(QPaintEvent *)
{
    m_painting = true;
    showText();
    m_painting = false;
}
