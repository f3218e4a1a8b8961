#include "placingmodelproxy.h"

PlacingModelProxy::PlacingModelProxy(QObject *parent)
    : GrantedProxyModel(parent)
{
    setTypeFilterKeepsContainers(true);
}
