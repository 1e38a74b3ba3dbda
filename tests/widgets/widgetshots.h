#pragma once

#include "testdeviceroot.h"

#include <QEvent>
#include <QImage>
#include <QPixmap>
#include <QTestEventList>
#include <QWidget>

// Grabs a widget as the screen would show it and keeps the picture for people to look at.
inline QImage shoot(QWidget &widget, const QString &name)
{
    const QPixmap pixmap = widget.grab();
    pixmap.save(screensDir() + QStringLiteral("/widgets_") + name + QStringLiteral(".png"));
    return pixmap.toImage();
}

// White on black: a lit pixel is a drawn one.
inline bool lit(const QImage &image, int x, int y)
{
    return qGray(image.pixel(x, y)) > 128;
}

inline QTestEventList keys(std::initializer_list<Qt::Key> list)
{
    QTestEventList events;
    for (Qt::Key key : list)
        events.addKeyClick(key);
    return events;
}

// Counts the events of one type a widget gets.
struct EventCounter : QObject
{
    EventCounter(QWidget *widget, QEvent::Type type) : type(type)
    {
        widget->installEventFilter(this);
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == type;
        return false;
    }
    QEvent::Type type;
    int count = 0;
};
