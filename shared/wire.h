#pragma once

#include <QDataStream>
#include <QHash>
#include <QIODevice>
#include <QList>
#include <QMultiMap>
#include <QString>
#include <QVariant>
#include <QVector>

// Readers for data that comes from another process. Qt's own readers of QList and QVector
// reserve room for the element count read from the stream before a single element has
// arrived; these readers never trust a count further than the bytes really left in the
// stream, so a hostile count can't make a reader allocate gigabytes.
namespace zeral::wire {

// Reads the element count of a container. A count larger than the bytes left in the stream
// (at least one per element) fails the stream as corrupt; streams over sequential devices
// can't tell how much is left and are trusted only with a bounded count.
bool readCount(QDataStream &in, quint32 *count);

template<class Sequence, class Reader>
QDataStream &readSequence(QDataStream &in, Sequence &out, Reader readOne)
{
    out.clear();
    quint32 count = 0;
    if (!readCount(in, &count))
        return in;
    out.reserve(int(count));
    for (quint32 i = 0; i < count; ++i) {
        typename Sequence::value_type value;
        readOne(in, value);
        if (in.status() != QDataStream::Ok) {
            out.clear();
            break;
        }
        out.append(std::move(value));
    }
    return in;
}

template<class T>
QDataStream &readList(QDataStream &in, QList<T> &out)
{
    return readSequence(in, out, [](QDataStream &s, T &v) { s >> v; });
}

template<class T>
QDataStream &readVector(QDataStream &in, QVector<T> &out)
{
    return readSequence(in, out, [](QDataStream &s, T &v) { s >> v; });
}

// A QVariant of a plain value type (numbers, text, bytes, dates) or of a list or map of
// such variants, nested a few levels at most. Any other type stops the read as corrupt.
QDataStream &readVariant(QDataStream &in, QVariant &out);
QDataStream &readVariantHash(QDataStream &in, QVariantHash &out);
QDataStream &readVariantList(QDataStream &in, QVariantList &out);
QDataStream &readVariantVector(QDataStream &in, QVector<QVariant> &out);
QDataStream &readVariantMultiMap(QDataStream &in, QMultiMap<QString, QVariant> &out);

} // namespace zeral::wire
