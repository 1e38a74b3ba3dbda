#pragma once

#include <QDialog>
#include <QString>

#include <memory>

struct MessageDialogForm;

// The modal notice: one centred message that closes on Return (result 1), on Escape (result 0)
// or by itself after the time-out (result 1, like Return). A time-out of 0 waits for a key.
class MessageDialog : public QDialog
{
    Q_OBJECT

public:
    MessageDialog(QWidget *parent, QString message, int timeoutMs);
    ~MessageDialog() override;

signals:
    // Right before the dialog closes, whatever closes it.
    void finished();

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    std::unique_ptr<MessageDialogForm> ui;
    int m_timeout;
    QString m_message;
    int m_timerId = 0;
};
