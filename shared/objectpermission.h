#pragma once

#include <shared/types.h>

class QDataStream;

namespace zeral {

// One right of a user (subject) on an object.
struct OBJECT_PERMISSION
{
    TYPE_ID subject = 0;
    TYPE_ID object = 0;
    quint32 permission = 0;

    bool operator==(const OBJECT_PERMISSION &other) const
    {
        return subject == other.subject && object == other.object && permission == other.permission;
    }
    bool operator!=(const OBJECT_PERMISSION &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const OBJECT_PERMISSION &permission);
QDataStream &operator>>(QDataStream &in, OBJECT_PERMISSION &permission);

} // namespace zeral
