#pragma once

#include <host/gui/widgets/styleditemdelegate.h>

// The painter of the organisation tree in the new-mobile-users wizard: column 1 shows the
// employee's e-mail address (trimmed, from the row's parameters) instead of the object type
// that the model holds there; every other column is drawn as the studio draws its trees.
class EmailItemDelegate : public StyledItemDelegate
{
    Q_OBJECT
public:
    explicit EmailItemDelegate(QObject *parent = nullptr);
    EmailItemDelegate(const QMargins &margins, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // The address shown in the row of `index`; empty for anything but an employee with one.
    static QString emailText(const QModelIndex &index);
};
