#include "storemodels.h"

#include "fasttreemodel.h"
#include "objecttreemodel.h"

#include <host/core/localstorage.h>

#include <QCoreApplication>

using zeral::LocalStorage;
using zeral::TYPE_ID;

ObjectTreeModel *StoreModels::makeDatasetModel(const QString &dataname)
{
    LocalStorage *storage = LocalStorage::instance();
    auto *model = new ObjectTreeModel(storage);
    model->setObjectName(dataname);
    model->add(storage->constObjects(dataname).values());
    QObject::connect(storage, &LocalStorage::dataChanged, model,
                     [storage, model, dataname](const QString &name, const QList<TYPE_ID> &uids) {
                         if (name != dataname)
                             return;
                         const LocalStorage::Objects &objects = storage->constObjects(dataname);
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
                     [model, dataname](const QString &name, const QList<TYPE_ID> &uids) {
                         if (name != dataname)
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
