#include "localstorage.h"

#include <host/core/command.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/objectlistreader.h>
#include <shared/wire.h>

#include <QCoreApplication>

namespace zeral {

namespace {

LocalStorage::ModelFactory &modelFactory()
{
    static LocalStorage::ModelFactory factory;
    return factory;
}

LocalStorage::RolesModelFactory &rolesModelFactory()
{
    static LocalStorage::RolesModelFactory factory;
    return factory;
}

} // namespace

LocalStorage::LocalStorage(QObject *parent)
    : QObject(parent)
{}

LocalStorage *LocalStorage::instance()
{
    // Parented to nothing: it lives as long as the process and outlives the application
    // object, so that models and plugins torn down late still find it.
    static LocalStorage *storage = new LocalStorage();
    return storage;
}

const LocalStorage::Objects &LocalStorage::constObjects(const QString &dataname) const
{
    const auto it = m_datasets.constFind(dataname);
    if (it != m_datasets.constEnd())
        return it.value();
    static const Objects empty;
    return empty;
}

const ObjectInfo &LocalStorage::constObject(TYPE_ID uid, const QString &dataname) const
{
    return constObjects(dataname).constValue(uid);
}

const ObjectInfo &LocalStorage::dbSettings() const
{
    const Objects &objects = constObjects(QLatin1String(DB_DATANAME));
    for (auto it = objects.cbegin(); it != objects.cend(); ++it) {
        if (it->type == QLatin1String(db::system::DATABASE))
            return it.value();
    }
    return objects.constValue(0);
}

QStringList LocalStorage::datanames() const
{
    return m_datasets.keys();
}

QString LocalStorage::roleTitle(const QString &key) const
{
    return m_roleTitles.value(key, key);
}

ObjectTreeModel *LocalStorage::model(const QString &dataname)
{
    if (ObjectTreeModel *model = m_models.value(dataname))
        return model;
    if (!modelFactory())
        return nullptr;
    ObjectTreeModel *model = modelFactory()(dataname);
    m_models.insert(dataname, model);
    return model;
}

FastTreeModel *LocalStorage::rolesModel()
{
    if (!m_rolesModel && rolesModelFactory())
        m_rolesModel = rolesModelFactory()();
    return m_rolesModel;
}

void LocalStorage::setModelFactories(ModelFactory modelFactory_, RolesModelFactory rolesFactory)
{
    modelFactory() = std::move(modelFactory_);
    rolesModelFactory() = std::move(rolesFactory);
}

void LocalStorage::applyChanged(const QString &dataname, const QList<ObjectInfo> &objects)
{
    if (objects.isEmpty())
        return;
    Objects &dataset = m_datasets[dataname];
    QList<TYPE_ID> uids;
    uids.reserve(objects.size());
    for (const ObjectInfo &object : objects) {
        dataset.insert(object.uid, object);
        uids.append(object.uid);
    }
    emit dataChanged(dataname, uids);
}

void LocalStorage::applyChanged(const QString &dataname, QList<ObjectInfo> &&objects)
{
    if (objects.isEmpty())
        return;
    Objects &dataset = m_datasets[dataname];
    QList<TYPE_ID> uids;
    uids.reserve(objects.size());
    for (ObjectInfo &object : objects) {
        uids.append(object.uid);
        dataset[object.uid] = std::move(object);
    }
    objects.clear();
    emit dataChanged(dataname, uids);
}

void LocalStorage::applyRemoved(const QString &dataname, const QList<TYPE_ID> &uids)
{
    const auto dataset = m_datasets.find(dataname);
    if (dataset == m_datasets.end())
        return;
    QList<TYPE_ID> removed;
    for (TYPE_ID uid : uids) {
        if (dataset->remove(uid) > 0)
            removed.append(uid);
    }
    if (!removed.isEmpty())
        emit dataRemoved(dataname, removed);
}

void LocalStorage::setRoleCatalogue(const QList<RoleEntry> &entries)
{
    m_roleCatalogue = entries;
    m_roleTitles.clear();
    for (const RoleEntry &entry : entries)
        m_roleTitles.insert(entry.key, entry.title);
    emit roleCatalogueChanged();
}

void LocalStorage::clear()
{
    const QHash<QString, Objects> old = std::exchange(m_datasets, {});
    for (auto it = old.cbegin(); it != old.cend(); ++it) {
        if (!it->isEmpty())
            emit dataRemoved(it.key(), it->keys());
    }
}

void LocalStorage::attach(ZRServerInterface *server)
{
    disconnect(m_pushConnection);
    m_pushConnection
        = connect(server, &ZRServerInterface::pushReceived, this, &LocalStorage::handlePush);
}

void LocalStorage::handlePush(const Command &command)
{
    const bool isDataPush = command.name == QLatin1String(proto::command::DataChanged)
                            || command.name == QLatin1String(proto::command::DataRemoved);
    Push push;
    if (!readPush(command, &push)) {
        if (isDataPush)
            qCWarning(lcHostStore) << "ignoring an unreadable push" << command.name;
        return;
    }
    if (command.name == QLatin1String(proto::command::DataChanged))
        applyChanged(push.dataname, std::move(push.changed));
    else
        applyRemoved(push.dataname, push.removed);
}

bool LocalStorage::readPush(const Command &command, Push *push)
{
    const bool changed = command.name == QLatin1String(proto::command::DataChanged);
    const bool removed = command.name == QLatin1String(proto::command::DataRemoved);
    if (!changed && !removed)
        return false;

    ZRDataStream in(command.data);
    in >> push->dataname;
    if (changed)
        wire::ObjectListReader().read(in, push->changed);
    else
        wire::readList(in, push->removed);
    return in.status() == QDataStream::Ok && in.atEnd() && isKnownDataname(push->dataname);
}

bool LocalStorage::isKnownDataname(const QString &dataname)
{
    for (const char *known : ALL_DATANAMES) {
        if (dataname == QLatin1String(known))
            return true;
    }
    return false;
}

} // namespace zeral
