#include "userfilterproxymodel.h"

#include <host/gui/models/itemroles.h>
#include <host/gui/models/objecttreemodel.h>
#include <shared/dbkeys.h>

#include <algorithm>
#include <utility>

UserFilterProxyModel::UserFilterProxyModel(QObject *parent)
    : UserProxyModel(parent)
{}

void UserFilterProxyModel::setRoleTemplates(zeral::ROLETEMPLATES_HASH rt_hash)
{
    // The same table again (it is read at every show of the screen) filters nothing anew.
    if (rt_hash == m_roleTemplates && m_roleTemplatesSet)
        return;
    m_roleTemplates = std::move(rt_hash);
    m_roleTemplatesSet = true;
    m_templateSharesRole.clear();
    invalidateFilter();
}

void UserFilterProxyModel::setFilterByRoleList(const QStringList &roles,
                                               ObjectTreeProxy::FilterType type)
{
    m_roleFilter = QSet<QString>(roles.cbegin(), roles.cend());
    m_templateSharesRole.clear();
    m_roleFilterType = type;
    invalidateFilter();
}

void UserFilterProxyModel::setFilterByRoleTemplateList(const QStringList &ids,
                                                       ObjectTreeProxy::FilterType type)
{
    m_templateFilter = QSet<QString>(ids.cbegin(), ids.cend());
    m_templateFilterType = type;
    invalidateFilter();
}

bool UserFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (!UserProxyModel::filterAcceptsRow(sourceRow, sourceParent))
        return false;

    const QString templateId = roleTemplateOf(sourceRow, sourceParent);

    if (!m_roleFilter.isEmpty() && !roleFilterAccepts(templateId))
        return false;
    if (!m_templateFilter.isEmpty())
        return templateFilterAccepts(templateId);
    return true;
}

QString UserFilterProxyModel::roleTemplateOf(int sourceRow, const QModelIndex &sourceParent) const
{
    static const QString templateKey = QLatin1String(db::user::ROLE_TEMPLATE);
    // The object's own parameters where the source is the store's tree: role 257 would build a
    // hash of variants for each of 100,000 rows at every refilter.
    if (const ObjectTreeModel *tree = sourceModel()) {
        if (const ObjectTreeModel::Node *node = tree->nodeAt(sourceRow, sourceParent))
            return node->info.parameters.value(templateKey);
    }
    const QModelIndex first
        = QSortFilterProxyModel::sourceModel()->index(sourceRow, 0, sourceParent);
    return first.data(ItemRoles::Parameters).toHash().value(templateKey).toString();
}

bool UserFilterProxyModel::roleFilterAccepts(const QString &templateId) const
{
    // Worked out once per template, not per row: a few templates serve 100,000 users.
    auto known = m_templateSharesRole.find(templateId);
    if (known == m_templateSharesRole.end()) {
        // A template the table doesn't hold (yet) grants no roles.
        const auto found = m_roleTemplates.constFind(templateId);
        const bool shares
            = found != m_roleTemplates.cend()
              && std::any_of(found->roles.cbegin(), found->roles.cend(),
                             [this](const QString &role) { return m_roleFilter.contains(role); });
        known = m_templateSharesRole.insert(templateId, shares);
    }
    const bool shares = known.value();
    switch (m_roleFilterType) {
    case ObjectTreeProxy::MustMatch:
        return shares;
    case ObjectTreeProxy::MustNotMatch:
        return !shares;
    }
    return false; // an unknown mode lets nothing through
}

bool UserFilterProxyModel::templateFilterAccepts(const QString &templateId) const
{
    const bool listed = m_templateFilter.contains(templateId);
    switch (m_templateFilterType) {
    case ObjectTreeProxy::MustMatch:
        return listed;
    case ObjectTreeProxy::MustNotMatch:
        return !listed;
    }
    return false;
}
