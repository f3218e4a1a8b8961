#pragma once

#include <QString>

class QDataStream;

namespace zeral {

// One entry of the server's catalogue of roles: a group, or a role inside a group.
// The catalogue is a flat list in display order; `parentKey` builds the tree.
struct RoleEntry
{
    QString key;       // a role name ("RL_USER_SHOW") or a group key
    QString title;     // Russian title for the operator
    QString parentKey; // the group of a role; empty for a top-level group
    bool group = false;

    bool operator==(const RoleEntry &other) const
    {
        return key == other.key && title == other.title && parentKey == other.parentKey
               && group == other.group;
    }
    bool operator!=(const RoleEntry &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const RoleEntry &entry);
QDataStream &operator>>(QDataStream &in, RoleEntry &entry);

} // namespace zeral
