#include "widgets/spinitems.h"

#include <QCoreApplication>
#include <QDebug>
#include <QEvent>
#include <QFontMetrics>
#include <QLabel>
#include <QPainter>

#include <cstdio>

// Stands for the row's designer form: it owns the one label and sets its texts.
struct SpinItemsForm
{
    QLabel *label = nullptr;

    void setupUi(QWidget *form)
    {
        if (form->objectName().isEmpty())
            form->setObjectName(QStringLiteral("SpinItems"));
        form->resize(241, 21);
        QFont font;
        font.setPointSize(6);
        form->setFont(font);
        label = new QLabel(form);
        label->setObjectName(QStringLiteral("label"));
        label->setGeometry(QRect(30, 0, 71, 21));
        QFont labelFont;
        labelFont.setPointSize(12);
        label->setFont(labelFont);
        retranslateUi(form);
        QMetaObject::connectSlotsByName(form);
    }

    void retranslateUi(QWidget *form)
    {
        form->setWindowTitle(QCoreApplication::translate("SpinItems", "Form"));
        label->setText(QString());
    }
};

SpinItems::SpinItems(QWidget *parent) : QWidget(parent), ui(new SpinItemsForm)
{
    ui->setupUi(this);
}

SpinItems::~SpinItems() = default;

void SpinItems::addItem(const QString &item)
{
    m_items.append(item);
}

void SpinItems::addItem(const QVector<QString> &items)
{
    for (const QString &item : items)
        m_items.append(item);
}

void SpinItems::moveNext()
{
    m_curIndex = (m_curIndex + 1) % m_items.size();
    update();
}

void SpinItems::movePrev()
{
    m_curIndex = (m_curIndex - 1 + m_items.size()) % m_items.size();
    update();
}

void SpinItems::setCurIndex(int i)
{
    if (i < 0 || i >= m_items.size())
        return;
    m_curIndex = i;
    update();
}

void SpinItems::setTextFont(QFont &font)
{
    setFont(font);
    m_textFont = font;
}

int SpinItems::getCurIndex()
{
    return m_curIndex;
}

QString SpinItems::getCurItem()
{
    if (m_curIndex < 0 || m_curIndex >= m_items.size())
        return QString();
    return m_items.at(m_curIndex);
}

void SpinItems::setSelect(bool select)
{
    m_select = select;
}

void SpinItems::setText1(const QString &text)
{
    qDebug() << "in SpinItems::setText1" << text;
    m_text1 = text;
}

QString SpinItems::getText1()
{
    return m_text1;
}

void SpinItems::setInterSpace(int space)
{
    m_interSpace = space;
}

void SpinItems::setLeftRightClick(bool click)
{
    m_leftRightClick = click;
}

bool SpinItems::isLeftRightClick()
{
    return m_leftRightClick;
}

void SpinItems::trigger(int id, const QString &content)
{
    emit triggered(id, content);
}

void SpinItems::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void SpinItems::paintEvent(QPaintEvent *)
{
    qDebug() << "in SpinItems::paintEvent";
    // The plain row draws nothing: the visible drawing belongs to the subclasses and the
    // menu's picture shows through. The widest value is measured for them to compare with.
    const QFontMetrics metrics(font());
    int widest = 0;
    for (const QString &item : qAsConst(m_items))
        widest = qMax(widest, metrics.horizontalAdvance(item));
    Q_UNUSED(widest)
    QPainter painter(this);
    painter.setBrush(palette().brush(QPalette::Text));
}

long SpinItems::drawCaption(QPainter &painter, bool diagnostics)
{
    if (m_text1.isEmpty())
        return 7;
    long x = static_cast<long>(m_interSpace) * 9;
    if (m_items.isEmpty()) {
        x += 11;
        if (diagnostics)
            fprintf(stderr, "==========222==============%s %d pt.x= %ld\n", "showText", 203, x);
        return x;
    }
    if (diagnostics)
        qDebug() << "draw test================";
    const QString text = m_text1 + QLatin1Char(' ') + getCurItem();
    if (painter.isActive())
        painter.drawText(QPointF(7, QFontMetrics(font()).ascent()), text);
    if (text.length() > 9) {
        x = static_cast<long>(text.length() - 2) * QFontMetrics(font()).averageCharWidth();
        if (diagnostics)
            fprintf(stderr, "===============111===========%s %d width =%ld\n", "showText", 198, x);
    }
    return x;
}
