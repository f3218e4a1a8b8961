#pragma once

#include <shared/connecteduserinfo.h>
#include <shared/emailmessage.h>
#include <shared/inheritdata.h>
#include <shared/loginlockinfo.h>
#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/roleentry.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/templatedata.h>
#include <shared/types.h>

#include <QMetaType>
#include <QMultiHash>

namespace zeral {
// Role names by the uid of the user holding them.
using USER_ROLES_HASH = QMultiHash<TYPE_ID, QString>;
} // namespace zeral

Q_DECLARE_METATYPE(zeral::ObjectInfo)
Q_DECLARE_METATYPE(zeral::_INHERIT_DATA)
Q_DECLARE_METATYPE(zeral::OBJECT_PERMISSION)
Q_DECLARE_METATYPE(zeral::_ROLETEMPLATE_INFO)
Q_DECLARE_METATYPE(zeral::_TEMPLATE_DATA)
Q_DECLARE_METATYPE(zeral::ConnectedUserInfo)
Q_DECLARE_METATYPE(zeral::LoginLockInfo)
Q_DECLARE_METATYPE(zeral::_EMAIL_MESSAGE)
Q_DECLARE_METATYPE(zeral::TaskInfo)
Q_DECLARE_METATYPE(zeral::RoleEntry)
Q_DECLARE_METATYPE(zeral::TEMPLATES_HASH)
Q_DECLARE_METATYPE(zeral::USER_ROLES_HASH)

namespace zeral {

// Registers every shared record and container under the names that signals, slots and
// queued calls spell them with ("zeral::TYPE_ID", "zeral::ObjectInfo", ...). It runs by
// itself when the shared library is loaded; calling it again does no harm.
void registerMetaTypes();

} // namespace zeral
