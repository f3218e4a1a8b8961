#include "auditlog.h"

#include <server/engine/serverlogging.h>
#include <server/engine/storage/sqldialect.h>
#include <shared/dbkeys.h>

#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

namespace zeral::server {

namespace {
// Enough to tell sessions apart in the log; too little to take one over.
constexpr int KeptSessionChars = 8;

// Times are kept as UTC text with milliseconds, which sorts as the instants do.
QString storedTime(const QDateTime &at)
{
    return at.toUTC().toString(Qt::ISODateWithMs);
}

} // namespace

AuditRecord AuditLog::record(QSqlDatabase &db, const AuditEntry &entry)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "INSERT INTO audit_log (at, operator, session, peer, command, object, status, detail,"
        " object_name, object_name_folded, confirmed_by) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
        "?)"));
    // A null text would bind as NULL; a request before login has no operator and no session.
    const auto text = [](const QString &value) {
        return value.isNull() ? QStringLiteral("") : value;
    };
    query.addBindValue(storedTime(entry.at));
    query.addBindValue(text(entry.operatorLogin));
    query.addBindValue(text(QString::fromLatin1(entry.sessionId.left(KeptSessionChars))));
    query.addBindValue(text(entry.peer));
    query.addBindValue(text(entry.command));
    query.addBindValue(entry.object);
    query.addBindValue(entry.status);
    query.addBindValue(text(entry.detail));
    query.addBindValue(text(entry.objectName));
    query.addBindValue(text(entry.objectName).toCaseFolded());
    query.addBindValue(text(entry.confirmedBy));
    AuditRecord row;
    if (!query.exec()) {
        qCWarning(lcServerDb) << "audit log write failed:" << query.lastError().text();
        return row;
    }
    row.id = query.lastInsertId().toLongLong();
    row.at = QDateTime::fromString(storedTime(entry.at), Qt::ISODateWithMs);
    row.operatorLogin = text(entry.operatorLogin);
    row.peer = text(entry.peer);
    row.command = text(entry.command);
    row.object = entry.object;
    row.objectName = text(entry.objectName);
    row.status = entry.status;
    row.detail = text(entry.detail);
    row.confirmedBy = text(entry.confirmedBy);
    return row;
}

int AuditLog::count(QSqlDatabase &db)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM audit_log")) || !query.next())
        return -1;
    return query.value(0).toInt();
}

bool AuditLog::page(QSqlDatabase &db, const AuditFilter &filter, qint64 beforeId, int limit,
                    QList<AuditRecord> *rows, bool *more)
{
    // Keyset paging: each page starts below the last id of the one before, so rows written
    // meanwhile neither shift a page nor come twice.
    QStringList where;
    QVariantList values;
    if (beforeId > 0) {
        where << QStringLiteral("id < ?");
        values << beforeId;
    }
    if (!filter.operatorLogin.isEmpty()) {
        where << SqlDialect::of(db).equalsFoldingCase(QStringLiteral("operator"));
        values << filter.operatorLogin;
    }
    if (!filter.command.isEmpty()) {
        where << QStringLiteral("command = ?");
        values << filter.command;
    }
    if (filter.result == AuditFilter::SuccessOnly)
        where << QStringLiteral("status = 1");
    else if (filter.result == AuditFilter::RefusalsOnly)
        where << QStringLiteral("status <> 1");
    if (filter.from.isValid()) {
        where << QStringLiteral("at >= ?");
        values << storedTime(filter.from);
    }
    if (filter.to.isValid()) {
        where << QStringLiteral("at < ?");
        values << storedTime(filter.to);
    }
    const QString object = filter.object.trimmed();
    if (const quint32 uid = filter.objectUid()) {
        where << QStringLiteral("object = ?");
        values << uid;
    } else if (!object.isEmpty()) {
        where << SqlDialect::of(db).contains(QStringLiteral("object_name_folded"));
        values << object.toCaseFolded();
    }
    QString sql = QStringLiteral(
        "SELECT id, at, operator, peer, command, object, object_name, status, detail,"
        " confirmed_by FROM audit_log");
    if (!where.isEmpty())
        sql += QStringLiteral(" WHERE ") + where.join(QStringLiteral(" AND "));
    sql += QStringLiteral(" ORDER BY id DESC LIMIT ?");
    values << limit + 1; // one more tells whether there is a next page

    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.prepare(sql)) {
        qCWarning(lcServerDb) << "audit log query:" << query.lastError().text();
        return false;
    }
    for (const QVariant &value : qAsConst(values))
        query.addBindValue(value);
    if (!query.exec()) {
        qCWarning(lcServerDb) << "audit log query:" << query.lastError().text();
        return false;
    }
    rows->clear();
    *more = false;
    while (query.next()) {
        if (rows->size() == limit) {
            *more = true;
            break;
        }
        AuditRecord row;
        row.id = query.value(0).toLongLong();
        row.at = QDateTime::fromString(query.value(1).toString(), Qt::ISODateWithMs);
        row.operatorLogin = query.value(2).toString();
        row.peer = query.value(3).toString();
        row.command = query.value(4).toString();
        row.object = query.value(5).toUInt();
        row.objectName = query.value(6).toString();
        row.status = query.value(7).toInt();
        row.detail = query.value(8).toString();
        row.confirmedBy = query.value(9).toString();
        rows->append(row);
    }
    return true;
}

QSet<TYPE_ID> AuditLog::usersWithRole(QSqlDatabase &db, const QString &role)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "SELECT p.uid FROM role_template_roles r JOIN object_params p"
        " ON p.key = 'PT_ROLETEMPLATE' AND p.value = r.template_id WHERE r.role = ?"));
    query.addBindValue(role);
    QSet<TYPE_ID> users;
    if (!query.exec()) {
        qCWarning(lcServerDb) << "audit log readers:" << query.lastError().text();
        return users;
    }
    while (query.next())
        users.insert(query.value(0).toUInt());
    return users;
}

QString AuditLog::nameOf(const ObjectInfo &object)
{
    QStringList parts;
    for (const char *key : {db::user::SURNAME, db::user::NAME, db::user::PATRONYMIC}) {
        const QString part = object.parameters.value(QLatin1String(key)).trimmed();
        if (!part.isEmpty())
            parts << part;
    }
    const QString name = parts.join(QLatin1Char(' '));
    const QString login = object.parameters.value(QLatin1String(db::user::LOGIN)).trimmed();
    if (!login.isEmpty())
        return name.isEmpty() ? login : name % QLatin1String(" (") % login % QLatin1Char(')');
    return name.isEmpty() ? object.type : name;
}

} // namespace zeral::server
