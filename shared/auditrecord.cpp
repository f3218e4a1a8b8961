#include "auditrecord.h"

#include <QDataStream>

namespace zeral {

bool AuditRecord::operator==(const AuditRecord &other) const
{
    return id == other.id && at == other.at && operatorLogin == other.operatorLogin
           && peer == other.peer && command == other.command && object == other.object
           && objectName == other.objectName && status == other.status && detail == other.detail
           && confirmedBy == other.confirmedBy;
}

QDataStream &operator<<(QDataStream &out, const AuditRecord &record)
{
    return out << record.id << record.at << record.operatorLogin << record.peer << record.command
               << quint32(record.object) << record.objectName << record.status << record.detail
               << record.confirmedBy;
}

QDataStream &operator>>(QDataStream &in, AuditRecord &record)
{
    quint32 object = 0;
    in >> record.id >> record.at >> record.operatorLogin >> record.peer >> record.command >> object
        >> record.objectName >> record.status >> record.detail >> record.confirmedBy;
    record.object = object;
    return in;
}

} // namespace zeral
