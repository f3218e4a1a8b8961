#include "rolecontainer.h"

#include <host/core/authdata.h>
#include <shared/rolenames.h>

#include <QString>

namespace userctl {

namespace {

bool operatorHasRole(const char *role)
{
    return AuthData::roles().contains(QString::fromLatin1(role), Qt::CaseSensitive);
}

} // namespace

using namespace zeral;

bool RoleContainer::canShow()
{
    return operatorHasRole(role::USER_SHOW);
}
bool RoleContainer::canShowMobile()
{
    return operatorHasRole(role::USER_MOBILE_SHOW);
}
bool RoleContainer::canShowOnline()
{
    return operatorHasRole(role::USER_ONLINE_SHOW);
}
bool RoleContainer::canCreateUser()
{
    return operatorHasRole(role::USER_CREATE);
}
bool RoleContainer::canUpdateUser()
{
    return operatorHasRole(role::USER_UPDATE);
}
bool RoleContainer::canDeleteUser()
{
    return operatorHasRole(role::USER_DELETE);
}
bool RoleContainer::canBlockUser()
{
    return operatorHasRole(role::USER_BLOCK);
}
bool RoleContainer::canRoleLinkUser()
{
    return operatorHasRole(role::ROLE_LINKUSER);
}
bool RoleContainer::canRoleLinkSubdiv()
{
    return operatorHasRole(role::ROLE_LINKSUBDIV);
}
bool RoleContainer::canRoleDisconnect()
{
    return operatorHasRole(role::ROLE_DISCONNECT_USER);
}
bool RoleContainer::canRoleTemplChange()
{
    return operatorHasRole(role::ROLETEMPLATE_CHANGE);
}

bool RoleContainer::requireConfirmUserCreate()
{
    return operatorHasRole(role::USER_CREATE_REQUIRES_CONFIRM);
}

bool RoleContainer::requireConfirmUserUpdate()
{
    return operatorHasRole(role::USER_UPDATE_REQUIRES_CONFIRM);
}

bool RoleContainer::requireConfirmUserDelete()
{
    return operatorHasRole(role::USER_DELETE_REQUIRES_CONFIRM);
}

bool RoleContainer::canConfirmUserCreate()
{
    return operatorHasRole(role::CONFIRM_USER_CREATE);
}
bool RoleContainer::canConfirmUserUpdate()
{
    return operatorHasRole(role::CONFIRM_USER_UPDATE);
}
bool RoleContainer::canConfirmUserDelete()
{
    return operatorHasRole(role::CONFIRM_USER_DELETE);
}

} // namespace userctl
