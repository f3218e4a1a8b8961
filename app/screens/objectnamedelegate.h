#pragma once

#include <host/gui/widgets/styleditemdelegate.h>

// Draws an object row of an ObjectTreeModel by its name (role 258) rather than its uid.
class ObjectNameDelegate : public StyledItemDelegate
{
    Q_OBJECT
public:
    explicit ObjectNameDelegate(QObject *parent = nullptr);

    QString name(const QModelIndex &index) const override;
};
