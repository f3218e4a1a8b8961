#include "schema.h"

#include <server/engine/serverlogging.h>
#include <server/engine/storage/sqldialect.h>

#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

namespace zeral::server {

namespace {

// Version 1: objects of every dataset, their parameters and links, passwords apart from the
// parameters, the role catalogue and templates, permissions, fingerprints, settings and the
// audit log. `userid`, `fingers`, `templates` and `role_template` carry the names and
// columns that the clients' confirmation statements use.
const char *const Version1[] = {
    "CREATE TABLE objects ("
    " uid INTEGER PRIMARY KEY, dataset TEXT NOT NULL, type TEXT NOT NULL,"
    " parent INTEGER NOT NULL DEFAULT 0, reserved INTEGER NOT NULL DEFAULT 0,"
    " changed_at TEXT)",
    "CREATE INDEX objects_by_dataset ON objects(dataset, uid)",
    "CREATE TABLE object_params ("
    " uid INTEGER NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " key TEXT NOT NULL, value TEXT NOT NULL, PRIMARY KEY (uid, key)) WITHOUT ROWID",
    "CREATE INDEX object_params_by_value ON object_params(key, value)",
    "CREATE TABLE links ("
    " child INTEGER NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " parent INTEGER NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " link_type INTEGER NOT NULL, reserved INTEGER NOT NULL DEFAULT 0,"
    " valid_from TEXT, valid_to TEXT, PRIMARY KEY (child, parent, link_type)) WITHOUT ROWID",
    "CREATE INDEX links_by_parent ON links(parent)",
    "CREATE TABLE passwords ("
    " uid INTEGER PRIMARY KEY REFERENCES objects(uid) ON DELETE CASCADE,"
    " hash TEXT NOT NULL)",
    "CREATE TABLE role_groups ("
    " key TEXT PRIMARY KEY, title TEXT NOT NULL, position INTEGER NOT NULL)",
    "CREATE TABLE roles ("
    " name TEXT PRIMARY KEY, group_key TEXT NOT NULL REFERENCES role_groups(key),"
    " title TEXT NOT NULL, position INTEGER NOT NULL)",
    "CREATE TABLE role_template ("
    " id_name TEXT PRIMARY KEY, interface_name TEXT NOT NULL, text TEXT NOT NULL DEFAULT '',"
    " custom INTEGER NOT NULL DEFAULT 0, extra TEXT NOT NULL DEFAULT '')",
    "CREATE TABLE role_template_roles ("
    " template_id TEXT NOT NULL REFERENCES role_template(id_name) ON DELETE CASCADE,"
    " role TEXT NOT NULL, PRIMARY KEY (template_id, role)) WITHOUT ROWID",
    "CREATE TABLE permissions ("
    " subject INTEGER NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " object INTEGER NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " permission INTEGER NOT NULL, PRIMARY KEY (subject, object)) WITHOUT ROWID",
    "CREATE INDEX permissions_by_object ON permissions(object)",
    "CREATE TABLE templates ("
    " uid INTEGER PRIMARY KEY, template_format INTEGER NOT NULL, template BLOB NOT NULL)",
    "CREATE TABLE fingers ("
    " finger_id INTEGER PRIMARY KEY REFERENCES templates(uid) ON DELETE CASCADE,"
    " user_object_id INTEGER NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " finger INTEGER NOT NULL)",
    "CREATE INDEX fingers_by_user ON fingers(user_object_id)",
    "CREATE VIEW userid AS SELECT uid AS id FROM objects WHERE type = 'OT_USER'",
    "CREATE TABLE settings (key TEXT PRIMARY KEY, value TEXT NOT NULL)",
    "CREATE TABLE audit_log ("
    " id INTEGER PRIMARY KEY, at TEXT NOT NULL, operator TEXT NOT NULL, session TEXT NOT NULL,"
    " peer TEXT NOT NULL, command TEXT NOT NULL, object INTEGER NOT NULL,"
    " status INTEGER NOT NULL, detail TEXT NOT NULL)",
};

// Version 2: the audit log keeps the object's name as it was when the row was written (so a
// removed object is still named) and who confirmed the change; indexes let the log screen page
// newest first through a filter by operator, action or object without reading it all. Time
// has none on purpose: ids grow with time, so a walk down the ids meets a period in order,
// while an index on time made SQLite sort every row of a wide period (100 ms over 90,000).
const char *const Version2[] = {
    "ALTER TABLE audit_log ADD COLUMN object_name TEXT NOT NULL DEFAULT ''",
    "ALTER TABLE audit_log ADD COLUMN confirmed_by TEXT NOT NULL DEFAULT ''",
    // The name case folded (Cyrillic too, which SQLite's lower() and LIKE leave alone), for
    // the search by a part of it: folding at read time cost 70 ms over 100,000 rows.
    "ALTER TABLE audit_log ADD COLUMN object_name_folded TEXT NOT NULL DEFAULT ''",
    "CREATE INDEX audit_log_by_operator ON audit_log(operator COLLATE NOCASE)",
    "CREATE INDEX audit_log_by_command ON audit_log(command)",
    "CREATE INDEX audit_log_by_object ON audit_log(object)",
};

// The same tables on PostgreSQL. Uids are BIGINT (they are unsigned 32-bit numbers), binary
// values BYTEA; the audit log numbers its rows with an identity. Tables keep SQLite's names
// and columns, so that the clients' statements run unchanged on both.
const char *const PostgresVersion1[] = {
    "CREATE TABLE objects ("
    " uid BIGINT PRIMARY KEY, dataset TEXT NOT NULL, type TEXT NOT NULL,"
    " parent BIGINT NOT NULL DEFAULT 0, reserved BIGINT NOT NULL DEFAULT 0,"
    " changed_at TEXT)",
    "CREATE INDEX objects_by_dataset ON objects(dataset, uid)",
    "CREATE TABLE object_params ("
    " uid BIGINT NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " key TEXT NOT NULL, value TEXT NOT NULL, PRIMARY KEY (uid, key))",
    "CREATE INDEX object_params_by_value ON object_params(key, value)",
    "CREATE TABLE links ("
    " child BIGINT NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " parent BIGINT NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " link_type BIGINT NOT NULL, reserved BIGINT NOT NULL DEFAULT 0,"
    " valid_from TEXT, valid_to TEXT, PRIMARY KEY (child, parent, link_type))",
    "CREATE INDEX links_by_parent ON links(parent)",
    "CREATE TABLE passwords ("
    " uid BIGINT PRIMARY KEY REFERENCES objects(uid) ON DELETE CASCADE,"
    " hash TEXT NOT NULL)",
    "CREATE TABLE role_groups ("
    " key TEXT PRIMARY KEY, title TEXT NOT NULL, position INTEGER NOT NULL)",
    "CREATE TABLE roles ("
    " name TEXT PRIMARY KEY, group_key TEXT NOT NULL REFERENCES role_groups(key),"
    " title TEXT NOT NULL, position INTEGER NOT NULL)",
    "CREATE TABLE role_template ("
    " id_name TEXT PRIMARY KEY, interface_name TEXT NOT NULL, text TEXT NOT NULL DEFAULT '',"
    " custom INTEGER NOT NULL DEFAULT 0, extra TEXT NOT NULL DEFAULT '')",
    "CREATE TABLE role_template_roles ("
    " template_id TEXT NOT NULL REFERENCES role_template(id_name) ON DELETE CASCADE,"
    " role TEXT NOT NULL, PRIMARY KEY (template_id, role))",
    "CREATE TABLE permissions ("
    " subject BIGINT NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " object BIGINT NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " permission BIGINT NOT NULL, PRIMARY KEY (subject, object))",
    "CREATE INDEX permissions_by_object ON permissions(object)",
    "CREATE TABLE templates ("
    " uid BIGINT PRIMARY KEY, template_format BIGINT NOT NULL, template BYTEA NOT NULL)",
    "CREATE TABLE fingers ("
    " finger_id BIGINT PRIMARY KEY REFERENCES templates(uid) ON DELETE CASCADE,"
    " user_object_id BIGINT NOT NULL REFERENCES objects(uid) ON DELETE CASCADE,"
    " finger INTEGER NOT NULL)",
    "CREATE INDEX fingers_by_user ON fingers(user_object_id)",
    "CREATE VIEW userid AS SELECT uid AS id FROM objects WHERE type = 'OT_USER'",
    "CREATE TABLE settings (key TEXT PRIMARY KEY, value TEXT NOT NULL)",
    "CREATE TABLE audit_log ("
    " id BIGINT GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY, at TEXT NOT NULL,"
    " operator TEXT NOT NULL, session TEXT NOT NULL, peer TEXT NOT NULL, command TEXT NOT NULL,"
    " object BIGINT NOT NULL, status INTEGER NOT NULL, detail TEXT NOT NULL)",
};

// lower() of a database in the C locale folds ASCII only, as SQLite's NOCASE does.
const char *const PostgresVersion2[] = {
    "ALTER TABLE audit_log ADD COLUMN object_name TEXT NOT NULL DEFAULT ''",
    "ALTER TABLE audit_log ADD COLUMN confirmed_by TEXT NOT NULL DEFAULT ''",
    "ALTER TABLE audit_log ADD COLUMN object_name_folded TEXT NOT NULL DEFAULT ''",
    "CREATE INDEX audit_log_by_operator ON audit_log(lower(operator))",
    "CREATE INDEX audit_log_by_command ON audit_log(command)",
    "CREATE INDEX audit_log_by_object ON audit_log(object)",
};

// What SQLite does in C for the clients' statements (SqlFunctions, ReadOnlyScope), in
// PostgreSQL's own terms, brought up to date at every start: the two functions, and the role
// the statements run under, which may read what the authorizer lets them read on SQLite and
// nothing else. `role_is_accessed` answers a boolean, so that the screens' "hasrole = true"
// compares like with like. set_config() and PL/pgSQL are taken from PUBLIC: with them a
// statement could switch back to the server's own role (SET ROLE is checked against the
// login, not against the role in force) and read the password hashes.
const char *const PostgresClientAccess[] = {
    "CREATE OR REPLACE FUNCTION role_is_accessed(user_uid BIGINT, role_name TEXT)"
    " RETURNS BOOLEAN LANGUAGE sql STABLE AS $$"
    " SELECT EXISTS (SELECT 1 FROM object_params t"
    "  JOIN role_template_roles r ON r.template_id = t.value"
    "  WHERE t.uid = user_uid AND t.key = 'PT_ROLETEMPLATE' AND r.role = role_name"
    "  AND NOT EXISTS (SELECT 1 FROM object_params s WHERE s.uid = user_uid"
    "   AND s.key = 'PT_OBJECTSTATE' AND lower(s.value) = 'b')) $$",
    "CREATE OR REPLACE FUNCTION get_object_param(object_uid BIGINT, param_key TEXT)"
    " RETURNS TEXT LANGUAGE sql STABLE AS $$"
    " SELECT value FROM object_params WHERE uid = object_uid AND key = param_key $$",
    "DO $$ BEGIN"
    " IF NOT EXISTS (SELECT 1 FROM pg_roles WHERE rolname = 'zr_client_sql') THEN"
    "  CREATE ROLE zr_client_sql NOLOGIN;"
    " END IF; END $$",
    "GRANT zr_client_sql TO CURRENT_USER",
    "REVOKE ALL ON ALL TABLES IN SCHEMA public FROM zr_client_sql",
    "GRANT USAGE ON SCHEMA public TO zr_client_sql",
    "GRANT SELECT ON objects, object_params, links, role_groups, roles, role_template,"
    " role_template_roles, permissions, templates, fingers, userid, settings, audit_log"
    " TO zr_client_sql",
    "GRANT EXECUTE ON FUNCTION role_is_accessed(BIGINT, TEXT), get_object_param(BIGINT, TEXT)"
    " TO zr_client_sql",
    "REVOKE EXECUTE ON FUNCTION pg_catalog.set_config(TEXT, TEXT, BOOLEAN) FROM PUBLIC",
    "REVOKE USAGE ON LANGUAGE plpgsql FROM PUBLIC",
};

bool run(QSqlDatabase &db, const QString &statement, QString *error)
{
    QSqlQuery query(db);
    if (query.exec(statement))
        return true;
    *error = query.lastError().text() % QLatin1String(" in: ") % statement;
    return false;
}

bool runAll(QSqlDatabase &db, const QStringList &statements, QString *error)
{
    for (const QString &statement : statements) {
        if (!run(db, statement, error))
            return false;
    }
    return true;
}

template<std::size_t N>
QStringList texts(const char *const (&statements)[N])
{
    QStringList result;
    for (const char *statement : statements)
        result << QLatin1String(statement);
    return result;
}

QString setVersionStatement(const SqlDialect &dialect, int version)
{
    return dialect.isPostgres()
               ? QStringLiteral("UPDATE schema_version SET version = %1").arg(version)
               : QStringLiteral("PRAGMA user_version = %1").arg(version);
}

// Runs `statements` in one transaction that holds the write lock; with `version` > 0 the
// schema is then at that version. On PostgreSQL another server may have taken the step
// while this one waited for the lock: a step is taken only if the version is still below.
bool step(QSqlDatabase &db, int version, const QStringList &statements, QString *error)
{
    const SqlDialect dialect = SqlDialect::of(db);
    if (!runAll(db, dialect.beginWrite(), error))
        return false;
    bool ok = true;
    if (version <= 0 || Schema::version(db) < version) {
        QStringList all = statements;
        if (version > 0)
            all << setVersionStatement(dialect, version);
        ok = runAll(db, all, error);
    }
    if (!ok || !run(db, QStringLiteral("COMMIT"), error)) {
        QString ignored;
        run(db, QStringLiteral("ROLLBACK"), &ignored);
        return false;
    }
    if (version > 0)
        qCInfo(lcServerDb) << "schema at version" << version;
    return true;
}

} // namespace

int Schema::version(QSqlDatabase &db)
{
    QSqlQuery query(db);
    if (SqlDialect::of(db).isPostgres()) {
        // The table is made with the first look, so that an empty database reads as 0.
        QString error;
        if (!run(db,
                 QStringLiteral(
                     "CREATE TABLE IF NOT EXISTS schema_version (version INTEGER NOT NULL)"),
                 &error)
            || !run(db,
                    QStringLiteral("INSERT INTO schema_version (version) SELECT 0 WHERE NOT EXISTS"
                                   " (SELECT 1 FROM schema_version)"),
                    &error)) {
            qCWarning(lcServerDb) << "schema version:" << error;
            return -1;
        }
        if (!query.exec(QStringLiteral("SELECT MAX(version) FROM schema_version")) || !query.next())
            return -1;
        return query.value(0).toInt();
    }
    if (!query.exec(QStringLiteral("PRAGMA user_version")) || !query.next())
        return -1;
    return query.value(0).toInt();
}

QString Schema::migrate(QSqlDatabase &db)
{
    const int from = version(db);
    if (from < 0)
        return QStringLiteral("the version of the schema can't be read");
    if (from > CurrentVersion)
        return QStringLiteral("the database is of a newer server (schema %1, this server knows %2)")
            .arg(from)
            .arg(CurrentVersion);
    const bool postgres = SqlDialect::of(db).isPostgres();
    QString error;
    if (from < 1 && !step(db, 1, postgres ? texts(PostgresVersion1) : texts(Version1), &error))
        return error;
    if (from < 2 && !step(db, 2, postgres ? texts(PostgresVersion2) : texts(Version2), &error))
        return error;
    if (postgres && !step(db, 0, texts(PostgresClientAccess), &error))
        return error;
    return {};
}

} // namespace zeral::server
