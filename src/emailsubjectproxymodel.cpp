#include "emailsubjectproxymodel.h"

#include <host/gui/models/itemroles.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/dbkeys.h>
#include <shared/inheritdata.h>

namespace {

const QString WorkerType = QLatin1String(db::orgstructure::WORKER);
const QString EmailKey = QLatin1String(db::worker::EMAIL);

bool isContainerType(const QString &type)
{
    return type == QLatin1String(db::orgstructure::SUBJECTROOT)
           || type == QLatin1String(db::orgstructure::FIRM)
           || type == QLatin1String(db::orgstructure::DEPARTMENT);
}

} // namespace

EmailSubjectProxyModel::EmailSubjectProxyModel(QObject *parent)
    : ObjectTreeProxy(parent)
{}

void EmailSubjectProxyModel::setSubjectWithoutEmailVisible(bool visible)
{
    m_withoutEmailVisible = visible;
    invalidateFilter();
}

bool EmailSubjectProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (!ObjectTreeProxy::filterAcceptsRow(sourceRow, sourceParent))
        return false;
    if (m_withoutEmailVisible)
        return true;
    const ObjectTreeModel *model = sourceModel();
    if (!model)
        return false;
    const QModelIndex row = model->index(sourceRow, 0, sourceParent);
    const QString type = row.siblingAtColumn(1).data(Qt::DisplayRole).toString();
    const zeral::TYPE_ID uid = model->uidForIndex(row);
    // Not trimmed here: an address of blanks is shown, and flags() disables it.
    if (type == WorkerType)
        return !model->constInfo(uid).parameters.value(EmailKey).isEmpty();
    if (!isContainerType(type))
        return false;
    const QSet<zeral::TYPE_ID> found = filterResult();
    const QList<zeral::TYPE_ID> below = model->childKeys(uid);
    for (const zeral::TYPE_ID child : below) {
        const zeral::ObjectInfo &info = model->constInfo(child);
        if (info.type == WorkerType && found.contains(child)
            && !info.parameters.value(EmailKey).isEmpty())
            return true;
    }
    return false;
}

Qt::ItemFlags EmailSubjectProxyModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = ObjectTreeProxy::flags(index);
    if (index.column() != 0 || !sourceModel())
        return result;
    const zeral::ObjectInfo &info = sourceModel()->constInfo(index.data(Qt::DisplayRole).toUInt());
    if (info.type != WorkerType)
        return result;
    // No usable address, or an account of his own already: nobody to make of him.
    if (info.parameters.value(EmailKey).trimmed().isEmpty()
        || info.parents.contains(zeral::INHERIT_WORKER_USER))
        result &= ~Qt::ItemIsEnabled;
    return result;
}

bool EmailSubjectProxyModel::isEnabledRow(const QModelIndex &index) const
{
    return flags(index).testFlag(Qt::ItemIsEnabled);
}

QVariant EmailSubjectProxyModel::data(const QModelIndex &index, int role) const
{
    switch (role) {
    case Qt::CheckStateRole: {
        const QVariant value = ObjectTreeProxy::data(index, role);
        if (index.column() == 0 && value.isValid() && value.toInt() == Qt::Checked
            && !isEnabledRow(index))
            return int(Qt::Unchecked);
        return value;
    }
    case ItemRoles::SortText:
        if (index.column() == 1 && sourceModel()) {
            const zeral::ObjectInfo &info = sourceModel()->constInfo(
                index.siblingAtColumn(0).data(Qt::DisplayRole).toUInt());
            if (info.type != WorkerType)
                return QVariant();
            return info.parameters.value(EmailKey).trimmed();
        }
        break;
    case Qt::ForegroundRole:
        if (index.isValid() && !isEnabledRow(index))
            return ZRGuiGlobals::grey();
        break;
    default:
        break;
    }
    return ObjectTreeProxy::data(index, role);
}
