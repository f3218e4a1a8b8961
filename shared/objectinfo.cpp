#include "objectinfo.h"

#include <QDataStream>

namespace zeral {

ObjectInfo::ObjectInfo(const ObjectInfo &other)
    : uid(other.uid)
    , type(other.type)
    , parent(other.parent)
    , reserved(other.reserved)
    , parameters(other.parameters)
    , timestamp(other.timestamp)
    , parents(other.parents)
    , children(other.children)
{
    // QHash::detach() copies only a shared hash, and leaves one marked unsharable alone.
    parameters.detach();
}

bool ObjectInfo::operator==(const ObjectInfo &other) const
{
    return uid == other.uid && type == other.type && parent == other.parent
           && reserved == other.reserved && parameters == other.parameters
           && timestamp == other.timestamp && parents == other.parents
           && children == other.children;
}

QDataStream &operator<<(QDataStream &out, const ObjectInfo &object)
{
    return out << object.uid << object.type << object.parent << object.reserved << object.parameters
               << object.timestamp << object.parents << object.children;
}

QDataStream &operator>>(QDataStream &in, ObjectInfo &object)
{
    return in >> object.uid >> object.type >> object.parent >> object.reserved >> object.parameters
           >> object.timestamp >> object.parents >> object.children;
}

} // namespace zeral
