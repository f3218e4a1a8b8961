#include "auditlog.h"

#include <server/engine/serverlogging.h>

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace zeral::server {

namespace {
// Enough to tell sessions apart in the log; too little to take one over.
constexpr int KeptSessionChars = 8;
} // namespace

bool AuditLog::record(QSqlDatabase &db, const AuditEntry &entry)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "INSERT INTO audit_log (at, operator, session, peer, command, object, status, detail)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(entry.at.toUTC().toString(Qt::ISODateWithMs));
    query.addBindValue(entry.operatorLogin);
    query.addBindValue(QString::fromLatin1(entry.sessionId.left(KeptSessionChars)));
    query.addBindValue(entry.peer);
    query.addBindValue(entry.command);
    query.addBindValue(entry.object);
    query.addBindValue(entry.status);
    query.addBindValue(entry.detail);
    if (query.exec())
        return true;
    qCWarning(lcServerDb) << "audit log write failed:" << query.lastError().text();
    return false;
}

int AuditLog::count(QSqlDatabase &db)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM audit_log")) || !query.next())
        return -1;
    return query.value(0).toInt();
}

} // namespace zeral::server
