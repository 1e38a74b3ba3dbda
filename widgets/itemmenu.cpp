#include "widgets/itemmenu.h"

#include "storage/devicepath.h"
#include "widgets/spinitems.h"
#include "widgets/widgetchange.h"

#include <QApplication>
#include <QDebug>
#include <QKeyEvent>
#include <QPainter>
#include <QPixmap>

ItemMenu::ItemMenu(QWidget *parent) : QWidget(parent)
{
    showPage();
}

ItemMenu::~ItemMenu()
{
    qDeleteAll(m_items);
}

void ItemMenu::addItem(SpinItems *item)
{
    m_items.append(item);
    showPage();
}

SpinItems *ItemMenu::addItem(const QString &caption, const QVector<QString> &values)
{
    auto *item = new SpinItems(this);
    item->setText1(caption);
    item->addItem(values);
    m_items.append(item);
    showPage();
    return item;
}

void ItemMenu::setCurIndex(int i)
{
    if (i < 0 || i >= m_items.size())
        return;
    m_curIndex = i;
    qDebug() << "index===========" << i;
    showPage();
    update();
}

int ItemMenu::getCurIndex()
{
    return m_curIndex;
}

void ItemMenu::setEscGoPreFlag(bool flag)
{
    m_ESCpreFlag = flag;
}

void ItemMenu::setGoInFlag(bool flag)
{
    m_goInFlag = flag;
}

void ItemMenu::setMoveLRFlag(bool flag)
{
    m_moveLRFlag = flag;
}

void ItemMenu::setQuickFlag(bool flag)
{
    m_quickSetFlag = flag;
}

void ItemMenu::setPrevWidget(QWidget *widget)
{
    m_prevWidget = widget;
}

void ItemMenu::setPrevQuickWidget(QWidget *widget)
{
    m_prevQuickWidget = widget;
}

QWidget *ItemMenu::getPrevWidget()
{
    return m_prevWidget;
}

QWidget *ItemMenu::getMessWidget()
{
    return m_messWidget;
}

void ItemMenu::hideAll()
{
    for (SpinItems *item : qAsConst(m_items)) {
        item->setVisible(false);
        item->setEnabled(false);
    }
}

void ItemMenu::showPage()
{
    qDebug() << "in ItemMenu::showPage" << m_items.size();
    hideAll();
    if (m_items.isEmpty())
        return;

    const int showFrom = qMax(0, m_curIndex / m_pageSize * m_pageSize);
    const int showTo = qMin(m_items.size(), showFrom + m_pageSize);
    qDebug() << "in ItemMenu::showPage showFrom" << showFrom;
    qDebug() << "in ItemMenu::showPage showTo" << showTo;

    // every row is as big as the first one
    const int width = m_items.first()->width();
    const int height = m_items.first()->height();
    if (showFrom >= showTo) {
        update();
        return;
    }

    int y = 4;
    for (int i = showFrom; i < showTo; ++i) {
        SpinItems *item = m_items.at(i);
        item->setSelect(false);
        QFont font;
        if (i == m_curIndex) {
            item->setSelect(true);
            font = QFont(QStringLiteral("nitsbold"));
            font.setWeight(QFont::Bold);
        } else {
            font = QFont(QStringLiteral("nits"));
            font.setWeight(QFont::Normal);
        }
        item->setTextFont(font);
        qDebug() << "x$$$$$$$$$$$$$$$$$:" << 40;
        qDebug() << "y$$$$$$$$$$$$$$$$$:" << y;
        qDebug() << "width$$$$$$$$$$$$$$$$$:" << width;
        qDebug() << "heght$$$$$$$$$$$$$$$$$:" << height;
        item->setGeometry(40, y, width, height);
        y += height;
        // stays disabled: rows take no input of their own
        item->setVisible(true);
    }
    update();
}

void ItemMenu::paintEvent(QPaintEvent *)
{
    // a missing picture draws nothing
    const QPixmap background(devicePath(QStringLiteral("/apps/res/pics/settings2.png")));
    QPainter painter(this);
    painter.drawPixmap(0, 10, background);
}

void ItemMenu::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
}

void ItemMenu::hideEvent(QHideEvent *)
{
    qDebug() << "in TTSConfig::hideEvent&&&&&&&&&&&&";
}

void ItemMenu::keyPressEvent(QKeyEvent *event)
{
    // Only the navigation block of keys counts; everything else is swallowed, not passed on.
    const int key = event->key();
    if (key < Qt::Key_Escape || key > Qt::Key_Down)
        return;

    switch (key) {
    case Qt::Key_Up:
        if (m_curIndex > 0) {
            --m_curIndex;
            showPage();
        }
        break;
    case Qt::Key_Down:
        if (m_curIndex < m_items.size() - 1) {
            ++m_curIndex;
            showPage();
        }
        break;
    case Qt::Key_Left: {
        if (m_items.isEmpty())
            break;
        SpinItems *item = m_items.at(m_curIndex);
        if (m_moveLRFlag)
            item->movePrev();
        else if (item->getCurIndex() == 0)
            break; // a two-valued row is already on its left value
        item->trigger(item->getCurIndex(), item->getCurItem());
        break;
    }
    case Qt::Key_Right: {
        if (m_items.isEmpty())
            break;
        SpinItems *item = m_items.at(m_curIndex);
        if (m_moveLRFlag)
            item->moveNext();
        else if (item->getCurIndex() == 1)
            break; // a two-valued row is already on its right value
        item->trigger(item->getCurIndex(), item->getCurItem());
        break;
    }
    case Qt::Key_Return:
        returnPressed();
        break;
    case Qt::Key_Escape:
        escapePressed();
        break;
    default:
        break;
    }
}

void ItemMenu::returnPressed()
{
    qDebug() << "ItemMenu Key_Return";
    if (m_goInFlag) {
        emit triggergoin(m_curIndex);
        m_quickSetFlag = false;
        return;
    }
    emit okPressedLan(m_curIndex, QString());

    // the listeners hear about the exit before the screen changes
    if (!m_quickSetFlag) {
        qDebug() << "false";
        emit okDateTimePressed(0, QString());
        WidgetChange::instance()->Go2PrevWidget(this, m_prevWidget);
        m_messWidget = m_prevWidget;
        emit escPressed();
    } else {
        qDebug() << "m_quickSetFlag true";
        WidgetChange::instance()->Go2PrevWidget(this, m_prevQuickWidget);
        m_messWidget = m_prevQuickWidget;
        emit okPressed(0, QString());
        emit okPressedForQuick(0, QString());
        emit escPressed();
    }
    m_quickSetFlag = false;
}

void ItemMenu::escapePressed()
{
    qDebug() << "ItemMenu Key_Escape m_ESCpreFlag" << m_ESCpreFlag;
    emit okPressedLan(m_curIndex, QString());

    if (!m_ESCpreFlag) {
        // the listener decides what leaving means; the menu stays as it is
        if (!m_prevWidget)
            qDebug() << "closeAllWindows";
        emit escPressed();
        return;
    }

    // an options screen with nowhere to go back to is the whole program
    if (!m_prevWidget) {
        qDebug() << "closeAllWindows";
        QApplication::closeAllWindows();
    }
    // the screen changes before the listeners hear about it
    WidgetChange::instance()->Go2PrevWidget(this, m_prevWidget);
    m_messWidget = m_prevWidget;
    emit okDateTimePressed(0, QString());
    emit escPressed();
}
