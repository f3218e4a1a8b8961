#include "objectpermission.h"

#include <QDataStream>

namespace zeral {

QDataStream &operator<<(QDataStream &out, const OBJECT_PERMISSION &permission)
{
    return out << permission.subject << permission.object << permission.permission;
}

QDataStream &operator>>(QDataStream &in, OBJECT_PERMISSION &permission)
{
    return in >> permission.subject >> permission.object >> permission.permission;
}

} // namespace zeral
