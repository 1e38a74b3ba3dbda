#pragma once

#include <QString>
#include <QVector>
#include <QWidget>

class SpinItems;

// The option screen: rows shown three at a time over the settings picture. Up/Down move the
// highlight without wrapping, Left/Right change the highlighted row's value, Return and Escape
// hand the screen back to the previous widget and announce the exit.
class ItemMenu : public QWidget
{
    Q_OBJECT

public:
    explicit ItemMenu(QWidget *parent = nullptr);
    ~ItemMenu() override;

    // Takes ownership of the row, which should already have the menu as its parent.
    void addItem(SpinItems *item);
    // A plain (invisible) row with the caption and values, owned by the menu.
    SpinItems *addItem(const QString &caption, const QVector<QString> &values);

    // Only 0 <= i < row count is taken.
    void setCurIndex(int i);
    int getCurIndex();

    void setEscGoPreFlag(bool flag);
    void setGoInFlag(bool flag);
    void setMoveLRFlag(bool flag);
    // One-shot: every Return clears it.
    void setQuickFlag(bool flag);

    void setPrevWidget(QWidget *widget);
    void setPrevQuickWidget(QWidget *widget);
    QWidget *getPrevWidget();
    // The widget that was last handed the screen on leaving the menu.
    QWidget *getMessWidget();

    void hideAll();

signals:
    void triggergoin(int index);
    void okPressed(int, QString);
    void okDateTimePressed(int, QString);
    void escPressed();
    void okPressedForQuick(int, QString);
    void signalUp(int, QString);
    void signalDown(int, QString);
    void signalShow(int, QString);
    void okPressedLan(int, QString);

public slots:
    // Lays out the page of the current row and hides every other row.
    virtual void showPage();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void returnPressed();
    void escapePressed();

    QVector<SpinItems *> m_items;
    int m_curIndex = 0;
    const int m_pageSize = 3;
    QWidget *m_prevWidget = nullptr;
    QWidget *m_prevQuickWidget = nullptr;
    QWidget *m_messWidget = nullptr;
    bool m_quickSetFlag = false;
    bool m_moveLRFlag = true;
    bool m_goInFlag = false;
    bool m_ESCpreFlag = true;
};
