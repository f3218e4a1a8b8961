#include "schema.h"

#include <server/engine/serverlogging.h>

#include <QSqlError>
#include <QSqlQuery>
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

bool run(QSqlDatabase &db, const char *statement, QString *error)
{
    QSqlQuery query(db);
    if (query.exec(QLatin1String(statement)))
        return true;
    *error = query.lastError().text() % QLatin1String(" in: ") % QLatin1String(statement);
    return false;
}

template<std::size_t N>
bool step(QSqlDatabase &db, int version, const char *const (&statements)[N], QString *error)
{
    if (!run(db, "BEGIN IMMEDIATE", error))
        return false;
    for (const char *statement : statements) {
        if (!run(db, statement, error)) {
            QString ignored;
            run(db, "ROLLBACK", &ignored);
            return false;
        }
    }
    const QByteArray setVersion = "PRAGMA user_version = " + QByteArray::number(version);
    if (!run(db, setVersion.constData(), error) || !run(db, "COMMIT", error)) {
        QString ignored;
        run(db, "ROLLBACK", &ignored);
        return false;
    }
    qCInfo(lcServerDb) << "schema at version" << version;
    return true;
}

} // namespace

int Schema::version(QSqlDatabase &db)
{
    QSqlQuery query(db);
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
        return QStringLiteral("the file is of a newer server (schema %1, this server knows %2)")
            .arg(from)
            .arg(CurrentVersion);
    QString error;
    if (from < 1 && !step(db, 1, Version1, &error))
        return error;
    if (from < 2 && !step(db, 2, Version2, &error))
        return error;
    return {};
}

} // namespace zeral::server
