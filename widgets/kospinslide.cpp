#include "widgets/kospinslide.h"

#include <QDebug>
#include <QFontMetrics>
#include <QPainter>
#include <QPointF>
#include <QProgressBar>
#include <QSlider>

#include <cstdio>

KoSpinSlide::KoSpinSlide(QWidget *parent) : SpinItems(parent)
{
    m_progress = new QProgressBar(this);
    m_progress->setStyleSheet(
        QStringLiteral("QProgressBar{padding: 0px ;margin: 0px ;}QProgressBar::chunk "
                       "{background-color: white;width: 8px;margin: 3px;}"));
    m_progress->setTextVisible(false);
    m_progress->setRange(0, 15);

    m_slider = new QSlider(Qt::Horizontal, this);
    m_slider->setMinimum(0);
    m_slider->setMaximum(30);
    m_slider->setSingleStep(6);
    m_slider->setStyleSheet(QStringLiteral(
        "QSlider::handle:horizontal{width:8px;background-color:rgb(255,255,255);margin:-3px "
        "0px -3px 0px;border-radius:4px;}QSlider::groove:horizontal{height:2px;background-"
        "color:rgb(219,219,219);}"));

    // a placeholder every menu replaces
    setText1(QStringLiteral("teset"));
    showText();
    showSpin();
    showSlider();
    m_progress->setVisible(false);
}

void KoSpinSlide::moveNext()
{
    if (m_curIndex == m_items.size() - 1)
        return;
    ++m_curIndex;
    showSpin();
    m_progress->setVisible(false);
    showText();
    showSlider();
    update();
}

void KoSpinSlide::movePrev()
{
    if (m_curIndex == 0)
        return;
    --m_curIndex;
    showSpin();
    showText();
    m_progress->setVisible(false);
    showSlider();
    update();
}

void KoSpinSlide::setCurIndex(int i)
{
    if (i < 0 || i >= m_items.size())
        return;
    m_curIndex = i;
    showSpin();
    m_progress->setVisible(false);
    showText();
    showSlider();
    update();
}

void KoSpinSlide::setTextFont(QFont &font)
{
    setFont(font);
}

void KoSpinSlide::showSpin()
{
    qDebug() << "in showSpin----curIndex:" << m_curIndex;
    qDebug() << "speedBarX:" << m_speedBarX;
    qDebug() << "speedBarY:" << m_speedBarY;
    qDebug() << "barWidth:" << m_barWidth;
    m_progress->setGeometry(m_speedBarX + 3, m_speedBarY, m_barWidth - 3, 18);
    m_progress->setValue(m_curIndex * 3);
}

void KoSpinSlide::showSlider()
{
    qDebug() << "in showSlider curIndex-----=========------" << m_curIndex;
    m_slider->setGeometry(m_speedBarX - 2, m_speedBarY - 3, 62, 18);
    qDebug() << "in showSlider value-----=========------" << m_curIndex * 6;
    m_slider->setValue(m_curIndex * 6);
}

void KoSpinSlide::showText()
{
    // Outside a paint event the row only works out where its slider goes.
    QPainter painter;
    if (m_painting) {
        painter.begin(this);
        painter.setBrush(palette().brush(QPalette::Text));
    }

    // The slider's place does not depend on the highlight: a row first shown highlighted would
    // otherwise leave its slider at the top left, across the caption it draws once unselected.
    const int s = m_barWidth + m_interSpace + 10;
    m_speedBarX = (232 - s) + m_interSpace - 10;
    m_speedBarY = 7;
    // the highlighted row shows the slider alone
    if (m_select)
        return;

    const long x = drawCaption(painter, true);

    // the arrows of this row are left to the slider's look; their places only go to the log
    const long itemX = x + m_interSpace;
    const QPointF rightArrow[3] = {QPointF(232, 5), QPointF(232, 13), QPointF(239, 9)};
    Q_UNUSED(rightArrow)
    fprintf(stderr, "========================%s %d rX= %ld,itemX =%ld\n", "showText", 219, 232L,
            itemX);
    const QPointF leftArrow[3] = {QPointF(237 - s, 9), QPointF(244 - s, 5), QPointF(244 - s, 13)};
    Q_UNUSED(leftArrow)

    fprintf(stderr, "========================%s %d speedBarX= %ld,itemX =%ld\n", "showText", 231,
            static_cast<long>(m_speedBarX), itemX);
    qDebug() << "speedBarX" << m_speedBarX;
}

void KoSpinSlide::paintEvent(QPaintEvent *)
{
    m_painting = true;
    showText();
    m_painting = false;
}
