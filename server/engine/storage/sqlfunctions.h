#pragma once

#include <QString>

struct sqlite3;

namespace zeral::server {

// The SQL functions of the server's database, for the statements clients send:
//   role_is_accessed(uid, role): 1 if the user's role template grants the role and the user
//     isn't blocked, else 0;
//   get_object_param(uid, key): the parameter's text, or NULL.
class SqlFunctions
{
public:
    static bool install(sqlite3 *db);

    SqlFunctions() = delete;
};

// While it lives, statements prepared on the connection may only read, and may not read the
// password hashes nor the mail outbox. Everything else is refused by SQLite's authorizer.
class ReadOnlyScope
{
public:
    explicit ReadOnlyScope(sqlite3 *db);
    ~ReadOnlyScope();
    ReadOnlyScope(const ReadOnlyScope &) = delete;
    ReadOnlyScope &operator=(const ReadOnlyScope &) = delete;

    // What the last refusal was about ("INSERT", "PRAGMA", "ATTACH", a table name, ...).
    QString refused() const { return m_refused; }

private:
    static int authorize(void *self, int action, const char *a, const char *b, const char *,
                         const char *);
    sqlite3 *m_db;
    QString m_refused;
};

} // namespace zeral::server
