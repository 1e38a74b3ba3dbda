#include "widgets/messagedialog.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QTimerEvent>

#include <utility>

// Stands for the dialog's designer form, which has no child widgets of its own.
struct MessageDialogForm
{
    void setupUi(QDialog *dialog)
    {
        if (dialog->objectName().isEmpty())
            dialog->setObjectName(QStringLiteral("MessageDialog"));
        dialog->resize(256, 64);
        retranslateUi(dialog);
        QMetaObject::connectSlotsByName(dialog);
    }

    void retranslateUi(QDialog *dialog)
    {
        dialog->setWindowTitle(QCoreApplication::translate("MessageDialog", "Dialog"));
    }
};

MessageDialog::MessageDialog(QWidget *parent, QString message, int timeoutMs)
    : QDialog(parent), ui(new MessageDialogForm), m_timeout(timeoutMs),
      m_message(std::move(message))
{
    ui->setupUi(this);
    move(0, 0);
    setWindowFlags(Qt::FramelessWindowHint);
}

MessageDialog::~MessageDialog() = default;

void MessageDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    // every showing waits the full time again
    if (m_timeout != 0)
        m_timerId = startTimer(m_timeout);
}

void MessageDialog::hideEvent(QHideEvent *event)
{
    QDialog::hideEvent(event);
    if (m_timeout != 0 && m_timerId != 0) {
        killTimer(m_timerId);
        m_timerId = 0;
    }
}

void MessageDialog::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timerId)
        return;
    // indistinguishable from Return for the caller
    emit finished();
    done(1);
}

void MessageDialog::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        emit finished();
        done(0);
        break;
    case Qt::Key_Return:
        emit finished();
        done(1);
        break;
    default:
        QDialog::keyPressEvent(event);
        break;
    }
}

void MessageDialog::paintEvent(QPaintEvent *)
{
    setFont(QFont(QStringLiteral("nits")));
    QPainter painter(this);
    // clipped by the box, never scrolled
    painter.drawText(QRect(0, 0, 246, 60), Qt::AlignCenter | Qt::TextWordWrap, m_message);
}

void MessageDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}
