#include "grantedproxymodel.h"

#include "itemroles.h"

GrantedProxyModel::GrantedProxyModel(QObject *parent)
    : ObjectTreeProxy(parent)
{
    setCheckable(true);
    setPartiallyCheckEnabled(true);
    setAutoCheckChildren(true);
    setReadOnly(true);
    setSortRole(ItemRoles::SortText);
    setSortCaseSensitivity(Qt::CaseInsensitive);
}

Qt::ItemFlags GrantedProxyModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags result = ObjectTreeProxy::flags(index) & ~Qt::ItemIsEditable;
    if (index.column() != 0)
        result &= ~Qt::ItemIsUserCheckable;
    return result;
}
