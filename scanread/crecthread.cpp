#include "scanread/crecthread.h"

#include "scanread/myedit.h"

CRecThread::CRecThread(MyEdit *edit, QObject *parent) : QThread(parent), m_edit(edit) {}

void CRecThread::run()
{
    _stImg *img = m_img;
    m_img = nullptr;
    m_edit->RecThread(img);
}
