#pragma once

#include <shared/types.h>

#include <QDateTime>
#include <QString>

class QDataStream;

namespace zeral {

// One row of the server's audit log as the studio reads it: a change that was applied or a
// request that was refused, with who, from where, on what, and who confirmed it.
struct AuditRecord
{
    qint64 id = 0;         // grows with every row: the newest row has the highest id
    QDateTime at;          // UTC
    QString operatorLogin; // empty before a login
    QString peer;
    QString command;
    TYPE_ID object = 0;
    QString objectName; // as the object was named when the row was written
    qint32 status = 0;  // 1: applied; else the refusal's status code
    QString detail;
    QString confirmedBy; // the login of whom the operator had confirm the change, or empty

    bool isSuccess() const { return status == 1; }
    bool operator==(const AuditRecord &other) const;
    bool operator!=(const AuditRecord &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const AuditRecord &record);
QDataStream &operator>>(QDataStream &in, AuditRecord &record);

} // namespace zeral
