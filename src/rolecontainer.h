#pragma once

namespace userctl {

// The one place that answers whether the logged-in operator holds a right. Every answer is
// read anew from the operator's role list, so a change of roles counts from the next question;
// a caller that needs a stable answer over a longer operation keeps the result itself.
// A role counts only when the whole name matches, case included.
class RoleContainer
{
public:
    RoleContainer() = default;

    static bool canShow();
    static bool canShowMobile();
    static bool canShowOnline();
    static bool canCreateUser();
    static bool canUpdateUser();
    static bool canDeleteUser();
    static bool canBlockUser();
    static bool canRoleLinkUser();
    static bool canRoleLinkSubdiv();
    static bool canRoleDisconnect();
    static bool canRoleTemplChange();

    // These speak of the operator's own changes: holding the role makes them wait for a
    // biometric confirmation by somebody else; it grants nothing.
    static bool requireConfirmUserCreate();
    static bool requireConfirmUserUpdate();
    static bool requireConfirmUserDelete();

    // The rights of a confirmer. The server checks them itself when it picks the confirmers.
    static bool canConfirmUserCreate();
    static bool canConfirmUserUpdate();
    static bool canConfirmUserDelete();
};

} // namespace userctl
