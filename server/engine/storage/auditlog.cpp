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
    // A null text would bind as NULL; a request before login has no operator and no session.
    const auto text = [](const QString &value) {
        return value.isNull() ? QStringLiteral("") : value;
    };
    query.addBindValue(entry.at.toUTC().toString(Qt::ISODateWithMs));
    query.addBindValue(text(entry.operatorLogin));
    query.addBindValue(text(QString::fromLatin1(entry.sessionId.left(KeptSessionChars))));
    query.addBindValue(text(entry.peer));
    query.addBindValue(text(entry.command));
    query.addBindValue(entry.object);
    query.addBindValue(entry.status);
    query.addBindValue(text(entry.detail));
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
