#pragma once

#include <QString>
#include <QWidget>

// A small framed box with one centred line, shown while seeking.
class SeekTipWnd : public QWidget
{
    Q_OBJECT

public:
    explicit SeekTipWnd(QWidget *parent = nullptr);

    // Stores the text and shows the box.
    void showText(QString text);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text;
};
