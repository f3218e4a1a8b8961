#pragma once

#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/templatedata.h>

#include <QHash>
#include <QList>
#include <QString>

namespace zeral::server {

// One fingerprint of a demo user, as it goes into the table "fingers".
struct DemoFinger
{
    TYPE_ID userUid = 0;
    int finger = 0; // 0..9, right thumb first
    TEMPLATE_DATA data;
};

// The demo organisation as records, before it is stored. Uids are already given (from the
// first uid asked for, without gaps), and within each dataset a parent comes before its
// children, so the records can be inserted in order.
struct DemoData
{
    QHash<QString, QList<ObjectInfo>> objects; // by dataset name (zeral::*_DATANAME)
    QHash<TYPE_ID, QString> passwords;         // demo users' passwords in clear, by user uid
    // The bulk accounts (DemoOrganisation::build's `extraUsers`): all have the demo
    // password, and the engine stores one hash of it for all of them.
    QList<TYPE_ID> bulkUsers;
    QList<OBJECT_PERMISSION> permissions;
    QList<DemoFinger> fingers;
};

} // namespace zeral::server
