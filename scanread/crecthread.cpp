#include "scanread/crecthread.h"

#include "scanread/myedit.h"
#include "storage/threadhandoff.h"

CRecThread::CRecThread(MyEdit *edit, QObject *parent) : QThread(parent), m_edit(edit) {}

void CRecThread::run()
{
    _stImg *img = m_img;
    m_img = nullptr;
    m_edit->RecThread(img);
    // what the view reads once this thread has finished
    handOverThread(this);
}
