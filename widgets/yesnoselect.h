#pragma once

#include <QDialog>
#include <QString>

// The modal two-choice question: Left/Right move the mark between the answers, Return takes
// the marked one, Escape declines. Run it with exec() and read getValue().
class YesnoSelect : public QDialog
{
    Q_OBJECT

public:
    YesnoSelect(QString question, QString first, QString second, QWidget *parent = nullptr);

    // 0: Return on the first answer, 1: Return on the second, 2: Escape.
    int getValue();

signals:
    void signalShow(int, QString);
    void singalLR(int, QString);
    void signalEsc();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int m_select = 0;
    int m_value = 0;
    QString m_question;
    QString m_first;
    QString m_second;
};
