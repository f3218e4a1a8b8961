#pragma once

#include <QString>

class FastTreeModel;
class ObjectTreeModel;

// The shared item models of the local store: one ObjectTreeModel per dataset and the tree of
// the role catalogue, each following the store. The library installs these as the store's
// model factories when it is loaded.
class StoreModels
{
public:
    static ObjectTreeModel *makeDatasetModel(const QString &dataname);
    static FastTreeModel *makeRolesModel();
    static void install();
};
