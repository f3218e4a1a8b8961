#pragma once

#include <shared/inheritdata.h>
#include <shared/types.h>

#include <QDateTime>
#include <QHash>
#include <QMultiMap>
#include <QString>

class QDataStream;

namespace zeral {

// One object of the server's store. Every parameter value is text, whatever it means.
struct ObjectInfo
{
    TYPE_ID uid = 0;
    QString type;
    TYPE_ID parent = 0;
    quint32 reserved = 0;
    QHash<QString, QString> parameters;
    QDateTime timestamp;
    QMultiMap<unsigned int, _INHERIT_DATA> parents;  // links where this object is the child
    QMultiMap<unsigned int, _INHERIT_DATA> children; // links where this object is the parent

    ObjectInfo() = default;
    // A copy-constructed object owns its parameters at once, so that a copy handed to
    // another thread never shares the hash with the store it came from.
    ObjectInfo(const ObjectInfo &other);
    ObjectInfo(ObjectInfo &&other) = default;
    ObjectInfo &operator=(const ObjectInfo &other) = default;
    ObjectInfo &operator=(ObjectInfo &&other) = default;
    ~ObjectInfo() = default;

    bool operator==(const ObjectInfo &other) const;
    bool operator!=(const ObjectInfo &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const ObjectInfo &object);
QDataStream &operator>>(QDataStream &in, ObjectInfo &object);

} // namespace zeral
