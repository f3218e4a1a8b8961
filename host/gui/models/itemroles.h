#pragma once

#include <Qt>

// Item data roles shared by the studio's models, their proxies and the screens above them.
namespace ItemRoles {
enum : int {
    // The data of a selector's item; in a FastTreeModel, the item's key.
    SelectorData = Qt::UserRole,       // 256
    Parameters = Qt::UserRole + 1,     // 257: column 0, the object's parameters as a QVariantHash
    SortText = Qt::UserRole + 2,       // 258: the text shown, sorted and searched on
    CatalogueOrder = Qt::UserRole + 3, // 259: the place of a role in the catalogue
    ObjectState = Qt::UserRole + 1001, // 1257: "PT_OBJECTSTATE" of a user row
};
} // namespace ItemRoles
