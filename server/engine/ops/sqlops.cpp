#include "sqlops.h"

#include <host/core/dbquery.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/ops/sqlreaderpool.h>

namespace zeral::server {

SqlOps::SqlOps(ServerState &state)
    : m_state(state)
    , m_pool(std::make_unique<SqlReaderPool>(state.database.path(),
                                             SqlReaderPool::Limits{state.clientSqlWorkers,
                                                                   state.clientSqlPerSession,
                                                                   state.clientSqlTimeLimitMs}))
{}

SqlOps::~SqlOps() = default;

Reply SqlOps::execSql(Request &request)
{
    DbQuery query;
    if (!payload::read(request.command, query) || query.statements.isEmpty())
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос SQL не читается или пуст."));
    switch (m_pool->submit(request.session->id, query, request.answerLater)) {
    case SqlReaderPool::Admission::Started:
        return Reply::later();
    case SqlReaderPool::Admission::SessionBusy:
        return Reply::fail(
            proto::StatusInternal,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Ваши предыдущие запросы SQL ещё выполняются (одновременно не "
                                  "больше %1). Дождитесь ответа на них и повторите."))
                .arg(m_pool->limits().perSession));
    case SqlReaderPool::Admission::ServerBusy:
        break;
    }
    return Reply::fail(
        proto::StatusInternal,
        ServerText(
            QT_TRANSLATE_NOOP("ZRServer",
                              "Сервер уже выполняет %1 запроса SQL других операторов. Повторите "
                              "запрос через несколько секунд."))
            .arg(m_pool->limits().workers));
}

} // namespace zeral::server
