#pragma once

#include <QCoreApplication>
#include <server/engine/ops/request.h>

namespace zeral::server {

struct ServerState;

// data.exec_sql: statements from a client, run read-only.
class SqlOps
{
    Q_DECLARE_TR_FUNCTIONS(SqlOps)

public:
    static constexpr int MaxRows = 10000;
    // Well below a frame's limit, so that the answer always reaches the client.
    static constexpr qint64 MaxAnswerBytes = 32 * 1024 * 1024;

    explicit SqlOps(ServerState &state);
    Reply execSql(Request &request);

private:
    ServerState &m_state;
};

} // namespace zeral::server
