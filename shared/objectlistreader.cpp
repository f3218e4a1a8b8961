#include "objectlistreader.h"

#include <shared/wire.h>

#include <QBuffer>
#include <QDataStream>
#include <QtEndian>

#include <limits>

namespace zeral::wire {

namespace {

// After this many values of a parameter, its values stay pooled only if at least a quarter
// of them were found in the pool.
constexpr int ValuesJudged = 256;

constexpr quint32 NullText = 0xffffffffu;

} // namespace

// The bytes left to read, in the stream's settings (big-endian, Qt 5.15 formats). A read
// past the end or a malformed value stops it; `fallBack` asks for QDataStream's own reader,
// for a value this one doesn't decode (a date in a named time zone).
class ObjectListReader::Cursor
{
public:
    Cursor(const uchar *begin, const uchar *end)
        : m_begin(begin)
        , m_at(begin)
        , m_end(end)
    {}

    QDataStream::Status status = QDataStream::Ok;
    bool fallBack = false;

    bool good() const { return status == QDataStream::Ok && !fallBack; }
    qint64 consumed() const { return m_at - m_begin; }
    qint64 left() const { return m_end - m_at; }

    template<class T>
    T take()
    {
        if (!good() || left() < qint64(sizeof(T))) {
            fail(QDataStream::ReadPastEnd);
            return T{};
        }
        const T value = qFromBigEndian<T>(m_at);
        m_at += sizeof(T);
        return value;
    }

    // A count of elements of at least one byte each, which the bytes left must be able to hold.
    quint32 count()
    {
        const quint32 n = take<quint32>();
        if (good() && qint64(n) > left())
            fail(QDataStream::ReadCorruptData);
        return good() ? n : 0;
    }

    QString text(StringPool *pool, bool *added = nullptr)
    {
        if (added)
            *added = false;
        const quint32 bytes = take<quint32>();
        if (!good() || bytes == NullText)
            return QString();
        if (bytes & 1) {
            fail(QDataStream::ReadCorruptData);
            return QString();
        }
        if (qint64(bytes) > left()) {
            fail(QDataStream::ReadPastEnd);
            return QString();
        }
        const uchar *data = m_at;
        m_at += bytes;
        const int units = int(bytes / 2);
        if (units == 0)
            return QLatin1String("");
        if (pool)
            return pool->fromUtf16BigEndian(data, units, added);
        QString text(units, Qt::Uninitialized);
        qFromBigEndian<ushort>(data, units, text.data());
        return text;
    }

    QDateTime dateTime()
    {
        const qint64 julianDay = take<qint64>();
        const quint32 msecs = take<quint32>();
        const qint8 spec = take<qint8>();
        if (!good())
            return QDateTime();
        // A null date or time is written as values out of range, which read back as null.
        const QDate date = QDate::fromJulianDay(julianDay);
        const QTime time = msecs == std::numeric_limits<quint32>::max()
                               ? QTime()
                               : QTime::fromMSecsSinceStartOfDay(int(msecs));
        switch (spec) {
        case Qt::LocalTime:
            return QDateTime(date, time, Qt::LocalTime);
        case Qt::UTC:
            return QDateTime(date, time, Qt::UTC);
        case Qt::OffsetFromUTC: {
            const qint32 offset = take<qint32>();
            return good() ? QDateTime(date, time, Qt::OffsetFromUTC, offset) : QDateTime();
        }
        default:
            fallBack = true;
            return QDateTime();
        }
    }

    QMultiMap<unsigned int, _INHERIT_DATA> links()
    {
        QMultiMap<unsigned int, _INHERIT_DATA> links;
        const quint32 n = count();
        for (quint32 i = 0; i < n && good(); ++i) {
            const unsigned int key = take<quint32>();
            _INHERIT_DATA link;
            link.child = take<quint32>();
            link.parent = take<quint32>();
            link.linkType = take<quint32>();
            link.reserved = take<quint32>();
            link.validFrom = dateTime();
            link.validTo = dateTime();
            if (good())
                links.insert(key, link);
        }
        return good() ? links : QMultiMap<unsigned int, _INHERIT_DATA>();
    }

private:
    void fail(QDataStream::Status why)
    {
        if (status == QDataStream::Ok)
            status = why;
        m_at = m_end;
    }

    const uchar *m_begin;
    const uchar *m_at;
    const uchar *m_end;
};

void ObjectListReader::clear()
{
    m_pool.clear();
    m_valueStats.clear();
}

QDataStream &ObjectListReader::read(QDataStream &in, QList<ObjectInfo> &out)
{
    out.clear();
    // Only an in-memory stream in the system's settings is read in place.
    auto *buffer = qobject_cast<QBuffer *>(in.device());
    if (!buffer || !buffer->isOpen() || in.status() != QDataStream::Ok
        || in.byteOrder() != QDataStream::BigEndian || in.version() < QDataStream::Qt_5_2)
        return readList(in, out);

    const qint64 start = buffer->pos();
    const QByteArray &bytes = buffer->data();
    const auto *begin = reinterpret_cast<const uchar *>(bytes.constData());
    Cursor cursor(begin + start, begin + bytes.size());
    const quint32 n = cursor.count();
    out.reserve(int(n));
    // Read in place: QList has no moving append, and a copy of an object copies its hash.
    for (quint32 i = 0; i < n && cursor.good(); ++i) {
        out.append(ObjectInfo());
        readObject(cursor, out.last());
    }
    if (cursor.fallBack) {
        out.clear();
        buffer->seek(start);
        return readList(in, out);
    }
    if (!cursor.good()) {
        out.clear();
        in.setStatus(cursor.status);
        buffer->seek(bytes.size());
        return in;
    }
    buffer->seek(start + cursor.consumed());
    return in;
}

void ObjectListReader::readObject(Cursor &cursor, ObjectInfo &object)
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
    object.parents = cursor.links();
    object.children = cursor.links();
}

QString ObjectListReader::readValue(Cursor &cursor, const QString &key)
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
