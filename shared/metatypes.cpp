#include "metatypes.h"

#include <shared/maildelivery.h>

#include <QCoreApplication>

namespace zeral {

namespace {

template<class T>
void registerWithStreams(const char *name)
{
    qRegisterMetaType<T>(name);
    qRegisterMetaTypeStreamOperators<T>(name);
}

} // namespace

void registerMetaTypes()
{
    // Aliases of built-in types: the name is what moc writes into a signature.
    qRegisterMetaType<TYPE_ID>("zeral::TYPE_ID");
    qRegisterMetaType<OBJECT_UID_LIST>("zeral::OBJECT_UID_LIST");
    qRegisterMetaType<OBJECT_UID_LIST>("QList<zeral::TYPE_ID>");
    qRegisterMetaType<OBJECT_UID_SET>("zeral::OBJECT_UID_SET");
    qRegisterMetaType<OBJECT_UID_SET>("QSet<zeral::TYPE_ID>");

    registerWithStreams<ObjectInfo>("zeral::ObjectInfo");
    registerWithStreams<_INHERIT_DATA>("zeral::_INHERIT_DATA");
    registerWithStreams<OBJECT_PERMISSION>("zeral::OBJECT_PERMISSION");
    registerWithStreams<_ROLETEMPLATE_INFO>("zeral::_ROLETEMPLATE_INFO");
    registerWithStreams<_TEMPLATE_DATA>("zeral::_TEMPLATE_DATA");
    registerWithStreams<ConnectedUserInfo>("zeral::ConnectedUserInfo");
    registerWithStreams<LoginLockInfo>("zeral::LoginLockInfo");
    registerWithStreams<MailDelivery>("zeral::MailDelivery");
    registerWithStreams<_EMAIL_MESSAGE>("zeral::_EMAIL_MESSAGE");
    registerWithStreams<TaskInfo>("zeral::TaskInfo");
    registerWithStreams<RoleEntry>("zeral::RoleEntry");

    qRegisterMetaType<_INHERIT_DATA>("zeral::INHERIT_DATA");
    qRegisterMetaType<_ROLETEMPLATE_INFO>("zeral::ROLETEMPLATE_INFO");
    qRegisterMetaType<_TEMPLATE_DATA>("zeral::TEMPLATE_DATA");
    qRegisterMetaType<_EMAIL_MESSAGE>("zeral::EMAIL_MESSAGE");
    qRegisterMetaType<ROLETEMPLATES_HASH>("zeral::ROLETEMPLATES_HASH");
    qRegisterMetaType<TEMPLATES_HASH>("zeral::TEMPLATES_HASH");
    qRegisterMetaType<TEMPLATES_HASH>("QMultiHash<zeral::TYPE_ID,zeral::TEMPLATE_DATA>");
    qRegisterMetaType<QList<OBJECT_PERMISSION>>("QList<zeral::OBJECT_PERMISSION>");
    qRegisterMetaType<USER_ROLES_HASH>("QMultiHash<zeral::TYPE_ID,QString>");
}

} // namespace zeral

// Registration at load time, so that a queued call by type name works in the studio, in
// the server and in every plugin without anybody remembering to call the function.
static void registerSharedMetaTypesAtLoad()
{
    zeral::registerMetaTypes();
}
Q_CONSTRUCTOR_FUNCTION(registerSharedMetaTypesAtLoad)
