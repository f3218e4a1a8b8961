#include "objectstore.h"

#include "qtsqlstatement.h"
#include "snapshotpage.h"
#include "sqldialect.h"
#include "sqlitestatement.h"

#include <server/engine/serverlogging.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/wire.h>

#include <QDataStream>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

#include <sqlite3.h>

#include <utility>

namespace zeral::server {

namespace {

QString stamp(const QDateTime &time)
{
    return time.isValid() ? time.toUTC().toString(Qt::ISODateWithMs) : QString();
}

QDateTime fromStamp(const QVariant &value)
{
    const QString text = value.toString();
    return text.isEmpty() ? QDateTime() : QDateTime::fromString(text, Qt::ISODateWithMs);
}

// A text column of the current row, for a SnapshotPage.
template<class Statement>
SnapshotPage::Text textOf(const Statement &row, int column)
{
    SnapshotPage::Text text;
    text.bytes = row.text(column, &text.size);
    return text;
}

} // namespace

ObjectStore::ObjectStore(QSqlDatabase db)
    : m_db(std::move(db))
    , m_postgres(SqlDialect::of(m_db).isPostgres())
{}

ObjectStore::~ObjectStore() = default;

QString ObjectStore::datasetForType(const QString &type)
{
    static const QHash<QString, QString> datasets = {
        {QLatin1String(db::system::USER), QLatin1String(USER_DATANAME)},
        {QLatin1String(db::system::DATABASE), QLatin1String(DB_DATANAME)},
        {QLatin1String(db::orgstructure::WORKER), QLatin1String(SUBJECT_DATANAME)},
        {QLatin1String(db::orgstructure::DEPARTMENT), QLatin1String(ORGSTRUCTURE_DATANAME)},
        {QLatin1String(db::orgstructure::FIRM), QLatin1String(ORGSTRUCTURE_DATANAME)},
        {QLatin1String(db::orgstructure::SUBJECTROOT), QLatin1String(ORGSTRUCTURE_DATANAME)},
        {QLatin1String(db::orgstructure::JOB), QLatin1String(JOB_DATANAME)},
        {QLatin1String(db::placing::PLACING), QLatin1String(PLACING_DATANAME)},
        {QLatin1String(db::report::REPORT), QLatin1String(REPORT_DATANAME)},
        {QLatin1String(db::policy::ACCESS_POLICY), QLatin1String(POLICY_DATANAME)},
        {QLatin1String(db::monitoring::SETTINGS), QLatin1String(MONITORING_DATANAME)},
    };
    const QString known = datasets.value(type);
    if (!known.isEmpty())
        return known;
    // Devices are access objects, whatever their kind.
    if (type.startsWith(QLatin1String("OT_TERM_")) || type.startsWith(QLatin1String("OT_VIDEO_")))
        return QLatin1String(PLACING_DATANAME);
    return {};
}

QSqlQuery &ObjectStore::statement(const char *sql)
{
    auto it = m_statements.find(sql);
    if (it == m_statements.end()) {
        QSqlQuery query(m_db);
        query.setForwardOnly(true);
        if (!query.prepare(QLatin1String(sql)))
            qCWarning(lcServerDb) << "can't prepare" << sql << query.lastError().text();
        it = m_statements.insert(sql, query);
    }
    return it.value();
}

bool ObjectStore::run(QSqlQuery &query, const QVariantList &binds)
{
    query.finish();
    for (int i = 0; i < binds.size(); ++i) {
        // A null QString would bind as NULL; every text column of ours means "" by it.
        const QVariant &value = binds.at(i);
        const bool nullText = value.userType() == QMetaType::QString && value.toString().isNull();
        query.bindValue(i, nullText ? QVariant(QLatin1String("")) : value);
    }
    return query.exec() || fail(query);
}

bool ObjectStore::fail(const QSqlQuery &query)
{
    m_lastError = query.lastError().text();
    qCWarning(lcServerDb) << "statement failed:" << query.lastQuery() << m_lastError;
    return false;
}

bool ObjectStore::exists(TYPE_ID uid)
{
    QSqlQuery &query = statement("SELECT 1 FROM objects WHERE uid = ?");
    const bool found = run(query, {uid}) && query.next();
    query.finish();
    return found;
}

bool ObjectStore::read(TYPE_ID uid, ObjectInfo *object, QString *dataset)
{
    m_lastError.clear();
    QSqlQuery &query = statement(
        "SELECT dataset, type, parent, reserved, changed_at FROM objects WHERE uid = ?");
    if (!run(query, {uid}) || !query.next()) {
        query.finish();
        return false;
    }
    ObjectInfo result;
    result.uid = uid;
    result.type = query.value(1).toString();
    result.parent = query.value(2).toUInt();
    result.reserved = query.value(3).toUInt();
    result.timestamp = fromStamp(query.value(4));
    if (dataset)
        *dataset = query.value(0).toString();
    query.finish();
    const QHash<TYPE_ID, ObjectInfo *> byUid = {{uid, &result}};
    if (!readDetails("SELECT uid, key, value FROM object_params WHERE uid = ?",
                     "SELECT child, parent, link_type, reserved, valid_from, valid_to"
                     " FROM links WHERE child = ? ORDER BY parent, link_type",
                     "SELECT child, parent, link_type, reserved, valid_from, valid_to"
                     " FROM links WHERE parent = ? ORDER BY child, link_type",
                     {uid}, byUid))
        return false;
    *object = std::move(result);
    return true;
}

bool ObjectStore::page(const QString &dataset, TYPE_ID afterUid, int limit,
                       QList<ObjectInfo> *objects, bool *more)
{
    objects->clear();
    QByteArray bytes;
    if (!encodePage(dataset, afterUid, limit, &bytes, more))
        return false;
    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_5_15);
    wire::readList(in, *objects);
    if (in.status() != QDataStream::Ok) {
        m_lastError = QStringLiteral("a page of %1 doesn't read back").arg(dataset);
        qCWarning(lcServerDb) << m_lastError;
        return false;
    }
    return true;
}

bool ObjectStore::encodePage(const QString &dataset, TYPE_ID afterUid, int limit,
                             QByteArray *out, bool *more)
{
    SnapshotPage page;
    const auto read = [&](auto &statements) {
        return readPage(
            [&](const char *sql) -> auto & { return rawStatement(statements, sql); }, dataset,
            afterUid, limit, &page, more);
    };
    if (!(m_postgres ? read(m_qtStatements) : read(m_rawStatements)))
        return false;
    page.appendTo(out);
    return true;
}

template<class Get>
bool ObjectStore::readPage(Get statementFor, const QString &dataset, TYPE_ID afterUid, int limit,
                           SnapshotPage *page, bool *more)
{
    *more = false;
    // Straight on SQLite (on PostgreSQL through QtSql): through QtSql every value became a QVariant
    // and every text went through UTF-16 in SQLite before it was a QString. Parameters and links
    // come with one statement each for the whole page, in the page's order, so that each row finds
    // its object by walking the page along.
    auto &query = statementFor("SELECT uid, type, parent, reserved, changed_at"
                               " FROM objects WHERE dataset = ?1 AND uid > ?2"
                               " ORDER BY uid LIMIT ?3");
    if (!query.start() || !query.bind(1, dataset) || !query.bind(2, afterUid)
        || !query.bind(3, limit + 1))
        return failRaw(query);
    while (query.next()) {
        if (page->size() == limit) {
            *more = true;
            break;
        }
        page->addObject(TYPE_ID(query.integer(0)), textOf(query, 1), TYPE_ID(query.integer(2)),
                        quint32(query.integer(3)), textOf(query, 4));
    }
    query.finish();
    if (!query.lastError().isEmpty())
        return failRaw(query);
    if (page->size() == 0)
        return true;
    const TYPE_ID lastUid = page->lastUid();

    // A page's parameters may come in any order: QDataStream reads a hash from its pairs in
    // whatever order they are.
    auto &params = statementFor(
        "SELECT p.uid, p.key, p.value FROM objects o JOIN object_params p ON p.uid = o.uid"
        " WHERE o.dataset = ?1 AND o.uid > ?2 AND o.uid <= ?3 ORDER BY o.uid");
    if (!params.start() || !params.bind(1, dataset) || !params.bind(2, afterUid)
        || !params.bind(3, lastUid))
        return failRaw(params);
    while (params.next())
        page->addParameter(TYPE_ID(params.integer(0)), textOf(params, 1), textOf(params, 2));
    if (!params.lastError().isEmpty())
        return failRaw(params);

    // On the links where the object is the child it finds its parents, and the other way;
    // links of one type keep the order a read of the object gives them.
    for (const bool asChild : {true, false}) {
        auto &links = statementFor(
            asChild ? "SELECT l.child, l.parent, l.link_type, l.reserved, l.valid_from,"
                      " l.valid_to FROM objects o JOIN links l ON l.child = o.uid"
                      " WHERE o.dataset = ?1 AND o.uid > ?2 AND o.uid <= ?3"
                      " ORDER BY o.uid, l.parent, l.link_type"
                    : "SELECT l.child, l.parent, l.link_type, l.reserved, l.valid_from,"
                      " l.valid_to FROM objects o JOIN links l ON l.parent = o.uid"
                      " WHERE o.dataset = ?1 AND o.uid > ?2 AND o.uid <= ?3"
                      " ORDER BY o.uid, l.child, l.link_type");
        if (!links.start() || !links.bind(1, dataset) || !links.bind(2, afterUid)
            || !links.bind(3, lastUid))
            return failRaw(links);
        while (links.next())
            page->addLink(asChild ? SnapshotPage::LinkEnd::Child : SnapshotPage::LinkEnd::Parent,
                          TYPE_ID(links.integer(0)), TYPE_ID(links.integer(1)),
                          quint32(links.integer(2)), quint32(links.integer(3)),
                          textOf(links, 4), textOf(links, 5));
        if (!links.lastError().isEmpty())
            return failRaw(links);
    }
    return true;
}

SqliteStatement &ObjectStore::rawStatement(SqliteStatements &statements, const char *sql)
{
    auto it = statements.find(sql);
    if (it == statements.end()) {
        sqlite3 *handle = nullptr;
        const QVariant driverHandle = m_db.driver()->handle();
        if (driverHandle.isValid() && qstrcmp(driverHandle.typeName(), "sqlite3*") == 0)
            handle = *static_cast<sqlite3 *const *>(driverHandle.constData());
        it = statements.emplace(sql, std::make_unique<SqliteStatement>(handle, sql)).first;
    }
    return *it->second;
}

QtSqlStatement &ObjectStore::rawStatement(QtSqlStatements &statements, const char *sql)
{
    auto it = statements.find(sql);
    if (it == statements.end())
        it = statements.emplace(sql, std::make_unique<QtSqlStatement>(m_db, sql)).first;
    return *it->second;
}

void ObjectStore::forgetStatements()
{
    m_statements.clear();
    m_rawStatements.clear();
    m_qtStatements.clear();
}

template<class Statement>
bool ObjectStore::failRaw(const Statement &statement)
{
    m_lastError = statement.lastError();
    return false;
}

bool ObjectStore::readDetails(const char *paramsSql, const char *childLinksSql,
                              const char *parentLinksSql, const QVariantList &binds,
                              const QHash<TYPE_ID, ObjectInfo *> &byUid)
{
    QSqlQuery &params = statement(paramsSql);
    if (!run(params, binds))
        return false;
    while (params.next()) {
        if (ObjectInfo *object = byUid.value(params.value(0).toUInt()))
            object->parameters.insert(params.value(1).toString(), params.value(2).toString());
    }
    params.finish();
    // On the links where the object is the child it finds its parents, and the other way.
    for (const char *sql : {childLinksSql, parentLinksSql}) {
        const bool asChild = sql == childLinksSql;
        QSqlQuery &links = statement(sql);
        if (!run(links, binds))
            return false;
        while (links.next()) {
            _INHERIT_DATA link;
            link.child = links.value(0).toUInt();
            link.parent = links.value(1).toUInt();
            link.linkType = links.value(2).toUInt();
            link.reserved = links.value(3).toUInt();
            link.validFrom = fromStamp(links.value(4));
            link.validTo = fromStamp(links.value(5));
            ObjectInfo *object = byUid.value(asChild ? link.child : link.parent);
            if (!object)
                continue;
            (asChild ? object->parents : object->children).insert(link.linkType, link);
        }
        links.finish();
    }
    return true;
}

TYPE_ID ObjectStore::nextUid()
{
    QSqlQuery &query = statement(
        "SELECT COALESCE(MAX(uid), 0) + 1 FROM (SELECT MAX(uid) AS uid FROM objects UNION ALL"
        " SELECT CAST(value AS BIGINT) FROM settings WHERE key = 'removed_uid') AS known");
    if (!run(query, {}) || !query.next())
        return 0;
    const TYPE_ID uid = query.value(0).toUInt();
    query.finish();
    return uid;
}

TYPE_ID ObjectStore::insert(const QString &dataset, const ObjectInfo &object)
{
    const TYPE_ID uid = object.uid != 0 ? object.uid : nextUid();
    if (uid == 0)
        return 0;
    QSqlQuery &query = statement("INSERT INTO objects (uid, dataset, type, parent, reserved,"
                                 " changed_at) VALUES (?, ?, ?, ?, ?, ?)");
    if (!run(query, {uid, dataset, object.type, object.parent, object.reserved,
                     stamp(QDateTime::currentDateTimeUtc())}))
        return 0;
    return setParameters(uid, object.parameters) ? uid : 0;
}

bool ObjectStore::setParameters(TYPE_ID uid, const QHash<QString, QString> &parameters)
{
    QSqlQuery &query = statement("INSERT INTO object_params (uid, key, value) VALUES (?, ?, ?)"
                                 " ON CONFLICT (uid, key) DO UPDATE SET value = excluded.value");
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it) {
        if (!run(query, {uid, it.key(), it.value()}))
            return false;
    }
    QSqlQuery &touch = statement("UPDATE objects SET changed_at = ? WHERE uid = ?");
    return run(touch, {stamp(QDateTime::currentDateTimeUtc()), uid});
}

bool ObjectStore::removeParameters(TYPE_ID uid, const QStringList &keys)
{
    if (keys.isEmpty())
        return true;
    QSqlQuery &query = statement("DELETE FROM object_params WHERE uid = ? AND key = ?");
    for (const QString &key : keys) {
        if (!run(query, {uid, key}))
            return false;
    }
    QSqlQuery &touch = statement("UPDATE objects SET changed_at = ? WHERE uid = ?");
    return run(touch, {stamp(QDateTime::currentDateTimeUtc()), uid});
}

bool ObjectStore::setParent(TYPE_ID uid, TYPE_ID parent)
{
    return run(statement("UPDATE objects SET parent = ? WHERE uid = ?"), {parent, uid});
}

bool ObjectStore::insertLink(const _INHERIT_DATA &link)
{
    return run(statement("INSERT INTO links (child, parent, link_type, reserved, valid_from,"
                         " valid_to) VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT (child, parent,"
                         " link_type) DO UPDATE SET reserved = excluded.reserved,"
                         " valid_from = excluded.valid_from, valid_to = excluded.valid_to"),
               {link.child, link.parent, link.linkType, link.reserved, stamp(link.validFrom),
                stamp(link.validTo)});
}

bool ObjectStore::remove(TYPE_ID uid, QList<TYPE_ID> *linked)
{
    linked->clear();
    QSqlQuery &ends = statement("SELECT parent FROM links WHERE child = ?"
                                " UNION SELECT child FROM links WHERE parent = ?");
    if (!run(ends, {uid, uid}))
        return false;
    while (ends.next()) {
        const TYPE_ID other = ends.value(0).toUInt();
        if (other != uid)
            linked->append(other);
    }
    ends.finish();
    QSqlQuery &children = statement("SELECT uid FROM objects WHERE parent = ? AND uid <> ?");
    if (!run(children, {uid, uid}))
        return false;
    while (children.next()) {
        const TYPE_ID child = children.value(0).toUInt();
        if (!linked->contains(child))
            linked->append(child);
    }
    children.finish();
    // Fingerprint templates go with their finger rows; the rest cascades from the object.
    return run(statement("DELETE FROM templates WHERE uid IN"
                         " (SELECT finger_id FROM fingers WHERE user_object_id = ?)"),
               {uid})
           && run(statement("UPDATE objects SET parent = 0 WHERE parent = ?"), {uid})
           && run(statement("DELETE FROM objects WHERE uid = ?"), {uid})
           && run(statement("INSERT INTO settings (key, value) VALUES ('removed_uid', ?)"
                            " ON CONFLICT (key) DO UPDATE SET value = excluded.value WHERE"
                            " CAST(settings.value AS BIGINT) < CAST(excluded.value AS BIGINT)"),
                  {QString::number(uid)});
}

bool ObjectStore::isAncestorOrSelf(TYPE_ID ancestor, TYPE_ID node)
{
    QSqlQuery &query = statement("SELECT parent FROM objects WHERE uid = ?");
    // Bounded, so that a chain that is already broken can't hold the server.
    for (int depth = 0; node != 0 && depth < 100000; ++depth) {
        if (node == ancestor)
            return true;
        if (!run(query, {node}) || !query.next()) {
            query.finish();
            return false;
        }
        node = query.value(0).toUInt();
        query.finish();
    }
    return false;
}

QList<TYPE_ID> ObjectStore::usersWithLogin(const QString &login, Qt::CaseSensitivity cs,
                                           TYPE_ID except)
{
    QList<TYPE_ID> result;
    // The login as it is written is found through the index of the values (a login is asked
    // for at every sign-in, and a scan of 100,000 users took 0.15 s); a login in any letter
    // case has to be compared with every user's.
    const bool exact = cs == Qt::CaseSensitive;
    QSqlQuery &query
        = exact ? statement("SELECT p.uid, p.value FROM object_params p"
                            " JOIN objects o ON o.uid = p.uid"
                            " WHERE o.type = 'OT_USER' AND p.key = 'PT_LOGIN' AND p.value = ?")
                : statement("SELECT p.uid, p.value FROM object_params p"
                            " JOIN objects o ON o.uid = p.uid"
                            " WHERE o.type = 'OT_USER' AND p.key = 'PT_LOGIN'");
    if (!run(query, exact ? QVariantList{login} : QVariantList{}))
        return result;
    while (query.next()) {
        const TYPE_ID uid = query.value(0).toUInt();
        if (uid != except && query.value(1).toString().compare(login, cs) == 0)
            result.append(uid);
    }
    query.finish();
    return result;
}

QString ObjectStore::passwordHash(TYPE_ID uid)
{
    QSqlQuery &query = statement("SELECT hash FROM passwords WHERE uid = ?");
    if (!run(query, {uid}) || !query.next()) {
        query.finish();
        return {};
    }
    const QString hash = query.value(0).toString();
    query.finish();
    return hash;
}

bool ObjectStore::setPasswordHash(TYPE_ID uid, const QString &hash)
{
    return run(statement("INSERT INTO passwords (uid, hash) VALUES (?, ?)"
                         " ON CONFLICT (uid) DO UPDATE SET hash = excluded.hash"),
               {uid, hash});
}

bool ObjectStore::permissions(const QList<TYPE_ID> &subjects, QList<OBJECT_PERMISSION> *result)
{
    result->clear();
    QSqlQuery &query = statement(
        "SELECT subject, object, permission FROM permissions WHERE subject = ? ORDER BY object");
    for (TYPE_ID subject : subjects) {
        if (!run(query, {subject}))
            return false;
        while (query.next())
            result->append(
                {query.value(0).toUInt(), query.value(1).toUInt(), query.value(2).toUInt()});
        query.finish();
    }
    return true;
}

bool ObjectStore::addPermission(const OBJECT_PERMISSION &permission)
{
    return run(statement("INSERT INTO permissions (subject, object, permission) VALUES (?, ?, ?)"
                         " ON CONFLICT (subject, object) DO UPDATE SET"
                         " permission = excluded.permission"),
               {permission.subject, permission.object, permission.permission});
}

bool ObjectStore::clearPermissions(TYPE_ID subject)
{
    return run(statement("DELETE FROM permissions WHERE subject = ?"), {subject});
}

bool ObjectStore::fingerCounts(const QList<TYPE_ID> &users, QHash<quint32, quint32> *counts)
{
    counts->clear();
    QSqlQuery &query = statement("SELECT COUNT(*) FROM fingers WHERE user_object_id = ?");
    for (TYPE_ID user : users) {
        if (!run(query, {user}) || !query.next())
            return false;
        counts->insert(user, query.value(0).toUInt());
        query.finish();
    }
    return true;
}

bool ObjectStore::addFinger(TYPE_ID user, int finger, const TEMPLATE_DATA &data)
{
    // One above the highest, as SQLite numbers a rowid; the request holds the write lock.
    QSqlQuery &nextUid = statement("SELECT COALESCE(MAX(uid), 0) + 1 FROM templates");
    if (!run(nextUid, {}) || !nextUid.next())
        return false;
    const qint64 templateUid = nextUid.value(0).toLongLong();
    nextUid.finish();
    return run(statement("INSERT INTO templates (uid, template_format, template) VALUES (?, ?, ?)"),
               {templateUid, data.format, data.data})
           && run(statement("INSERT INTO fingers (finger_id, user_object_id, finger)"
                            " VALUES (?, ?, ?)"),
                  {templateUid, user, finger});
}

bool ObjectStore::fingersOf(TYPE_ID user, QList<qint32> *fingers, QList<quint32> *formats)
{
    fingers->clear();
    if (formats)
        formats->clear();
    // One template per finger is stored; should a finger have two, the newest counts.
    QSqlQuery &query = statement(
        "SELECT f.finger, t.template_format FROM fingers f JOIN templates t ON t.uid = f.finger_id"
        " WHERE f.user_object_id = ? ORDER BY f.finger, t.uid DESC");
    if (!run(query, {user}))
        return false;
    while (query.next()) {
        const qint32 finger = query.value(0).toInt();
        if (!fingers->isEmpty() && fingers->constLast() == finger)
            continue;
        fingers->append(finger);
        if (formats)
            formats->append(query.value(1).toUInt());
    }
    query.finish();
    return true;
}

bool ObjectStore::replaceFinger(TYPE_ID user, int finger, const TEMPLATE_DATA &data)
{
    bool removed = false;
    return removeFinger(user, finger, &removed) && addFinger(user, finger, data);
}

bool ObjectStore::removeFinger(TYPE_ID user, int finger, bool *removed)
{
    // The finger rows go with their templates (ON DELETE CASCADE).
    QSqlQuery &query = statement("DELETE FROM templates WHERE uid IN (SELECT finger_id FROM fingers"
                                 " WHERE user_object_id = ? AND finger = ?)");
    if (!run(query, {user, finger}))
        return false;
    *removed = query.numRowsAffected() > 0;
    query.finish();
    return true;
}

ROLETEMPLATES_HASH ObjectStore::roleTemplates()
{
    ROLETEMPLATES_HASH result;
    QSqlQuery &query
        = statement("SELECT id_name, interface_name, text, custom, extra FROM role_template");
    if (!run(query, {}))
        return result;
    while (query.next()) {
        _ROLETEMPLATE_INFO info;
        info.id = query.value(0).toString();
        info.name = query.value(1).toString();
        info.text = query.value(2).toString();
        info.custom = query.value(3).toBool();
        info.extra = query.value(4).toString();
        result.insert(info.id, info);
    }
    query.finish();
    QSqlQuery &roles
        = statement("SELECT template_id, role FROM role_template_roles ORDER BY template_id, role");
    if (!run(roles, {}))
        return {};
    while (roles.next()) {
        auto it = result.find(roles.value(0).toString());
        if (it != result.end())
            it->roles.append(roles.value(1).toString());
    }
    roles.finish();
    return result;
}

bool ObjectStore::roleTemplateExists(const QString &id)
{
    QSqlQuery &query = statement("SELECT 1 FROM role_template WHERE id_name = ?");
    const bool found = run(query, {id}) && query.next();
    query.finish();
    return found;
}

QStringList ObjectStore::templateRoles(const QString &id)
{
    QStringList roles;
    QSqlQuery &query
        = statement("SELECT role FROM role_template_roles WHERE template_id = ? ORDER BY role");
    if (!run(query, {id}))
        return roles;
    while (query.next())
        roles.append(query.value(0).toString());
    query.finish();
    return roles;
}

bool ObjectStore::insertRoleTemplate(const _ROLETEMPLATE_INFO &info)
{
    if (!run(statement("INSERT INTO role_template (id_name, interface_name, text, custom,"
                       " extra) VALUES (?, ?, ?, ?, ?)"),
             {info.id, info.name, info.text, int(info.custom), info.extra}))
        return false;
    QSqlQuery &role
        = statement("INSERT INTO role_template_roles (template_id, role) VALUES (?, ?)");
    for (const QString &name : info.roles) {
        if (!run(role, {info.id, name}))
            return false;
    }
    return true;
}

QList<RoleEntry> ObjectStore::roleCatalogue()
{
    QList<RoleEntry> result;
    QSqlQuery &query
        = statement("SELECT key, title, '' AS parent, 1 AS grp, position, 0 AS sub FROM role_groups"
                    " UNION ALL SELECT r.name, r.title, r.group_key, 0, g.position, r.position"
                    " FROM roles r JOIN role_groups g ON g.key = r.group_key"
                    " ORDER BY 5, 6");
    if (!run(query, {}))
        return result;
    while (query.next()) {
        result.append({query.value(0).toString(), query.value(1).toString(),
                       query.value(2).toString(), query.value(3).toBool()});
    }
    query.finish();
    return result;
}

bool ObjectStore::putRoleEntry(const RoleEntry &entry, int position)
{
    if (entry.group)
        return run(statement("INSERT INTO role_groups (key, title, position) VALUES (?, ?, ?)"
                             " ON CONFLICT(key) DO UPDATE SET title = excluded.title,"
                             " position = excluded.position"),
                   {entry.key, entry.title, position});
    return run(statement("INSERT INTO roles (name, group_key, title, position)"
                         " VALUES (?, ?, ?, ?) ON CONFLICT(name) DO UPDATE SET"
                         " group_key = excluded.group_key, title = excluded.title,"
                         " position = excluded.position"),
               {entry.key, entry.parentKey, entry.title, position});
}

bool ObjectStore::grantRole(const QString &templateId, const QString &role)
{
    return run(statement("INSERT INTO role_template_roles (template_id, role) VALUES (?, ?)"
                         " ON CONFLICT DO NOTHING"),
               {templateId, role});
}

QString ObjectStore::setting(const QString &key)
{
    QSqlQuery &query = statement("SELECT value FROM settings WHERE key = ?");
    if (!run(query, {key}) || !query.next()) {
        query.finish();
        return {};
    }
    const QString value = query.value(0).toString();
    query.finish();
    return value;
}

bool ObjectStore::setSetting(const QString &key, const QString &value)
{
    return run(statement("INSERT INTO settings (key, value) VALUES (?, ?)"
                         " ON CONFLICT (key) DO UPDATE SET value = excluded.value"),
               {key, value});
}

} // namespace zeral::server
