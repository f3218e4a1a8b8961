#pragma once

#include <shared/types.h>

#include <QDateTime>

class QDataStream;

namespace zeral {

// The link of a user account (parent end) to its employee (child end).
inline constexpr unsigned int INHERIT_WORKER_USER = 15;
inline constexpr char INHERIT_CHILD[] = "child";
inline constexpr char INHERIT_PARENT[] = "parent";

// One link between two objects. An end that is 0 is the object being created.
struct _INHERIT_DATA
{
    TYPE_ID child = 0;
    TYPE_ID parent = 0;
    quint32 linkType = 0;
    quint32 reserved = 0;
    QDateTime validFrom;
    QDateTime validTo;

    bool operator==(const _INHERIT_DATA &other) const;
    bool operator!=(const _INHERIT_DATA &other) const { return !(*this == other); }
};
using INHERIT_DATA = _INHERIT_DATA;

QDataStream &operator<<(QDataStream &out, const _INHERIT_DATA &link);
QDataStream &operator>>(QDataStream &in, _INHERIT_DATA &link);

} // namespace zeral
