#pragma once

#include <shared/objectinfo.h>
#include <shared/stringpool.h>

#include <QHash>
#include <QList>

class QDataStream;

namespace zeral::wire {

class ByteCursor;

// Reads a list of objects as `readList` does, with the same result and the same checks, but
// straight from the bytes of an in-memory stream instead of value by value through
// QDataStream, and with the texts pooled: parameter names and types always, a parameter's
// values for as long as they mostly repeat (names and templates do, logins and e-mails
// don't, and pooling those would only cost time). Keep one reader for a whole load, so that
// its pool spans the pages; the strings stay shared in the objects after the reader is gone.
class ObjectListReader
{
public:
    ObjectListReader() = default;

    QDataStream &read(QDataStream &in, QList<ObjectInfo> &out);
    // Forgets the pooled texts (the objects read keep theirs).
    void clear();

private:
    // How often the values of one parameter were found in the pool.
    struct ValueStats
    {
        int seen = 0;
        int found = 0;
        bool pooled = true;
    };
    void readObject(ByteCursor &cursor, ObjectInfo &object);
    QString readValue(ByteCursor &cursor, const QString &key);

    StringPool m_pool;
    QHash<const void *, ValueStats> m_valueStats; // by the pooled key's characters
};

} // namespace zeral::wire
