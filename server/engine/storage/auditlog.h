#pragma once

#include <shared/types.h>

#include <QDateTime>
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
    qint32 status = 0;
    QString detail;
};

class AuditLog
{
public:
    // Writes within whatever transaction is open on `db`.
    static bool record(QSqlDatabase &db, const AuditEntry &entry);
    static int count(QSqlDatabase &db);

    AuditLog() = delete;
};

} // namespace zeral::server
