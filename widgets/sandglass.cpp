#include "widgets/sandglass.h"

#include "storage/devicepath.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLabel>
#include <QMovie>

// Stands for the indicator's designer form: it owns the label the animation plays in.
struct SandGlassForm
{
    QLabel *label = nullptr;

    void setupUi(QWidget *form)
    {
        if (form->objectName().isEmpty())
            form->setObjectName(QStringLiteral("SandGlass"));
        form->resize(33, 33);
        label = new QLabel(form);
        label->setObjectName(QStringLiteral("label"));
        label->setGeometry(QRect(0, 0, 33, 33));
        retranslateUi(form);
        QMetaObject::connectSlotsByName(form);
    }

    void retranslateUi(QWidget *form)
    {
        form->setWindowTitle(QCoreApplication::translate("SandGlass", "Form"));
        label->setText(QString());
    }
};

SandGlass::SandGlass(QWidget *parent) : QWidget(parent), ui(new SandGlassForm)
{
    ui->setupUi(this);
    move(0, 0);
    setWindowFlags(Qt::FramelessWindowHint);
    // a missing picture leaves the label empty
    m_movie = new QMovie(devicePath(QStringLiteral("/apps/res/sandglass.gif")));
    ui->label->setMovie(m_movie);
    m_movie->start();
}

SandGlass::~SandGlass()
{
    m_movie->stop();
    delete m_movie;
}

void SandGlass::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}
