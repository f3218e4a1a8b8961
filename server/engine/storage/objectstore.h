#pragma once

#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/roleentry.h>
#include <shared/roletemplateinfo.h>
#include <shared/templatedata.h>

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

#include <memory>
#include <unordered_map>

namespace zeral::server {

class QtSqlStatement;
class SnapshotPage;
class SqliteStatement;

// Every statement on the objects, their parameters and links, passwords, permissions,
// role templates and fingerprints. It runs inside the caller's transaction and knows
// nothing of rights. A false or 0 result means SQLite failed; lastError() says how.
class ObjectStore
{
public:
    explicit ObjectStore(QSqlDatabase db);
    ~ObjectStore();
    ObjectStore(const ObjectStore &) = delete;
    ObjectStore &operator=(const ObjectStore &) = delete;

    QString lastError() const { return m_lastError; }
    // Drops the prepared statements, before their connection is made anew.
    void forgetStatements();

    // The dataset an object of this type belongs to; empty for a type the server doesn't know.
    static QString datasetForType(const QString &type);

    bool exists(TYPE_ID uid);
    // The object as clients see it, with its parameters and links; false if there is none,
    // or if the database failed, when lastError() says how.
    bool read(TYPE_ID uid, ObjectInfo *object, QString *dataset = nullptr);
    // Objects of a dataset with a uid above `afterUid`, in uid order, at most `limit`.
    bool page(const QString &dataset, TYPE_ID afterUid, int limit, QList<ObjectInfo> *objects,
              bool *more);
    // The same page as the answer to a snapshot writes it (a QList<ObjectInfo> in the wire's
    // stream format), appended to `out` straight from the rows.
    bool encodePage(const QString &dataset, TYPE_ID afterUid, int limit, QByteArray *out,
                    bool *more);

    // Stores a new object; its uid is taken from `object` if not 0, else the next free one.
    TYPE_ID insert(const QString &dataset, const ObjectInfo &object);
    bool setParameters(TYPE_ID uid, const QHash<QString, QString> &parameters);
    bool removeParameters(TYPE_ID uid, const QStringList &keys);
    bool setParent(TYPE_ID uid, TYPE_ID parent);
    bool insertLink(const _INHERIT_DATA &link);
    // Removes the object with everything that hangs on it; `linked` gets the other ends of
    // its links, whose link maps change with it, and the children it had, which move to the
    // top. Its uid is never given out again.
    bool remove(TYPE_ID uid, QList<TYPE_ID> *linked);
    // Whether `node` is `ancestor` or lies below it on the chain of parents.
    bool isAncestorOrSelf(TYPE_ID ancestor, TYPE_ID node);
    // Above every uid stored or removed: a removed user's session must not come back as
    // whoever got his number.
    TYPE_ID nextUid();

    // Users whose login equals `login` (case-sensitive or not), other than `except`.
    QList<TYPE_ID> usersWithLogin(const QString &login, Qt::CaseSensitivity cs, TYPE_ID except = 0);
    QString passwordHash(TYPE_ID uid);
    bool setPasswordHash(TYPE_ID uid, const QString &hash);

    bool permissions(const QList<TYPE_ID> &subjects, QList<OBJECT_PERMISSION> *result);
    bool addPermission(const OBJECT_PERMISSION &permission);
    bool clearPermissions(TYPE_ID subject);
    bool fingerCounts(const QList<TYPE_ID> &users, QHash<quint32, quint32> *counts);
    // The fingers of `user` that have a template, ascending, and each one's template format.
    bool fingersOf(TYPE_ID user, QList<qint32> *fingers, QList<quint32> *formats = nullptr);
    // Stores a template beside any the finger has; for a first fill, where there are none.
    bool addFinger(TYPE_ID user, int finger, const TEMPLATE_DATA &data);
    // Stores the finger's one template, dropping whatever it had before.
    bool replaceFinger(TYPE_ID user, int finger, const TEMPLATE_DATA &data);
    // Drops the finger's template; `removed` says whether it had one.
    bool removeFinger(TYPE_ID user, int finger, bool *removed);

    ROLETEMPLATES_HASH roleTemplates();
    bool roleTemplateExists(const QString &id);
    QStringList templateRoles(const QString &id);
    bool insertRoleTemplate(const _ROLETEMPLATE_INFO &info);
    QList<RoleEntry> roleCatalogue();
    // Stores a group or role of the catalogue, or brings a stored one to this title and place.
    bool putRoleEntry(const RoleEntry &entry, int position);
    bool grantRole(const QString &templateId, const QString &role);

    QString setting(const QString &key);
    bool setSetting(const QString &key, const QString &value);

private:
    // A prepared statement, made once per text and reused: bulk inserts prepare nothing.
    QSqlQuery &statement(const char *sql);
    // The same on SQLite's own handle, for the reads of many rows (see page()), and its
    // stand-in on PostgreSQL.
    using SqliteStatements = std::unordered_map<const char *, std::unique_ptr<SqliteStatement>>;
    using QtSqlStatements = std::unordered_map<const char *, std::unique_ptr<QtSqlStatement>>;
    SqliteStatement &rawStatement(SqliteStatements &statements, const char *sql);
    QtSqlStatement &rawStatement(QtSqlStatements &statements, const char *sql);
    template<class Get>
    bool readPage(Get statementFor, const QString &dataset, TYPE_ID afterUid, int limit,
                  SnapshotPage *page, bool *more);
    bool run(QSqlQuery &query, const QVariantList &binds);
    bool fail(const QSqlQuery &query);
    template<class Statement>
    bool failRaw(const Statement &statement);
    // Fills parameters and links of the objects in `byUid`, chosen by `scope` over "o".
    bool readDetails(const char *paramsSql, const char *childLinksSql, const char *parentLinksSql,
                     const QVariantList &binds, const QHash<TYPE_ID, ObjectInfo *> &byUid);

    QSqlDatabase m_db;
    QHash<const char *, QSqlQuery> m_statements;
    bool m_postgres = false;
    // Finalized with the store, before the connection closes.
    SqliteStatements m_rawStatements;
    QtSqlStatements m_qtStatements;
    QString m_lastError;
};

} // namespace zeral::server
