#include "userpermissionsproxy.h"

UserPermissionsProxy::UserPermissionsProxy(QObject *parent)
    : GrantedProxyModel(parent)
{}
