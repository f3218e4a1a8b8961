#pragma once

#include <QAtomicInt>
#include <QDeadlineTimer>
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
    // Takes them off again; to be called before the connection closes, which it would
    // otherwise refuse while their statements (prepared once, kept) are alive.
    static void remove(sqlite3 *db);

    SqlFunctions() = delete;
};

// While it lives, statements prepared on the connection may only read, and may not read the
// password hashes nor the mail outbox. Everything else is refused by SQLite's authorizer.
// A statement is also stopped when it runs longer than `timeLimitMs` (one client must not
// hold a worker for long) or when `*stop` turns non-zero (set from another thread when the
// server stops), and no single value may grow beyond `MaxValueBytes`.
class ReadOnlyScope
{
public:
    static constexpr int MaxValueBytes = 16 * 1024 * 1024;

    ReadOnlyScope(sqlite3 *db, int timeLimitMs, const QAtomicInt *stop = nullptr);
    ~ReadOnlyScope();
    ReadOnlyScope(const ReadOnlyScope &) = delete;
    ReadOnlyScope &operator=(const ReadOnlyScope &) = delete;

    // What the last refusal was about ("INSERT", "PRAGMA", "ATTACH", a table name, ...).
    QString refused() const { return m_refused; }
    // Whether the time limit stopped a statement.
    bool timedOut() const { return m_timedOut; }
    // Whether `*stop` stopped a statement.
    bool stopped() const { return m_stopped; }

private:
    static int authorize(void *self, int action, const char *a, const char *b, const char *,
                         const char *);
    static int progress(void *self);
    sqlite3 *m_db;
    QDeadlineTimer m_deadline;
    const QAtomicInt *m_stop;
    int m_previousLengthLimit;
    bool m_timedOut = false;
    bool m_stopped = false;
    QString m_refused;
};

} // namespace zeral::server
