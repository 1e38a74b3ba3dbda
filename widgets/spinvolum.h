#pragma once

#include "widgets/spinitems.h"

class QProgressBar;

// The read-aloud volume row: caption and value, a level bar between two triangles. Does not
// wrap.
class SpinVolum : public SpinItems
{
    Q_OBJECT

public:
    explicit SpinVolum(QWidget *parent = nullptr);

    void moveNext() override;
    void movePrev() override;
    void setCurIndex(int i) override;
    void setTextFont(QFont &font) override;

    // Places the bar at the position showText() found last and shows the level.
    void showSpin();
    // Draws an unselected row and computes where the bar goes.
    void showText();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_barWidth = 70;
    QProgressBar *m_progress = nullptr;
    int m_barX = 0;
    int m_barY = 0;
    int m_leftX = 0;
    int m_rightX = 0;
    bool m_painting = false;
};
