#pragma once

#include <QPointer>
#include <QWidget>

// Hands the display and the key focus from one full-screen widget to the next. One instance
// for the process, made by the first user through myChange and never freed.
class WidgetChange
{
public:
    static WidgetChange *myChange;
    // The instance, created on first use.
    static WidgetChange *instance();

    // Nothing at all when from is null; otherwise from goes away, the previous widget is
    // forgotten and to (if any) comes up with the focus.
    void Go2PrevWidget(QWidget *from, QWidget *to);
    // from (if any) goes away and is remembered as the previous widget; to comes up.
    void Go2NewWidget(QWidget *from, QWidget *to);
    // The current widget goes away and to comes up; the previous widget is untouched.
    void Go2NewWidget(QWidget *to);

    QWidget *getCurWidget();
    QWidget *getPrevWidget();

private:
    static void bringUp(QWidget *widget);
    static void takeDown(QWidget *widget);

    // guarded, so a widget destroyed behind the switcher's back is seen as gone
    QPointer<QWidget> m_curWidget;
    QPointer<QWidget> m_prevWidget;
};
