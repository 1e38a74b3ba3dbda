#include "widgets/seektipwnd.h"

#include <QPainter>

#include <utility>

SeekTipWnd::SeekTipWnd(QWidget *parent) : QWidget(parent)
{
    setWindowFlags(Qt::FramelessWindowHint);
    // the box and its outline
    resize(128, 28);
}

void SeekTipWnd::showText(QString text)
{
    m_text = std::move(text);
    show();
}

void SeekTipWnd::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setBrush(QBrush(Qt::black, Qt::SolidPattern));
    const QRect box(1, 1, 126, 26);
    painter.drawRect(box);
    painter.drawText(box, Qt::AlignCenter, m_text);
}
