#pragma once

#include "testdeviceroot.h"

#include <QEvent>
#include <QImage>
#include <QObject>
#include <QPixmap>
#include <QString>
#include <QWidget>

// Grabs a widget as the screen would show it and keeps the picture for people to look at.
inline QImage shoot(QWidget &widget, const QString &name)
{
    const QPixmap pixmap = widget.grab();
    pixmap.save(screensDir() + QStringLiteral("/widgets_") + name + QStringLiteral(".png"));
    return pixmap.toImage();
}

// White text on black: a lit pixel is a drawn one.
inline bool lit(const QImage &image, int x, int y)
{
    return qGray(image.pixel(x, y)) > 128;
}

// Counts the events of one type a widget gets.
class EventCounter : public QObject
{
public:
    EventCounter(QWidget *widget, QEvent::Type type) : m_type(type)
    {
        widget->installEventFilter(this);
    }
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == m_type)
            ++count;
        return false;
    }

private:
    QEvent::Type m_type;
};
