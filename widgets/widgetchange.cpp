#include "widgets/widgetchange.h"

WidgetChange *WidgetChange::myChange = nullptr;

WidgetChange *WidgetChange::instance()
{
    if (!myChange)
        myChange = new WidgetChange;
    return myChange;
}

void WidgetChange::bringUp(QWidget *widget)
{
    widget->setEnabled(true);
    widget->setVisible(true);
    widget->setFocus(Qt::OtherFocusReason);
}

void WidgetChange::takeDown(QWidget *widget)
{
    widget->setVisible(false);
    widget->setEnabled(false);
}

void WidgetChange::Go2PrevWidget(QWidget *from, QWidget *to)
{
    if (!from)
        return;
    takeDown(from);
    m_prevWidget = nullptr;
    if (to) {
        bringUp(to);
        m_curWidget = to;
    }
}

void WidgetChange::Go2NewWidget(QWidget *from, QWidget *to)
{
    if (from)
        takeDown(from);
    m_prevWidget = from;
    if (to) {
        bringUp(to);
        m_curWidget = to;
    }
}

void WidgetChange::Go2NewWidget(QWidget *to)
{
    if (m_curWidget)
        takeDown(m_curWidget);
    if (to) {
        bringUp(to);
        m_curWidget = to;
    }
}

QWidget *WidgetChange::getCurWidget()
{
    return m_curWidget;
}

QWidget *WidgetChange::getPrevWidget()
{
    return m_prevWidget;
}
