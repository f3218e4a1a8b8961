#pragma once

#include <QHashFunctions>
#include <QString>

// Identifies a command that a plugin handles: its kind and its name.
struct CommandType
{
    qint32 type = 0;
    QString name;

    CommandType() = default;
    CommandType(qint32 type, const QString &name)
        : type(type)
        , name(name)
    {}

    bool operator==(const CommandType &other) const
    {
        return type == other.type && name == other.name;
    }
    bool operator!=(const CommandType &other) const { return !(*this == other); }
};

inline uint qHash(const CommandType &key, uint seed = 0)
{
    return qHash(key.name, seed) ^ uint(key.type);
}
