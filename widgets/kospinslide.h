#pragma once

#include "widgets/spinitems.h"

class QProgressBar;
class QSlider;

// The option row for a six-step level: caption and value as text, a small slider at the right.
// Does not wrap.
class KoSpinSlide : public SpinItems
{
    Q_OBJECT

public:
    explicit KoSpinSlide(QWidget *parent = nullptr);

    void moveNext() override;
    void movePrev() override;
    void setCurIndex(int i) override;
    void setTextFont(QFont &font) override;

    // Places the (hidden) progress bar and the slider at the position showText() found last.
    void showSpin();
    void showSlider();
    // Draws caption and value of an unselected row and computes where the slider goes.
    void showText();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_barWidth = 70;
    QProgressBar *m_progress = nullptr;
    QSlider *m_slider = nullptr;
    int m_speedBarX = 0;
    int m_speedBarY = 0;
    bool m_painting = false;
};
