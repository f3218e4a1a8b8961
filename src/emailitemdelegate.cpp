#include "emailitemdelegate.h"

#include <host/gui/models/itemroles.h>
#include <shared/dbkeys.h>

#include <QFontMetrics>
#include <QPainter>

EmailItemDelegate::EmailItemDelegate(QObject *parent)
    : StyledItemDelegate(parent)
{}

EmailItemDelegate::EmailItemDelegate(const QMargins &margins, QObject *parent)
    : StyledItemDelegate(margins, parent)
{}

QString EmailItemDelegate::emailText(const QModelIndex &index)
{
    return index.siblingAtColumn(0)
        .data(ItemRoles::Parameters)
        .toHash()
        .value(QLatin1String(db::worker::EMAIL))
        .toString()
        .trimmed();
}

void EmailItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const
{
    if (index.column() != 1) {
        StyledItemDelegate::paint(painter, option, index);
        return;
    }
    painter->save();
    drawBackground(painter, option, index);
    drawStyledBackground(painter, option, index);
    const QRect rect(QPoint(option.rect.left() + leftMargin(), option.rect.top() + topMargin()),
                     QPoint(option.rect.right() - rightMargin() - spacing() - 1,
                            option.rect.bottom() - bottomMargin() - spacing() - 1));
    painter->drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, emailText(index));
    painter->restore();
}

QSize EmailItemDelegate::sizeHint(const QStyleOptionViewItem &option,
                                  const QModelIndex &index) const
{
    if (index.column() != 1)
        return StyledItemDelegate::sizeHint(option, index);
    const QSize text = QFontMetrics(option.font).size(Qt::TextSingleLine, emailText(index));
    return QSize(text.width() + leftMargin() + rightMargin() + spacing(),
                 qMax(iconSize().height(), text.height()) + topMargin() + spacing()
                     + bottomMargin());
}
