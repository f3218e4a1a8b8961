#pragma once

#include <QStyledItemDelegate>

// Draws the side list of a PageListWizard: a long page name wraps onto the next line instead of
// being cut, since the list is narrow and the names of similar pages differ only at their end.
class PageListDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;
};
