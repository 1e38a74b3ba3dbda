#include "widgets/yesnoselect.h"

#include <QColor>
#include <QDebug>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QPointF>

#include <cstdio>
#include <utility>

YesnoSelect::YesnoSelect(QString question, QString first, QString second, QWidget *parent)
    : QDialog(parent), m_question(std::move(question)), m_first(std::move(first)),
      m_second(std::move(second))
{
    move(0, 0);
    setWindowFlags(Qt::FramelessWindowHint);
    m_select = 0;
    m_value = 0;
    setGeometry(0, 0, 256, 64);
}

int YesnoSelect::getValue()
{
    return m_value;
}

void YesnoSelect::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
        // both answers accept; the caller tells them apart by getValue()
        m_value = m_select == 0 ? 0 : 1;
        done(1);
        break;
    case Qt::Key_Escape:
        m_value = 2;
        done(0);
        break;
    case Qt::Key_Left:
        if (m_select == 1)
            m_select = 0;
        update();
        break;
    case Qt::Key_Right:
        if (m_select == 0)
            m_select = 1;
        update();
        break;
    default:
        QDialog::keyPressEvent(event);
        break;
    }
}

void YesnoSelect::paintEvent(QPaintEvent *)
{
    const int w = width();
    setFont(QFont(QStringLiteral("nits")));
    const QFontMetrics metrics(font());
    const int questionWidth = metrics.horizontalAdvance(m_question);
    const int ascent = metrics.ascent();
    const int height = metrics.height();

    QPainter painter(this);
    int lineY;
    if (m_question.length() < 34) {
        fprintf(stderr, "\n %s %d\n", "paintEvent", 103);
        // NOLINTNEXTLINE(bugprone-integer-division): whole pixels, as the pen draws it
        painter.drawText(QPointF(qreal((w - questionWidth) / 2), ascent + 13), m_question);
        lineY = ascent + 19;
    } else {
        // too long for one line of the screen: wrapped into the upper box
        fprintf(stderr, "\n %s %d\n", "paintEvent", 109);
        painter.drawText(QRect(1, 1, 246, 40), Qt::AlignCenter | Qt::TextWordWrap, m_question);
        lineY = ascent + 24;
    }

    const int firstWidth = metrics.horizontalAdvance(m_first);
    const int left = w / 2 - firstWidth;
    painter.drawText(QRect(left - 4, lineY, firstWidth, height), Qt::AlignCenter, m_first);
    painter.drawText(QRect(w / 2 + 18, lineY, metrics.horizontalAdvance(m_second), height),
                     Qt::AlignCenter, m_second);

    painter.setBrush(palette().brush(QPalette::Text));
    painter.setPen(QColor::fromRgb(6));
    if (m_select == 0) {
        const QPointF mark[3] = {QPointF(left - 18, lineY + 3), QPointF(left - 18, lineY + 13),
                                 QPointF(left - 8, lineY + 8)};
        painter.drawPolygon(mark, 3);
    } else {
        // NOLINTBEGIN(bugprone-integer-division): whole pixels, as the pen draws it
        const QPointF mark[3] = {QPointF(qreal(w / 2 + 4), lineY + 3),
                                 QPointF(qreal(w / 2 + 4), lineY + 13),
                                 QPointF(qreal(w / 2 + 14), lineY + 8)};
        // NOLINTEND(bugprone-integer-division)
        painter.drawPolygon(mark, 3);
    }
}

void YesnoSelect::showEvent(QShowEvent *event)
{
    qDebug() << "in YesnoSelect showEvent";
    QDialog::showEvent(event);
}

void YesnoSelect::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
}
