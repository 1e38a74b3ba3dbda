#pragma once

#include "scanread/myedit.h"

// The scan view with its speech links filled: texts are spoken by the speech engine, whose
// progress reports schedule the highlights, and each word is selected when its time comes.
class ScanReadEdit : public MyEdit
{
    Q_OBJECT

public:
    explicit ScanReadEdit(QWidget *parent = nullptr);
    ~ScanReadEdit() override;

    void Sound(QString &text) override;
    // runs on the speech thread: passed on to the GUI thread, in view positions
    void tirggleTTShignlight(int pos, int len, int pcmPos) override;

    // the view as it is while reading: text, and the word of the view at wordIndex (counted
    // from 0) highlighted; false when there is no such word
    bool showReading(const QString &text, int wordIndex);

public slots:
    void hignFun() override;

private:
    static void progress(void *context, int pos, int len, int pcmPos);

    std::atomic<int> m_offset{0};
};
