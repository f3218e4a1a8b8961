#include "pagelistdelegate.h"

#include <QTreeView>

namespace {
constexpr int verticalPadding = 5;
constexpr int horizontalPadding = 8; // the text margins of the style and the icon's spacing
} // namespace

void PageListDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    option->features |= QStyleOptionViewItem::WrapText;
}

QSize PageListDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    const auto *view = qobject_cast<const QTreeView *>(opt.widget);
    if (!view)
        return QStyledItemDelegate::sizeHint(option, index);

    int depth = 0;
    for (QModelIndex parent = index.parent(); parent.isValid(); parent = parent.parent())
        ++depth;
    const int rowWidth = view->viewport()->width() - depth * view->indentation();
    const int iconWidth = opt.icon.isNull() ? 0 : opt.decorationSize.width();
    const int textWidth = qMax(20, rowWidth - iconWidth - 2 * horizontalPadding);
    const QRect textRect = QFontMetrics(opt.font).boundingRect(
        QRect(0, 0, textWidth, 10000), Qt::TextWordWrap | Qt::AlignLeft, opt.text);
    const int height = qMax(textRect.height(), opt.decorationSize.height()) + 2 * verticalPadding;
    return QSize(rowWidth, height);
}
