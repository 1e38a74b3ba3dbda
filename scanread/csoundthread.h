#pragma once

#include <QMutex>
#include <QString>
#include <QThread>
#include <QVector>

class MyEdit;

// Reads the view's texts aloud one after the other, newest first, and ends when none is left.
class CSoundThread : public QThread
{
    Q_OBJECT

public:
    explicit CSoundThread(MyEdit *edit, QObject *parent = nullptr);

    void setContent(QString content);

protected:
    void run() override;

private:
    MyEdit *m_edit;
    QString m_content;
    QVector<QString> m_queue;
    QMutex m_lock;
};
