#include "objectlistwriter.h"

#include <shared/bytewriter.h>

#include <QVarLengthArray>

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

void writeLinks(ByteWriter &out, const QMultiMap<unsigned int, _INHERIT_DATA> &links)
{
    // Qt writes associative containers last to first, so that reading them back with inserts
    // keeps the order of equal keys.
    out.put<quint32>(quint32(links.size()));
    for (const auto &it : reversed(links)) {
        out.put<quint32>(it.key());
        const _INHERIT_DATA &link = it.value();
        out.put<quint32>(link.child);
        out.put<quint32>(link.parent);
        out.put<quint32>(link.linkType);
        out.put<quint32>(link.reserved);
        out.dateTime(link.validFrom);
        out.dateTime(link.validTo);
    }
}

void writeObject(ByteWriter &out, const ObjectInfo &object)
{
    out.put<quint32>(object.uid);
    out.text(object.type);
    out.put<quint32>(object.parent);
    out.put<quint32>(object.reserved);
    out.put<quint32>(quint32(object.parameters.size()));
    for (const auto &it : reversed(object.parameters)) {
        out.text(it.key());
        out.text(it.value());
    }
    out.dateTime(object.timestamp);
    writeLinks(out, object.parents);
    writeLinks(out, object.children);
}

} // namespace

void ObjectListWriter::append(QByteArray *out, const QList<ObjectInfo> &objects)
{
    ByteWriter bytes(out);
    bytes.put<quint32>(quint32(objects.size()));
    for (const ObjectInfo &object : objects)
        writeObject(bytes, object);
}

} // namespace zeral::wire
