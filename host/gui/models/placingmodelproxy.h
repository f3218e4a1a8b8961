#pragma once

#include <host/gui/models/grantedproxymodel.h>

// The proxy of the tree of access objects. Its type filter names the device types; the
// placings that hold the devices are of no listed type, and stay in the tree as long as a
// device below them passes the filters. Only devices carry check boxes when the checkable
// types are set.
class PlacingModelProxy : public GrantedProxyModel
{
    Q_OBJECT
public:
    explicit PlacingModelProxy(QObject *parent = nullptr);
};
