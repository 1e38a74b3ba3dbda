#include "scanread/csoundthread.h"

#include "scanread/myedit.h"
#include "storage/threadhandoff.h"

#include <QMutexLocker>

CSoundThread::CSoundThread(MyEdit *edit, QObject *parent) : QThread(parent), m_edit(edit) {}

void CSoundThread::setContent(QString content)
{
    m_content = content;
    const QMutexLocker locker(&m_lock);
    m_queue.append(std::move(content));
}

void CSoundThread::run()
{
    for (;;) {
        QString text;
        {
            const QMutexLocker locker(&m_lock);
            if (m_queue.isEmpty()) {
                handOverThread(this);
                return;
            }
            // the newest text is what the user asked for last
            text = m_queue.takeLast();
        }
        m_edit->Sound(text);
    }
}
