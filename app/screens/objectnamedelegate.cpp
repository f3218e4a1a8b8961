#include "objectnamedelegate.h"

#include <host/gui/models/itemroles.h>

ObjectNameDelegate::ObjectNameDelegate(QObject *parent)
    : StyledItemDelegate(parent)
{}

QString ObjectNameDelegate::name(const QModelIndex &index) const
{
    return index.data(ItemRoles::SortText).toString();
}
