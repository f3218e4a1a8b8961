#include "dbquery.h"

#include <shared/wire.h>

QDataStream &operator<<(QDataStream &out, const DbQuery &query)
{
    return out << query.statements << query.maxRows;
}

QDataStream &operator>>(QDataStream &in, DbQuery &query)
{
    QList<QString> statements;
    zeral::wire::readList(in, statements);
    query.statements = QStringList(statements);
    return in >> query.maxRows;
}
