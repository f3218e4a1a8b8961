#pragma once

// The server tests' look behind the engine: its database read through a connection of the
// test's own (on SQLite read-only, as WAL allows beside the running engine).

#include <tests/server/testdatabase.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

namespace harness {

inline QSqlQuery readDatabase(const QString &path, const QString &statement)
{
    const QString name = QStringLiteral("reader:") + path;
    QSqlDatabase db
        = QSqlDatabase::contains(name) ? QSqlDatabase::database(name) : sideDatabase(path, name);
    if (!onPostgres())
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
    if (!db.isOpen())
        db.open();
    QSqlQuery result(db);
    result.exec(statement);
    return result;
}

} // namespace harness
