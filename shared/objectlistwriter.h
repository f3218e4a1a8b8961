#pragma once

#include <shared/objectinfo.h>

#include <QByteArray>
#include <QList>

namespace zeral::wire {

// Writes a list of objects byte for byte as QDataStream writes a QList<ObjectInfo> in the
// system's stream settings (big-endian, Qt 5.15), straight into the bytes instead of value by
// value through a device: the server's snapshot pages are mostly this.
class ObjectListWriter
{
public:
    static void append(QByteArray *out, const QList<ObjectInfo> &objects);
};

} // namespace zeral::wire
