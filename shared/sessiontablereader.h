#pragma once

#include <shared/connecteduserinfo.h>

#include <QByteArray>
#include <QHash>

class QDataStream;

namespace zeral::wire {

// Reads the server's sessions by id as QDataStream reads the hash, with the same result and
// checks, but straight from the bytes of an in-memory stream: a poll of 10,000 sessions
// otherwise spends most of its time in QDataStream's device reads.
class SessionTableReader
{
public:
    static QDataStream &read(QDataStream &in, QHash<QByteArray, ConnectedUserInfo> &out);
};

} // namespace zeral::wire
