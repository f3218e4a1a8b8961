#include "storemodels.h"

#include "fasttreemodel.h"
#include "objecttreemodel.h"

#include <host/core/localstorage.h>

#include <QCoreApplication>

using zeral::LocalStorage;
using zeral::TYPE_ID;

ObjectTreeModel *StoreModels::makeDatasetModel(const QString &dataname)
{
    return makeMergedModel({dataname}, LocalStorage::instance());
}

ObjectTreeModel *StoreModels::makeMergedModel(const QStringList &datanames, QObject *parent)
{
    LocalStorage *storage = LocalStorage::instance();
    auto *model = new ObjectTreeModel(parent);
    model->setObjectName(datanames.join(QLatin1Char('+')));
    for (const QString &dataname : datanames)
        model->add(storage->constObjects(dataname).values());
    QObject::connect(storage, &LocalStorage::dataChanged, model,
                     [storage, model, datanames](const QString &name, const QList<TYPE_ID> &uids) {
                         if (!datanames.contains(name))
                             return;
                         const LocalStorage::Objects &objects = storage->constObjects(name);
                         QList<zeral::ObjectInfo> changed;
                         changed.reserve(uids.size());
                         for (TYPE_ID uid : uids) {
                             const auto it = objects.constFind(uid);
                             if (it != objects.cend())
                                 changed.append(*it);
                         }
                         model->add(changed);
                     });
    QObject::connect(storage, &LocalStorage::dataRemoved, model,
                     [model, datanames](const QString &name, const QList<TYPE_ID> &uids) {
                         if (!datanames.contains(name))
                             return;
                         for (TYPE_ID uid : uids)
                             model->remove(uid);
                     });
    return model;
}

FastTreeModel *StoreModels::makeRolesModel()
{
    LocalStorage *storage = LocalStorage::instance();
    auto *model = new FastTreeModel(storage);
    const auto fill = [storage, model] {
        QVector<FastTreeModel::Item> items;
        for (const zeral::RoleEntry &entry : storage->roleCatalogue())
            items.append({entry.key, entry.title, entry.parentKey});
        model->setItems(items);
    };
    fill();
    QObject::connect(storage, &LocalStorage::roleCatalogueChanged, model, fill);
    return model;
}

void StoreModels::install()
{
    LocalStorage::setModelFactories(&StoreModels::makeDatasetModel, &StoreModels::makeRolesModel);
}

namespace {
// The store needs no widgets; it gets its models when this library is loaded.
void installStoreModels()
{
    StoreModels::install();
}
} // namespace
Q_COREAPP_STARTUP_FUNCTION(installStoreModels)
