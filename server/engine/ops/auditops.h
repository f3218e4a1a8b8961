#pragma once

#include <server/engine/ops/request.h>

namespace zeral::server {

struct ServerState;

// The audit log for the operators who may read it, and the confirmer of a session's next
// request, whom that request's audit row names beside the operator.
class AuditOps
{

public:
    explicit AuditOps(ServerState &state);

    Reply auditLog(Request &request);
    Reply setConfirmer(Request &request);

private:
    ServerState &m_state;
};

} // namespace zeral::server
