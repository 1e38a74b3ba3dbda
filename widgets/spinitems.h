#pragma once

#include <QFont>
#include <QString>
#include <QVector>
#include <QWidget>

#include <memory>

class QPainter;
struct SpinItemsForm;

// One row of an option menu: a caption and an ordered list of values of which one is current.
// The row takes no input of its own; the menu forwards Left/Right and calls trigger() so that
// listeners learn the new value. The plain row paints nothing, the subclasses draw themselves.
class SpinItems : public QWidget
{
    Q_OBJECT

public:
    explicit SpinItems(QWidget *parent = nullptr);
    ~SpinItems() override;

    void addItem(const QString &item);
    void addItem(const QVector<QString> &items);

    // Next/previous value, wrapping around. Never call them on a row without values.
    virtual void moveNext();
    virtual void movePrev();
    // Only 0 <= i < count is taken; anything else is ignored without a repaint.
    virtual void setCurIndex(int i);
    virtual void setTextFont(QFont &font);

    int getCurIndex();
    // The current value, empty for a row without values.
    QString getCurItem();

    // Whether the row is the menu's highlighted one; the menu repaints, not the row.
    void setSelect(bool select);
    void setText1(const QString &text);
    QString getText1();
    void setInterSpace(int space);
    void setLeftRightClick(bool click);
    bool isLeftRightClick();

signals:
    void triggered(int id, QString content);

public slots:
    // Announces (id, content) unchanged through triggered().
    void trigger(int id, const QString &content);

protected:
    // Draws "caption value" from x 7 on the baseline (when the painter is active) and returns
    // the x where the value block begins by the rows' rule: inter-space x 9, +11 without values,
    // (length - 2) average characters for a text longer than 9. diagnostics: the sliders' log
    // lines.
    long drawCaption(QPainter &painter, bool diagnostics);

    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

    std::unique_ptr<SpinItemsForm> ui;
    QVector<QString> m_items;
    int m_curIndex = 0;
    bool m_select = true;
    QString m_text1;
    int m_interSpace = 5;
    bool m_leftRightClick = true;
    QFont m_textFont;
};
