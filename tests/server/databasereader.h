#pragma once

// The server tests' look behind the engine: its database file read through a connection of
// the test's own, read-only, as WAL allows beside the running engine.

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

namespace harness {

inline QSqlQuery readDatabase(const QString &path, const QString &statement)
{
    const QString name = QStringLiteral("reader:") + path;
    QSqlDatabase db = QSqlDatabase::contains(name)
                          ? QSqlDatabase::database(name)
                          : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(path);
    db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
    if (!db.isOpen())
        db.open();
    QSqlQuery result(db);
    result.exec(statement);
    return result;
}

} // namespace harness
