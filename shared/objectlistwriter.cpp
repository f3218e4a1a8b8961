#include "objectlistwriter.h"

#include <QDataStream>
#include <QVarLengthArray>
#include <QtEndian>

#include <algorithm>

namespace zeral::wire {

namespace {

// The iterators of a container, last to first: stepping a hash's iterator back walks its
// buckets, collecting them forward doesn't.
template<class Container>
QVarLengthArray<typename Container::const_iterator, 16> reversed(const Container &container)
{
    QVarLengthArray<typename Container::const_iterator, 16> its;
    for (auto it = container.cbegin(); it != container.cend(); ++it)
        its.append(it);
    std::reverse(its.begin(), its.end());
    return its;
}

class Bytes
{
public:
    explicit Bytes(QByteArray *out)
        : m_out(out)
    {}

    template<class T>
    void put(T value)
    {
        char bytes[sizeof(T)];
        qToBigEndian<T>(value, bytes);
        m_out->append(bytes, int(sizeof(T)));
    }

    void text(const QString &text)
    {
        if (text.isNull()) {
            put<quint32>(0xffffffffu);
            return;
        }
        put<quint32>(quint32(text.size()) * 2);
        const int at = m_out->size();
        m_out->resize(at + text.size() * 2);
        qToBigEndian<ushort>(text.constData(), text.size(), m_out->data() + at);
    }

    void dateTime(const QDateTime &stamp)
    {
        const QDate date = stamp.date();
        const QTime time = stamp.time();
        put<qint64>(date.toJulianDay());
        put<quint32>(time.isNull() ? 0xffffffffu : quint32(time.msecsSinceStartOfDay()));
        put<qint8>(qint8(stamp.timeSpec()));
        if (stamp.timeSpec() == Qt::OffsetFromUTC)
            put<qint32>(stamp.offsetFromUtc());
    }

    // Qt writes associative containers last to first, so that reading them back with
    // inserts keeps the order of equal keys.
    void links(const QMultiMap<unsigned int, _INHERIT_DATA> &links)
    {
        put<quint32>(quint32(links.size()));
        for (const auto &it : reversed(links)) {
            put<quint32>(it.key());
            const _INHERIT_DATA &link = it.value();
            put<quint32>(link.child);
            put<quint32>(link.parent);
            put<quint32>(link.linkType);
            put<quint32>(link.reserved);
            dateTime(link.validFrom);
            dateTime(link.validTo);
        }
    }

    void object(const ObjectInfo &object)
    {
        put<quint32>(object.uid);
        text(object.type);
        put<quint32>(object.parent);
        put<quint32>(object.reserved);
        put<quint32>(quint32(object.parameters.size()));
        for (const auto &it : reversed(object.parameters)) {
            text(it.key());
            text(it.value());
        }
        dateTime(object.timestamp);
        links(object.parents);
        links(object.children);
    }

private:
    QByteArray *m_out;
};

bool writtenInPlace(const QDateTime &stamp)
{
    return stamp.timeSpec() != Qt::TimeZone;
}

bool writtenInPlace(const ObjectInfo &object)
{
    if (!writtenInPlace(object.timestamp))
        return false;
    for (const auto *links : {&object.parents, &object.children}) {
        for (const _INHERIT_DATA &link : *links) {
            if (!writtenInPlace(link.validFrom) || !writtenInPlace(link.validTo))
                return false;
        }
    }
    return true;
}

} // namespace

void ObjectListWriter::append(QByteArray *out, const QList<ObjectInfo> &objects)
{
    // A time in a named zone carries the zone's own record: QDataStream writes that list.
    for (const ObjectInfo &object : objects) {
        if (!writtenInPlace(object)) {
            QDataStream stream(out, QIODevice::WriteOnly | QIODevice::Append);
            stream.setVersion(QDataStream::Qt_5_15);
            stream << objects;
            return;
        }
    }
    Bytes bytes(out);
    bytes.put<quint32>(quint32(objects.size()));
    for (const ObjectInfo &object : objects)
        bytes.object(object);
}

} // namespace zeral::wire
