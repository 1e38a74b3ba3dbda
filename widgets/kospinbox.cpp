#include "widgets/kospinbox.h"

#include <QDebug>
#include <QFontMetrics>
#include <QPainter>
#include <QPointF>

#include <cstdio>

KoSpinBox::KoSpinBox(QWidget *parent) : SpinItems(parent)
{
    // a placeholder every menu replaces
    setText1(QStringLiteral("teset"));
}

void KoSpinBox::moveNext()
{
    if (m_curIndex == m_items.size() - 1)
        m_curIndex = 0;
    else
        ++m_curIndex;
    update();
}

void KoSpinBox::movePrev()
{
    if (m_curIndex == 0)
        m_curIndex = m_items.size() - 1;
    else
        --m_curIndex;
    update();
}

void KoSpinBox::setCurIndex(int i)
{
    if (i < 0 || i >= m_items.size())
        return;
    m_curIndex = i;
    update();
}

void KoSpinBox::setTextFont(QFont &font)
{
    setFont(font);
}

void KoSpinBox::setGoFrontFlag(bool)
{
    // rows that moved their value block left never move it back
    m_goFrontFlag = true;
}

int KoSpinBox::getSizeItems()
{
    return m_items.size();
}

void KoSpinBox::deleteLast()
{
    m_items.erase(m_items.end() - 1);
}

int KoSpinBox::getCurIndex()
{
    qDebug() << "in KoSpinBox::getCurIndex" << m_curIndex;
    return m_curIndex;
}

void KoSpinBox::showText() {}

void KoSpinBox::paintEvent(QPaintEvent *)
{
    const QFontMetrics metrics(font());
    const int ascent = metrics.ascent();
    QPainter painter(this);
    painter.setBrush(palette().brush(QPalette::Text));

    painter.drawText(QPointF(7, ascent), m_text1);

    const int left = m_goFrontFlag ? 60 : 90;
    if (m_items.isEmpty())
        return;

    qDebug() << "pt.x()########" << left + 45;
    qDebug() << "pt.y()########" << 0;
    qDebug() << "height########" << 12;

    const QPointF leftArrow[3] = {QPointF(left + 50, 9), QPointF(left + 57, 5),
                                  QPointF(left + 57, 13)};
    painter.drawPolygon(leftArrow, 3, Qt::OddEvenFill);

    const int itemX = left + 57 + m_interSpace + 4;
    painter.setFont(QFont(QStringLiteral("nits")));
    painter.drawText(QPointF(itemX, ascent), getCurItem());

    const int rightX = m_goFrontFlag ? 205 : 198;
    qDebug() << "rX##########" << rightX;
    const QPointF rightArrow[3] = {QPointF(rightX, 5), QPointF(rightX, 13), QPointF(rightX + 7, 9)};
    painter.drawPolygon(rightArrow, 3, Qt::OddEvenFill);
    fprintf(stderr, "========================%s %d rX= %ld,itemX =%ld\n", "paintEvent", 253,
            static_cast<long>(rightX), static_cast<long>(itemX));
    painter.drawPolygon(leftArrow, 3, Qt::OddEvenFill);
}
