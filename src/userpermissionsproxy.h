#pragma once

#include <host/gui/models/grantedproxymodel.h>

// The proxy of a tree of objects on which a user gets permissions, kept by the plugin beside
// the permissions editor. It adds nothing to the granted-objects proxy of the host.
class UserPermissionsProxy : public GrantedProxyModel
{
    Q_OBJECT
public:
    explicit UserPermissionsProxy(QObject *parent = nullptr);
};
