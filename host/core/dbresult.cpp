#include "dbresult.h"

#include <shared/wire.h>

QVariant DbResult::value(int row, int column) const
{
    if (row < 0 || column < 0 || column >= columnCount)
        return QVariant();
    const qint64 index = qint64(row) * columnCount + column;
    return index < values.size() ? values.at(int(index)) : QVariant();
}

QDataStream &operator<<(QDataStream &out, const DbResult &result)
{
    return out << result.rowCount << result.columnCount << result.values << result.columnNames;
}

QDataStream &operator>>(QDataStream &in, DbResult &result)
{
    in >> result.rowCount >> result.columnCount;
    zeral::wire::readVariantVector(in, result.values);
    QList<QString> names;
    zeral::wire::readList(in, names);
    result.columnNames = QStringList(names);
    if (in.status() == QDataStream::Ok
        && (result.rowCount < 0 || result.columnCount < 0
            || qint64(result.rowCount) * result.columnCount != result.values.size())) {
        in.setStatus(QDataStream::ReadCorruptData);
    }
    if (in.status() != QDataStream::Ok)
        result = DbResult();
    return in;
}
