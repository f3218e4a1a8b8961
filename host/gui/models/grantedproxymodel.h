#pragma once

#include <host/gui/models/objecttreeproxy.h>

// The proxy of a tree of objects on which an operator grants rights: checkable, with
// partly checked parents, sorted by name without regard to case, never editable. Check
// boxes stand in column 0 only; the other columns only describe the row.
class GrantedProxyModel : public ObjectTreeProxy
{
    Q_OBJECT
public:
    explicit GrantedProxyModel(QObject *parent = nullptr);

    Qt::ItemFlags flags(const QModelIndex &index) const override;
};
