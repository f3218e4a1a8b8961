#pragma once

#include <shared/types.h>
#include <src/usersitemdelegate.h>

// Paints the rows of the mobile user list: as UsersItemDelegate, with a warning icon at the
// right end of the first column when the user's login is no longer the e-mail address of
// his employee, the login that mobile accounts are given.
class MobileUserItemDelegate : public UsersItemDelegate
{
    Q_OBJECT
public:
    explicit MobileUserItemDelegate(QObject *parent);

    int drawStatusIcons(QPainter *painter, const QModelIndex &index,
                        const QRect &rect) const override;

    // Whether the login of the user differs from the e-mail address of the employee linked
    // to him, exactly, as the local store holds them. A missing value counts as empty.
    static bool loginDiffersFromEmail(zeral::TYPE_ID uid);
};
