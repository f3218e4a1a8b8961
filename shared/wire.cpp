#include "wire.h"

#include <QDate>
#include <QDateTime>
#include <QTime>

namespace zeral::wire {

namespace {

constexpr int MaxVariantDepth = 8;
// Without a device that knows its size, a count above this is refused outright.
constexpr quint32 MaxCountOnSequentialDevice = 1u << 20;

QDataStream &readVariantAt(QDataStream &in, QVariant &out, int depth);

template<class Container>
QDataStream &readVariantPairs(QDataStream &in, Container &out, int depth)
{
    out.clear();
    quint32 count = 0;
    if (!readCount(in, &count))
        return in;
    for (quint32 i = 0; i < count; ++i) {
        QString key;
        QVariant value;
        in >> key;
        readVariantAt(in, value, depth);
        if (in.status() != QDataStream::Ok) {
            out.clear();
            break;
        }
        out.insert(key, value);
    }
    return in;
}

QDataStream &readVariantSequence(QDataStream &in, QVariantList &out, int depth)
{
    return readSequence(in, out,
                        [depth](QDataStream &s, QVariant &v) { readVariantAt(s, v, depth); });
}

bool isPlainType(quint32 typeId)
{
    switch (typeId) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::UChar:
    case QMetaType::SChar:
    case QMetaType::QChar:
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QDateTime:
        return true;
    default:
        return false;
    }
}

QDataStream &readVariantAt(QDataStream &in, QVariant &out, int depth)
{
    out = QVariant();
    if (depth > MaxVariantDepth) {
        in.setStatus(QDataStream::ReadCorruptData);
        return in;
    }
    quint32 typeId = 0;
    qint8 isNull = 0;
    in >> typeId >> isNull;
    if (in.status() != QDataStream::Ok)
        return in;

    QVariant value;
    switch (typeId) {
    case QMetaType::UnknownType:
        return in; // an invalid variant carries nothing more
    case QMetaType::QVariantList: {
        QVariantList list;
        readVariantSequence(in, list, depth + 1);
        value = list;
        break;
    }
    case QMetaType::QVariantMap: {
        QVariantMap map;
        readVariantPairs(in, map, depth + 1);
        value = map;
        break;
    }
    case QMetaType::QVariantHash: {
        QVariantHash hash;
        readVariantPairs(in, hash, depth + 1);
        value = hash;
        break;
    }
    case QMetaType::QStringList: {
        QList<QString> list;
        readList(in, list);
        value = QStringList(list);
        break;
    }
    default:
        if (!isPlainType(typeId)) {
            in.setStatus(QDataStream::ReadCorruptData);
            return in;
        }
        value = QVariant(int(typeId), nullptr);
        if (!QMetaType::load(in, int(typeId), value.data()))
            in.setStatus(QDataStream::ReadCorruptData);
        break;
    }
    // Only a complete value is handed out. A null one stays null (a NULL column of a query
    // is a null variant of the column's type, not a zero).
    if (in.status() == QDataStream::Ok)
        out = isNull ? QVariant(QVariant::Type(typeId)) : value;
    return in;
}

} // namespace

bool readCount(QDataStream &in, quint32 *count)
{
    in >> *count;
    if (in.status() != QDataStream::Ok)
        return false;
    const QIODevice *device = in.device();
    const bool plausible = device && !device->isSequential()
                               ? qint64(*count) <= device->bytesAvailable()
                               : *count <= MaxCountOnSequentialDevice;
    if (!plausible)
        in.setStatus(QDataStream::ReadCorruptData);
    return plausible;
}

QDataStream &readVariant(QDataStream &in, QVariant &out)
{
    return readVariantAt(in, out, 0);
}

QDataStream &readVariantHash(QDataStream &in, QVariantHash &out)
{
    return readVariantPairs(in, out, 1);
}

QDataStream &readVariantList(QDataStream &in, QVariantList &out)
{
    return readVariantSequence(in, out, 1);
}

QDataStream &readVariantVector(QDataStream &in, QVector<QVariant> &out)
{
    return readSequence(in, out, [](QDataStream &s, QVariant &v) { readVariantAt(s, v, 1); });
}

QDataStream &readVariantMultiMap(QDataStream &in, QMultiMap<QString, QVariant> &out)
{
    // QDataStream writes a map from its last entry to its first, and QMultiMap::insert puts
    // an entry in front of the equal keys it holds: read back, repeated keys keep their order.
    return readVariantPairs(in, out, 1);
}

} // namespace zeral::wire
