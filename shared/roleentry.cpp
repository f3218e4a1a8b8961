#include "roleentry.h"

#include <QDataStream>

namespace zeral {

QDataStream &operator<<(QDataStream &out, const RoleEntry &entry)
{
    return out << entry.key << entry.title << entry.parentKey << entry.group;
}

QDataStream &operator>>(QDataStream &in, RoleEntry &entry)
{
    return in >> entry.key >> entry.title >> entry.parentKey >> entry.group;
}

} // namespace zeral
