#include "sqlops.h"

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <host/core/zrdatastream.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/serverlogging.h>
#include <server/engine/storage/sqlfunctions.h>

#include <QCoreApplication>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace zeral::server {

SqlOps::SqlOps(ServerState &state)
    : m_state(state)
{}

Reply SqlOps::execSql(Request &request)
{
    DbQuery query;
    if (!payload::read(request.command, query) || query.statements.isEmpty())
        return Reply::fail(proto::StatusMalformed, tr("Запрос SQL не читается или пуст."));
    const int limit = query.maxRows > 0 ? qMin(query.maxRows, MaxRows) : MaxRows;

    DbResult result;
    for (const QString &text : qAsConst(query.statements)) {
        result = DbResult();
        QSqlQuery sql(m_state.database.connection());
        sql.setForwardOnly(true);
        // The authorizer judges the statement while it is prepared, and only then.
        ReadOnlyScope readOnly(m_state.database.handle(), m_state.clientSqlTimeLimitMs);
        const bool ran = sql.exec(text);
        if (!ran && !readOnly.refused().isEmpty()) {
            qCWarning(lcServer) << "refused client SQL touching" << readOnly.refused();
            return Reply::fail(proto::StatusForbidden,
                               tr("Запросы SQL с клиента могут только читать данные; отказано: "
                                  "%1.")
                                   .arg(readOnly.refused()));
        }
        if (!ran) {
            return Reply::fail(proto::StatusMalformed,
                               tr("Ошибка в запросе SQL: %1").arg(sql.lastError().text()));
        }
        const QSqlRecord record = sql.record();
        result.columnCount = record.count();
        for (int c = 0; c < record.count(); ++c)
            result.columnNames.append(record.fieldName(c));
        qint64 bytes = 0;
        while (result.rowCount < limit && bytes <= MaxAnswerBytes && sql.next()) {
            for (int c = 0; c < result.columnCount; ++c) {
                const QVariant value = sql.value(c);
                bytes += 16
                         + (value.userType() == QMetaType::QString ? 2 * value.toString().size()
                                                                   : value.toByteArray().size());
                result.values.append(value);
            }
            ++result.rowCount;
        }
        if (readOnly.timedOut()) {
            return Reply::fail(proto::StatusMalformed,
                               tr("Запрос SQL выполнялся дольше %1 мс и был прерван. Сузьте "
                                  "запрос.")
                                   .arg(m_state.clientSqlTimeLimitMs));
        }
        if (bytes > MaxAnswerBytes) {
            return Reply::fail(proto::StatusMalformed,
                               tr("Ответ на запрос SQL больше %1 МиБ. Запросите меньше строк "
                                  "или столбцов.")
                                   .arg(MaxAnswerBytes / (1024 * 1024)));
        }
        if (sql.lastError().isValid())
            return Reply::fail(proto::StatusMalformed,
                               tr("Ошибка в запросе SQL: %1").arg(sql.lastError().text()));
    }
    return Reply::ok(ZRDataStream::pack(result));
}

} // namespace zeral::server
