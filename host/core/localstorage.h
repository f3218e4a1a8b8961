#pragma once

#include <shared/objectinfo.h>
#include <shared/roleentry.h>
#include <shared/types.h>
#include <shared/zrhash.h>

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

struct Command;
class FastTreeModel;
class ObjectTreeModel;
class ZRServerInterface;

namespace zeral {

// The client's copy of the server's objects, by dataset, and the catalogue of roles.
// Filled from the server's snapshots and kept current by its pushes; read-only to plugins.
// Readers get references into the store: they stay valid until the next change of that
// object, so a reader copies what it keeps.
class LocalStorage : public QObject
{
    Q_OBJECT
public:
    using Objects = ZRHash<unsigned int, ObjectInfo>;
    using ModelFactory = std::function<ObjectTreeModel *(const QString &dataname)>;
    using RolesModelFactory = std::function<FastTreeModel *()>;

    static LocalStorage *instance();

    const Objects &constObjects(const QString &dataname) const;
    const ObjectInfo &constObject(TYPE_ID uid, const QString &dataname) const;
    // The server's database object, whose parameters are the system-wide settings.
    const ObjectInfo &dbSettings() const;
    QStringList datanames() const;

    const QList<RoleEntry> &roleCatalogue() const { return m_roleCatalogue; }
    // The Russian title of a role or group; the key itself if the catalogue lacks it.
    QString roleTitle(const QString &key) const;

    // The shared item models. They are made by the studio's widget library, which installs
    // its factories when it is loaded; until then these return null.
    ObjectTreeModel *model(const QString &dataname);
    FastTreeModel *rolesModel();
    static void setModelFactories(ModelFactory modelFactory, RolesModelFactory rolesFactory);

    // Filling, by the studio.
    void applyChanged(const QString &dataname, const QList<ObjectInfo> &objects);
    // The same, taking the objects over instead of copying them.
    void applyChanged(const QString &dataname, QList<ObjectInfo> &&objects);
    void applyRemoved(const QString &dataname, const QList<TYPE_ID> &uids);
    void setRoleCatalogue(const QList<RoleEntry> &entries);
    void clear();
    // Applies the server's pushes of changes and removals from now on.
    void attach(ZRServerInterface *server);
    void handlePush(const Command &command);

    static bool isKnownDataname(const QString &dataname);

    // A push of changed or removed objects, as read from the wire.
    struct Push
    {
        QString dataname;
        QList<ObjectInfo> changed;
        QList<TYPE_ID> removed;
    };
    // Reads a "data.changed" or "data.removed" push of a known dataset; false, silently, for
    // any other command and for one that doesn't read cleanly.
    static bool readPush(const Command &command, Push *push);

signals:
    void dataChanged(QString dataname, QList<zeral::TYPE_ID> uids);
    void dataRemoved(QString dataname, QList<zeral::TYPE_ID> uids);
    void roleCatalogueChanged();

private:
    explicit LocalStorage(QObject *parent = nullptr);

    QHash<QString, Objects> m_datasets;
    QList<RoleEntry> m_roleCatalogue;
    QHash<QString, QString> m_roleTitles;
    QHash<QString, ObjectTreeModel *> m_models;
    FastTreeModel *m_rolesModel = nullptr;
    QMetaObject::Connection m_pushConnection;
};

} // namespace zeral
