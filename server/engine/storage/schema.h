#pragma once

#include <QString>

class QSqlDatabase;

namespace zeral::server {

// The tables of the server and their migrations, counted in PRAGMA user_version on SQLite and
// in the table schema_version on PostgreSQL. Each step
// runs in its own transaction, so a database is always at one version or the next.
class Schema
{
public:
    static constexpr int CurrentVersion = 2;

    // Empty on success, else the failing step and SQLite's error.
    static QString migrate(QSqlDatabase &db);
    static int version(QSqlDatabase &db);

    Schema() = delete;
};

} // namespace zeral::server
