#pragma once

#include <QStringList>
#include <QVariant>
#include <QVector>

class QDataStream;

// The rows of an SQL query run at the server, row-major.
struct DbResult
{
    qint32 rowCount = 0;
    qint32 columnCount = 0;
    QVector<QVariant> values;
    QStringList columnNames;

    // Cell (row, column); an invalid QVariant outside the table.
    QVariant value(int row, int column) const;

    bool operator==(const DbResult &other) const
    {
        return rowCount == other.rowCount && columnCount == other.columnCount
               && values == other.values && columnNames == other.columnNames;
    }
};

QDataStream &operator<<(QDataStream &out, const DbResult &result);
// Fails the stream when the counts don't match the values.
QDataStream &operator>>(QDataStream &in, DbResult &result);
