#include "styleditemdelegate.h"

#include <host/gui/models/itemroles.h>

#include <QApplication>
#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QtMath>

namespace {
const QMargins DefaultMargins(4, 2, 4, 2);

QStyle *styleOf(const QStyleOptionViewItem &option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

bool hasCheck(const QModelIndex &index)
{
    return (index.flags() & Qt::ItemIsUserCheckable) && index.data(Qt::CheckStateRole).isValid();
}
} // namespace

StyledItemDelegate::StyledItemDelegate(QObject *parent)
    : StyledItemDelegate(DefaultMargins, parent)
{}

StyledItemDelegate::StyledItemDelegate(const QMargins &margins, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_margins(margins)
{}

void StyledItemDelegate::setIconSize(int width, int height)
{
    m_iconSize = QSize(width, height);
}

void StyledItemDelegate::setSpacing(int spacing)
{
    m_spacing = spacing;
}

void StyledItemDelegate::setNameVerticalAlignment(Qt::Alignment alignment)
{
    m_nameVerticalAlignment = alignment & Qt::AlignVertical_Mask;
}

void StyledItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    painter->save();
    drawBackground(painter, opt, index);
    drawStyledBackground(painter, opt, index);

    QRect area = opt.rect.marginsRemoved(
        QMargins(leftMargin(), topMargin(), rightMargin(), bottomMargin()));
    const QRect check = checkRect(opt, index);
    if (check.isValid()) {
        QStyleOptionViewItem checkOption = opt;
        checkOption.rect = check;
        checkOption.state &= ~QStyle::State_HasFocus;
        const auto state = index.data(Qt::CheckStateRole).value<Qt::CheckState>();
        checkOption.state |= state == Qt::Checked            ? QStyle::State_On
                             : state == Qt::PartiallyChecked ? QStyle::State_NoChange
                                                             : QStyle::State_Off;
        styleOf(opt)->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &checkOption, painter,
                                    opt.widget);
        area.setLeft(check.right() + 1 + spacing());
    }

    const int iconW = iconWidth(index);
    if (iconW > 0) {
        const QRect iconRect(area.left(), area.top() + (area.height() - m_iconSize.height()) / 2,
                             m_iconSize.width(), m_iconSize.height());
        const int taken = drawIcon(painter, index, iconRect);
        if (taken > 0)
            area.setLeft(area.left() + taken + spacing());
    }

    const int statusW = drawStatusIcons(painter, index, area);
    if (statusW > 0)
        area.setRight(area.right() - statusW - spacing());
    else if (statusIconWidth(index) > 0)
        area.setRight(area.right() - statusIconWidth(index) - spacing());

    drawName(painter, opt, index, area);
    painter->restore();
}

QSize StyledItemDelegate::sizeHint(const QStyleOptionViewItem &option,
                                   const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    const QFontMetrics metrics(opt.font);
    // The exact advance, rounded up: drawName elides a text that is a fraction of a pixel
    // wider than its room, and the rounded advance may be that fraction short.
    const int textWidth = qCeil(QFontMetricsF(opt.font).horizontalAdvance(name(index)));
    int width = leftMargin() + textWidth + rightMargin();
    int height = metrics.height();
    if (hasCheck(index)) {
        const QStyle *style = styleOf(opt);
        const int indicator = style->pixelMetric(QStyle::PM_IndicatorWidth, &opt, opt.widget);
        width += indicator + spacing();
        height = qMax(height, style->pixelMetric(QStyle::PM_IndicatorHeight, &opt, opt.widget));
    }
    if (const int iconW = iconWidth(index); iconW > 0) {
        width += iconW + spacing();
        height = qMax(height, m_iconSize.height());
    }
    if (const int statusW = statusIconWidth(index); statusW > 0) {
        width += statusW + spacing();
        height = qMax(height, m_iconSize.height());
    }
    return QSize(width, height + topMargin() + bottomMargin());
}

bool StyledItemDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                                     const QStyleOptionViewItem &option, const QModelIndex &index)
{
    // The check box stands where paint() puts it, not where the style would, so the click
    // on it is ours to take.
    if (!hasCheck(index) || !(index.flags() & Qt::ItemIsEnabled))
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    if (event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::MouseButtonPress
        || event->type() == QEvent::MouseButtonDblClick) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() != Qt::LeftButton || !checkRect(option, index).contains(mouse->pos()))
            return false;
        if (event->type() != QEvent::MouseButtonRelease)
            return true; // swallow press and double click on the box
    } else if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key != Qt::Key_Space && key != Qt::Key_Select)
            return false;
    } else {
        return false;
    }
    const auto state = index.data(Qt::CheckStateRole).value<Qt::CheckState>();
    const Qt::CheckState next = state == Qt::Checked ? Qt::Unchecked : Qt::Checked;
    return model->setData(index, next, Qt::CheckStateRole);
}

void StyledItemDelegate::drawBackground(QPainter *painter, const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const
{
    const QVariant background = index.data(Qt::BackgroundRole);
    if (background.canConvert<QBrush>())
        painter->fillRect(option.rect, qvariant_cast<QBrush>(background));
}

void StyledItemDelegate::drawStyledBackground(QPainter *painter, const QStyleOptionViewItem &option,
                                              const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    if (opt.index != index)
        initStyleOption(&opt, index);
    // The panel alone: text, icon and check box are ours.
    opt.text.clear();
    opt.icon = QIcon();
    opt.features &= ~(QStyleOptionViewItem::HasDisplay | QStyleOptionViewItem::HasDecoration
                      | QStyleOptionViewItem::HasCheckIndicator);
    styleOf(opt)->drawPrimitive(QStyle::PE_PanelItemViewItem, &opt, painter, opt.widget);

    const QPalette::ColorGroup group = !(opt.state & QStyle::State_Enabled) ? QPalette::Disabled
                                       : (opt.state & QStyle::State_Active) ? QPalette::Active
                                                                            : QPalette::Inactive;
    QColor pen = opt.palette.color(
        group, (opt.state & QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text);
    const QVariant foreground = index.data(Qt::ForegroundRole);
    if (!(opt.state & QStyle::State_Selected) && foreground.canConvert<QBrush>())
        pen = qvariant_cast<QBrush>(foreground).color();
    painter->setPen(pen);
    painter->setFont(opt.font);
}

int StyledItemDelegate::drawIcon(QPainter *painter, const QModelIndex &index,
                                 const QRect &rect) const
{
    const QVariant decoration = index.data(Qt::DecorationRole);
    QPixmap pixmap;
    if (decoration.canConvert<QIcon>() && !qvariant_cast<QIcon>(decoration).isNull()) {
        const QIcon icon = qvariant_cast<QIcon>(decoration);
        const QIcon::Mode mode
            = (index.flags() & Qt::ItemIsEnabled) ? QIcon::Normal : QIcon::Disabled;
        pixmap = icon.pixmap(m_iconSize, mode);
    } else if (decoration.canConvert<QPixmap>()) {
        pixmap = qvariant_cast<QPixmap>(decoration);
    }
    if (pixmap.isNull())
        return 0;
    const QSize size = pixmap.size() / pixmap.devicePixelRatio();
    painter->drawPixmap(QRect(QPoint(rect.left() + (rect.width() - size.width()) / 2,
                                     rect.top() + (rect.height() - size.height()) / 2),
                              size),
                        pixmap);
    return qMax(size.width(), m_iconSize.width());
}

int StyledItemDelegate::drawStatusIcons(QPainter *, const QModelIndex &, const QRect &) const
{
    return 0;
}

void StyledItemDelegate::drawName(QPainter *painter, const QStyleOptionViewItem &option,
                                  const QModelIndex &index, const QRect &rect) const
{
    const QString text
        = option.fontMetrics.elidedText(name(index), option.textElideMode, rect.width());
    Qt::Alignment alignment = option.displayAlignment & Qt::AlignHorizontal_Mask;
    painter->drawText(rect, int(alignment | m_nameVerticalAlignment | Qt::TextSingleLine), text);
}

QString StyledItemDelegate::name(const QModelIndex &index) const
{
    // Object rows show their uid as display value and their name as the text shown and sorted
    // on; other models only have the display value.
    const QVariant shown = index.data(ItemRoles::SortText);
    return shown.isValid() ? shown.toString() : index.data(Qt::DisplayRole).toString();
}

int StyledItemDelegate::iconWidth(const QModelIndex &index) const
{
    const QVariant decoration = index.data(Qt::DecorationRole);
    if (decoration.canConvert<QIcon>() && !qvariant_cast<QIcon>(decoration).isNull())
        return m_iconSize.width();
    if (decoration.canConvert<QPixmap>() && !qvariant_cast<QPixmap>(decoration).isNull())
        return m_iconSize.width();
    return 0;
}

int StyledItemDelegate::statusIconWidth(const QModelIndex &) const
{
    return 0;
}

QRect StyledItemDelegate::checkRect(const QStyleOptionViewItem &option,
                                    const QModelIndex &index) const
{
    if (!hasCheck(index))
        return QRect();
    const QStyle *style = styleOf(option);
    const int w = style->pixelMetric(QStyle::PM_IndicatorWidth, &option, option.widget);
    const int h = style->pixelMetric(QStyle::PM_IndicatorHeight, &option, option.widget);
    const QRect inner = option.rect.marginsRemoved(
        QMargins(leftMargin(), topMargin(), rightMargin(), bottomMargin()));
    return QRect(inner.left(), inner.top() + (inner.height() - h) / 2, w, h);
}
