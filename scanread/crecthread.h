#pragma once

#include <QThread>

class MyEdit;
struct _stImg; // NOLINT(bugprone-reserved-identifier): the record's name on the device

// Runs one recognition of the view off the GUI thread.
class CRecThread : public QThread
{
    Q_OBJECT

public:
    explicit CRecThread(MyEdit *edit, QObject *parent = nullptr);

    // the image the next run recognises; the run frees it
    void setImg(_stImg *img) { m_img = img; }

protected:
    void run() override;

private:
    MyEdit *m_edit;
    _stImg *m_img = nullptr;
};
