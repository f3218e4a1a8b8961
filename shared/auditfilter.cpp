#include "auditfilter.h"

#include "auditrecord.h"

#include <QDataStream>

namespace zeral {

quint32 AuditFilter::objectUid() const
{
    bool isNumber = false;
    const quint32 uid = object.trimmed().toUInt(&isNumber);
    return isNumber ? uid : 0;
}

bool AuditFilter::matches(const AuditRecord &record) const
{
    if (!operatorLogin.isEmpty()
        && record.operatorLogin.compare(operatorLogin, Qt::CaseInsensitive) != 0)
        return false;
    if (!command.isEmpty() && record.command != command)
        return false;
    if ((result == SuccessOnly && !record.isSuccess())
        || (result == RefusalsOnly && record.isSuccess()))
        return false;
    if (from.isValid() && record.at < from)
        return false;
    if (to.isValid() && record.at >= to)
        return false;
    if (object.trimmed().isEmpty())
        return true;
    if (const quint32 uid = objectUid())
        return record.object == uid;
    return record.objectName.toCaseFolded().contains(object.trimmed().toCaseFolded());
}

bool AuditFilter::operator==(const AuditFilter &other) const
{
    return operatorLogin == other.operatorLogin && object == other.object
           && command == other.command && result == other.result && from == other.from
           && to == other.to;
}

QDataStream &operator<<(QDataStream &out, const AuditFilter &filter)
{
    return out << filter.operatorLogin << filter.object << filter.command << filter.result
               << filter.from << filter.to;
}

QDataStream &operator>>(QDataStream &in, AuditFilter &filter)
{
    return in >> filter.operatorLogin >> filter.object >> filter.command >> filter.result
           >> filter.from >> filter.to;
}

} // namespace zeral
