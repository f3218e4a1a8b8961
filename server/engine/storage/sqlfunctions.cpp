#include "sqlfunctions.h"

#include <sqlite3.h>

#include <cstring>

namespace zeral::server {

namespace {

constexpr char RoleIsAccessedSql[]
    = "SELECT 1 FROM object_params t"
      " JOIN role_template_roles r ON r.template_id = t.value"
      " WHERE t.uid = ?1 AND t.key = 'PT_ROLETEMPLATE' AND r.role = ?2"
      " AND NOT EXISTS (SELECT 1 FROM object_params s WHERE s.uid = ?1"
      "  AND s.key = 'PT_OBJECTSTATE' AND lower(s.value) = 'b')";
constexpr char ObjectParamSql[] = "SELECT value FROM object_params WHERE uid = ?1 AND key = ?2";

// The statement a function runs, prepared once per connection and reused for every call: a
// statement over 100,000 users calls the function 100,000 times, and preparing it each time
// took most of the statement's time. It is finalized when the function is removed from the
// connection (SqlFunctions::remove), which must happen before the connection closes.
struct Cached
{
    const char *sql;
    sqlite3_stmt *statement = nullptr;
};

void finalize(void *cached)
{
    auto *self = static_cast<Cached *>(cached);
    sqlite3_finalize(self->statement);
    delete self;
}

// Runs the function's one-row query with its two arguments bound as ?1 and ?2, and hands the
// first column of the row (if any) to `take`.
template<class Take>
void querySingle(sqlite3_context *context, sqlite3_value **argv, Take take)
{
    sqlite3 *db = sqlite3_context_db_handle(context);
    auto *cached = static_cast<Cached *>(sqlite3_user_data(context));
    if (!cached->statement
        && sqlite3_prepare_v3(db, cached->sql, -1, SQLITE_PREPARE_PERSISTENT, &cached->statement,
                              nullptr)
               != SQLITE_OK) {
        sqlite3_result_error(context, sqlite3_errmsg(db), -1);
        sqlite3_finalize(cached->statement);
        cached->statement = nullptr;
        return;
    }
    sqlite3_stmt *statement = cached->statement;
    sqlite3_bind_value(statement, 1, argv[0]);
    sqlite3_bind_value(statement, 2, argv[1]);
    const int step = sqlite3_step(statement);
    if (step == SQLITE_ROW)
        take(statement);
    else if (step != SQLITE_DONE)
        sqlite3_result_error(context, sqlite3_errmsg(db), -1);
    // Reset at once: a statement left on its row would keep its read transaction open.
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
}

void roleIsAccessed(sqlite3_context *context, int, sqlite3_value **argv)
{
    sqlite3_result_int(context, 0);
    querySingle(context, argv, [context](sqlite3_stmt *) { sqlite3_result_int(context, 1); });
}

void getObjectParam(sqlite3_context *context, int, sqlite3_value **argv)
{
    sqlite3_result_null(context);
    querySingle(context, argv, [context](sqlite3_stmt *statement) {
        sqlite3_result_value(context, sqlite3_column_value(statement, 0));
    });
}

const int functionFlags = SQLITE_UTF8; // not deterministic: the answer follows the stored data

} // namespace

bool SqlFunctions::install(sqlite3 *db)
{
    if (!db)
        return false;
    // On failure SQLite calls the destructor itself.
    return sqlite3_create_function_v2(db, "role_is_accessed", 2, functionFlags,
                                      new Cached{RoleIsAccessedSql}, roleIsAccessed, nullptr,
                                      nullptr, finalize)
               == SQLITE_OK
           && sqlite3_create_function_v2(db, "get_object_param", 2, functionFlags,
                                         new Cached{ObjectParamSql}, getObjectParam, nullptr,
                                         nullptr, finalize)
                  == SQLITE_OK;
}

void SqlFunctions::remove(sqlite3 *db)
{
    if (!db)
        return;
    // Replacing a function by none calls the old one's destructor, which finalizes its statement.
    for (const char *name : {"role_is_accessed", "get_object_param"})
        sqlite3_create_function_v2(db, name, 2, functionFlags, nullptr, nullptr, nullptr, nullptr,
                                   nullptr);
}

ReadOnlyScope::ReadOnlyScope(sqlite3 *db, int timeLimitMs, const QAtomicInt *stop)
    : m_db(db)
    , m_deadline(timeLimitMs)
    , m_stop(stop)
    , m_previousLengthLimit(sqlite3_limit(db, SQLITE_LIMIT_LENGTH, MaxValueBytes))
{
    sqlite3_set_authorizer(m_db, &ReadOnlyScope::authorize, this);
    // Every thousand steps of the virtual machine: cheap, and a few milliseconds apart.
    sqlite3_progress_handler(m_db, 1000, &ReadOnlyScope::progress, this);
}

ReadOnlyScope::~ReadOnlyScope()
{
    sqlite3_progress_handler(m_db, 0, nullptr, nullptr);
    sqlite3_set_authorizer(m_db, nullptr, nullptr);
    sqlite3_limit(m_db, SQLITE_LIMIT_LENGTH, m_previousLengthLimit);
}

int ReadOnlyScope::progress(void *self)
{
    auto *scope = static_cast<ReadOnlyScope *>(self);
    if (scope->m_stop && scope->m_stop->loadRelaxed() != 0)
        scope->m_stopped = true;
    else if (scope->m_deadline.hasExpired())
        scope->m_timedOut = true;
    return scope->m_timedOut || scope->m_stopped ? 1 : 0;
}

int ReadOnlyScope::authorize(void *self, int action, const char *a, const char *, const char *,
                             const char *)
{
    auto *scope = static_cast<ReadOnlyScope *>(self);
    switch (action) {
    case SQLITE_SELECT:
    case SQLITE_FUNCTION:
    case SQLITE_RECURSIVE:
        return SQLITE_OK;
    case SQLITE_READ:
        // Password hashes and the texts of mails (which carry credentials) stay in the server.
        if (a && (std::strcmp(a, "passwords") == 0 || std::strcmp(a, "mail_outbox") == 0)) {
            scope->m_refused = QString::fromUtf8(a);
            return SQLITE_DENY;
        }
        return SQLITE_OK;
    case SQLITE_PRAGMA:
        scope->m_refused = QStringLiteral("PRAGMA");
        return SQLITE_DENY;
    case SQLITE_ATTACH:
    case SQLITE_DETACH:
        scope->m_refused = QStringLiteral("ATTACH");
        return SQLITE_DENY;
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_DELETE:
        scope->m_refused = a ? QString::fromUtf8(a) : QStringLiteral("write");
        return SQLITE_DENY;
    default:
        scope->m_refused = QStringLiteral("action %1").arg(action);
        return SQLITE_DENY;
    }
}

} // namespace zeral::server
