#pragma once

#include <server/engine/ops/request.h>

#include <shared/objectpermission.h>

namespace zeral::server {

struct ServerState;
class Rights;

// Role templates of users and their permissions on objects.
class AccessOps
{

public:
    explicit AccessOps(ServerState &state);

    Reply prescribe(Request &request);
    Reply roleTemplateInherit(Request &request);
    Reply addPermissions(Request &request);
    Reply updatePermissions(Request &request);
    Reply getPermissions(Request &request);

private:
    // May the operator change the permissions of `subject`?
    Reply checkPermissionTarget(const Request &request, const Rights &rights, TYPE_ID subject);
    Reply storePermissions(const QList<OBJECT_PERMISSION> &permissions);

    ServerState &m_state;
};

} // namespace zeral::server
