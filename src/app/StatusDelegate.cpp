#include "StatusDelegate.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

namespace {

QString showTitle()
{
    return QStringLiteral("Show");
}

} // namespace

QRect StatusDelegate::buttonRect(const QStyleOptionViewItem &option)
{
    const int width = option.fontMetrics.horizontalAdvance(showTitle()) + 24;
    const QRect cell = option.rect.adjusted(2, 2, -4, -2);
    return QRect(cell.right() - width + 1, cell.top(), width, cell.height());
}

void StatusDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->textElideMode = Qt::ElideRight;
}

void StatusDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                           const QModelIndex &index) const
{
    if (!index.data(showableRole).toBool()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem text = option;
    initStyleOption(&text, index);
    const QRect button = buttonRect(option);
    text.rect.setRight(button.left() - 4);
    QStyle *style = option.widget ? option.widget->style() : QApplication::style();
    // The row's background across the whole cell, then the words beside the button.
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, option.widget);
    style->drawControl(QStyle::CE_ItemViewItem, &text, painter, option.widget);

    QStyleOptionButton push;
    push.rect = button;
    push.text = showTitle();
    push.state = QStyle::State_Enabled | QStyle::State_Raised;
    push.palette = QApplication::palette(); // never the selection's colours
    push.fontMetrics = option.fontMetrics;
    style->drawControl(QStyle::CE_PushButton, &push, painter, option.widget);
}

QSize StatusDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    // Room for the button on every row, so rows never change height.
    size.setHeight(std::max(size.height(), option.fontMetrics.height() + 12));
    return size;
}

bool StatusDelegate::editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                                 const QModelIndex &index)
{
    if (event->type() == QEvent::MouseButtonRelease && index.data(showableRole).toBool()) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() == Qt::LeftButton && buttonRect(option).contains(mouse->position().toPoint())) {
            Q_EMIT showClicked(index);
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}
