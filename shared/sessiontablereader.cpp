#include "sessiontablereader.h"

#include <shared/bytecursor.h>

#include <QDataStream>

namespace zeral::wire {

QDataStream &SessionTableReader::read(QDataStream &in, QHash<QByteArray, ConnectedUserInfo> &out)
{
    out.clear();
    ByteCursor::readInPlace(
        in,
        [&](ByteCursor &cursor) {
            const quint32 n = cursor.count();
            out.reserve(int(n));
            // A session id that comes twice (which no server sends) keeps the session read last.
            for (quint32 i = 0; i < n && cursor.good(); ++i) {
                // Filled where it is kept; a failed read empties the whole table anyway.
                ConnectedUserInfo &session = out[cursor.bytes()];
                session.user = cursor.text();
                session.ipPort = cursor.text();
                session.connectDateTime = cursor.dateTime();
                session.lastActionTime = cursor.dateTime();
                session.sessionId = cursor.bytes();
            }
        },
        [&]() -> QDataStream & { return in >> out; });
    if (in.status() != QDataStream::Ok)
        out.clear();
    return in;
}

} // namespace zeral::wire
