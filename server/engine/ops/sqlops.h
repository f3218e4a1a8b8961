#pragma once

#include <server/engine/ops/request.h>

#include <memory>

namespace zeral::server {

struct ServerState;
class SqlReaderPool;

// data.exec_sql: statements from a client, run read-only by the workers of a SqlReaderPool;
// the answer follows later through Request::answerLater.
class SqlOps
{

public:
    explicit SqlOps(ServerState &state);
    ~SqlOps(); // stops the running statements
    Reply execSql(Request &request);

private:
    ServerState &m_state;
    std::unique_ptr<SqlReaderPool> m_pool;
};

} // namespace zeral::server
