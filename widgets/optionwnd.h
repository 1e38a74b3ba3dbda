#pragma once

#include <QWidget>

// An empty full-screen page of the kit, kept for screens that build on it.
class OptionWnd : public QWidget
{
    Q_OBJECT

public:
    explicit OptionWnd(QWidget *parent = nullptr);
};
