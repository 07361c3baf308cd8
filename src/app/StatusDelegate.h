#pragma once

#include <QStyledItemDelegate>

// Draws the status column: the state in words and, for a finished
// conversion, a Show button drawn with the button's own colours, so it stays
// readable on a selected row and every row keeps one height.
class StatusDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    // Item data in the status column: whether the row has a file to show.
    static constexpr int showableRole = Qt::UserRole + 2;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

protected:
    // A status is a sentence: when it is cut, its start stays.
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

public:
    // Where the Show button sits in a cell.
    static QRect buttonRect(const QStyleOptionViewItem &option);

Q_SIGNALS:
    void showClicked(const QModelIndex &index);
};
