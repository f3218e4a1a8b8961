#pragma once

// What several parts of UserCtl's implementation (src/userctl*.cpp) share. Private to them.

#include <host/core/localstorage.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/objectinfo.h>
#include <shared/types.h>

#include <QAbstractItemView>
#include <QItemSelectionModel>
#include <QList>
#include <QModelIndexList>
#include <QString>

namespace userctl::detail {

// The uids of the selected rows of a users table: column 0 shows the uid.
inline QList<zeral::TYPE_ID> selectedUids(const QAbstractItemView *table)
{
    QList<zeral::TYPE_ID> uids;
    if (const QItemSelectionModel *selection = table->selectionModel()) {
        const QModelIndexList rows = selection->selectedRows(0);
        for (const QModelIndex &row : rows)
            uids.append(row.data(Qt::DisplayRole).toUInt());
    }
    return uids;
}

inline QModelIndexList selectedRows(const QAbstractItemView *table)
{
    return table->selectionModel() ? table->selectionModel()->selectedRows(0) : QModelIndexList();
}

inline bool isBlocked(const zeral::ObjectInfo &user)
{
    return user.parameters.value(QLatin1String(db::user::OBJECTSTATE)).toLower()
           == QLatin1String("b");
}

inline const zeral::ObjectInfo &storedUser(zeral::TYPE_ID uid)
{
    return zeral::LocalStorage::instance()->constObject(uid, QLatin1String(zeral::USER_DATANAME));
}

} // namespace userctl::detail
