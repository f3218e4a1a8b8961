#include "objectlistreader.h"

#include <shared/bytecursor.h>
#include <shared/wire.h>

#include <QDataStream>

namespace zeral::wire {

namespace {

// After this many values of a parameter, its values stay pooled only if at least a quarter
// of them were found in the pool.
constexpr int ValuesJudged = 256;

QMultiMap<unsigned int, _INHERIT_DATA> readLinks(ByteCursor &cursor)
{
    QMultiMap<unsigned int, _INHERIT_DATA> links;
    const quint32 n = cursor.count();
    for (quint32 i = 0; i < n && cursor.good(); ++i) {
        const unsigned int key = cursor.take<quint32>();
        _INHERIT_DATA link;
        link.child = cursor.take<quint32>();
        link.parent = cursor.take<quint32>();
        link.linkType = cursor.take<quint32>();
        link.reserved = cursor.take<quint32>();
        link.validFrom = cursor.dateTime();
        link.validTo = cursor.dateTime();
        if (cursor.good())
            links.insert(key, link);
    }
    return cursor.good() ? links : QMultiMap<unsigned int, _INHERIT_DATA>();
}

} // namespace

void ObjectListReader::clear()
{
    m_pool.clear();
    m_valueStats.clear();
}

QDataStream &ObjectListReader::read(QDataStream &in, QList<ObjectInfo> &out)
{
    out.clear();
    ByteCursor::readInPlace(
        in,
        [&](ByteCursor &cursor) {
            const quint32 n = cursor.count();
            out.reserve(int(n));
            // Read in place: QList has no moving append, and a copy of an object copies its
            // hash.
            for (quint32 i = 0; i < n && cursor.good(); ++i) {
                out.append(ObjectInfo());
                readObject(cursor, out.last());
            }
        },
        [&]() -> QDataStream & {
            out.clear();
            return readList(in, out);
        });
    if (in.status() != QDataStream::Ok)
        out.clear();
    return in;
}

void ObjectListReader::readObject(ByteCursor &cursor, ObjectInfo &object)
{
    object.uid = cursor.take<quint32>();
    object.type = cursor.text(&m_pool);
    object.parent = cursor.take<quint32>();
    object.reserved = cursor.take<quint32>();
    const quint32 n = cursor.count();
    object.parameters.reserve(int(n));
    // A name that comes twice (which no server sends) keeps the value read last.
    for (quint32 i = 0; i < n && cursor.good(); ++i) {
        const QString key = cursor.text(&m_pool);
        const QString value = readValue(cursor, key);
        if (cursor.good())
            object.parameters.insert(key, value);
    }
    object.timestamp = cursor.dateTime();
    object.parents = readLinks(cursor);
    object.children = readLinks(cursor);
}

QString ObjectListReader::readValue(ByteCursor &cursor, const QString &key)
{
    // Statistics are kept by the pooled key; a key that isn't pooled has none.
    if (key.isEmpty() || m_pool.isFull())
        return cursor.text(nullptr);
    ValueStats &stats = m_valueStats[key.constData()];
    if (!stats.pooled)
        return cursor.text(nullptr);
    bool added = false;
    QString value = cursor.text(&m_pool, &added);
    ++stats.seen;
    if (!added)
        ++stats.found;
    if (stats.seen == ValuesJudged)
        stats.pooled = stats.found * 4 >= stats.seen;
    return value;
}

} // namespace zeral::wire
