#include "mobileuseritemdelegate.h"

#include <host/core/localstorage.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/inheritdata.h>

#include <QIcon>
#include <QPainter>

MobileUserItemDelegate::MobileUserItemDelegate(QObject *parent)
    : UsersItemDelegate(parent)
{}

int MobileUserItemDelegate::drawStatusIcons(QPainter *painter, const QModelIndex &index,
                                            const QRect &rect) const
{
    if (index.column() != UidColumn)
        return UsersItemDelegate::drawStatusIcons(painter, index, rect);

    const zeral::TYPE_ID uid = index.data(Qt::DisplayRole).toUInt();
    if (!loginDiffersFromEmail(uid))
        return 0;

    const QPixmap pixmap = QIcon::fromTheme(QStringLiteral("common-warning"))
                               .pixmap(iconSize(), QIcon::Normal, QIcon::Off);
    const QSize size = pixmap.size() / pixmap.devicePixelRatio();
    // Right-aligned so that the column rect.right() itself stays free.
    painter->drawPixmap(
        QPointF(rect.right() - size.width(), rect.top() + (rect.height() - size.height()) / 2),
        pixmap);
    return size.width();
}

bool MobileUserItemDelegate::loginDiffersFromEmail(zeral::TYPE_ID uid)
{
    const zeral::LocalStorage *store = zeral::LocalStorage::instance();
    const zeral::ObjectInfo &user = store->constObject(uid, QLatin1String(zeral::USER_DATANAME));
    const auto link = user.children.constFind(zeral::INHERIT_WORKER_USER);
    const zeral::TYPE_ID workerUid = link != user.children.cend() ? link->child : 0;
    const zeral::ObjectInfo &worker
        = store->constObject(workerUid, QLatin1String(zeral::SUBJECT_DATANAME));
    return user.parameters.value(QLatin1String(db::user::LOGIN))
           != worker.parameters.value(QLatin1String(db::worker::EMAIL));
}
