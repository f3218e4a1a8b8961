#pragma once

#include <QString>
#include <QStringList>

class FastTreeModel;
class ObjectTreeModel;
class QObject;

// The shared item models of the local store: one ObjectTreeModel per dataset and the tree of
// the role catalogue, each following the store. The library installs these as the store's
// model factories when it is loaded.
class StoreModels
{
public:
    static ObjectTreeModel *makeDatasetModel(const QString &dataname);
    // One tree of several datasets that follows the store, owned by `parent`: for a screen
    // whose tree crosses datasets, such as the organisation ("orgstructure") with its
    // employees ("subject") under their departments. Uids are unique across datasets.
    static ObjectTreeModel *makeMergedModel(const QStringList &datanames, QObject *parent);
    static FastTreeModel *makeRolesModel();
    static void install();
};
