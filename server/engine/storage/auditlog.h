#pragma once

#include <shared/auditfilter.h>
#include <shared/auditrecord.h>
#include <shared/objectinfo.h>
#include <shared/types.h>

#include <QDateTime>
#include <QList>
#include <QSet>
#include <QSqlDatabase>
#include <QString>

namespace zeral::server {

// One line of the audit log: every change and every refusal, with who, when and on what.
struct AuditEntry
{
    QDateTime at;
    QString operatorLogin; // empty before login
    QByteArray sessionId;  // only its first characters are kept
    QString peer;
    QString command;
    TYPE_ID object = 0;
    QString objectName; // kept in the row: the object may be removed later
    qint32 status = 0;
    QString detail;
    QString confirmedBy; // the login of the user who confirmed the change, if any
};

class AuditLog
{
public:
    // Writes within whatever transaction is open on `db`; the row as the studio reads it, with
    // its id, or an id of 0 if the write failed.
    static AuditRecord record(QSqlDatabase &db, const AuditEntry &entry);
    static int count(QSqlDatabase &db);

    // The rows that match `filter` with an id below `beforeId` (0: from the newest), newest
    // first, at most `limit`; `*more` tells whether older matching rows remain. False if the
    // statement failed.
    static bool page(QSqlDatabase &db, const AuditFilter &filter, qint64 beforeId, int limit,
                     QList<AuditRecord> *rows, bool *more);
    // The users whose role template grants `role`: who may be told of a new row.
    static QSet<TYPE_ID> usersWithRole(QSqlDatabase &db, const QString &role);

    // How the log names an object: a person by his name and login, anything else by its name.
    static QString nameOf(const ObjectInfo &object);

    AuditLog() = delete;
};

} // namespace zeral::server
