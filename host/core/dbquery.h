#pragma once

#include <QStringList>

class QDataStream;

// SQL to run at the server, read-only. Only the statements are required; the server runs
// them in order and answers with the rows of the last one.
struct DbQuery
{
    QStringList statements;
    qint32 maxRows = 0; // 0: the server's own limit

    bool operator==(const DbQuery &other) const
    {
        return statements == other.statements && maxRows == other.maxRows;
    }
};

QDataStream &operator<<(QDataStream &out, const DbQuery &query);
QDataStream &operator>>(QDataStream &in, DbQuery &query);
