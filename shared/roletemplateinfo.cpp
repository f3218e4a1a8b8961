#include "roletemplateinfo.h"

#include <shared/wire.h>

namespace zeral {

bool _ROLETEMPLATE_INFO::operator==(const _ROLETEMPLATE_INFO &other) const
{
    return id == other.id && name == other.name && text == other.text && custom == other.custom
           && roles == other.roles && extra == other.extra;
}

QDataStream &operator<<(QDataStream &out, const _ROLETEMPLATE_INFO &info)
{
    return out << info.id << info.name << info.text << info.custom << info.roles << info.extra;
}

QDataStream &operator>>(QDataStream &in, _ROLETEMPLATE_INFO &info)
{
    in >> info.id >> info.name >> info.text >> info.custom;
    wire::readList(in, info.roles);
    return in >> info.extra;
}

} // namespace zeral
