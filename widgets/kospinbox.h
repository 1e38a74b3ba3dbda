#pragma once

#include "widgets/spinitems.h"

// The standard visible option row: caption at the left, the value between two triangles that
// tell the user Left/Right change it. Wraps in both directions.
class KoSpinBox : public SpinItems
{
    Q_OBJECT

public:
    explicit KoSpinBox(QWidget *parent = nullptr);

    void moveNext() override;
    void movePrev() override;
    void setCurIndex(int i) override;
    // Only the widget font: the caption follows it, so a highlighted row turns bold.
    void setTextFont(QFont &font) override;

    // Moves the value block left for good; the argument is not looked at.
    void setGoFrontFlag(bool flag);
    int getSizeItems();
    // Drops the last value without touching the current index. Not on an empty row.
    void deleteLast();
    int getCurIndex();
    void showText();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_goFrontFlag = false;
};
