#include "userproxymodel.h"

#include <shared/dbkeys.h>

namespace {
// Asked for each of many rows at every refilter: made into a QString once.
const QString &templateKey()
{
    static const QString key = QLatin1String(db::user::ROLE_TEMPLATE);
    return key;
}
} // namespace

UserProxyModel::UserProxyModel(QObject *parent)
    : ObjectTreeProxy(parent)
{}

void UserProxyModel::setCurrentUserUid(zeral::TYPE_ID uid)
{
    if (uid == m_currentUserUid)
        return;
    m_currentUserUid = uid;
    invalidateFilter();
}

void UserProxyModel::setRoletemplateFilterEnabled(bool enabled)
{
    if (enabled == m_templateFilterEnabled)
        return;
    m_templateFilterEnabled = enabled;
    invalidateFilter();
}

void UserProxyModel::setRoletemplateFilter(const QStringList &ids)
{
    // The screens set the list anew each time they are shown; refiltering a long list for the
    // same templates would be work for nothing.
    QSet<QString> templates(ids.cbegin(), ids.cend());
    if (m_templatesKnown && templates == m_templates)
        return;
    m_templates = std::move(templates);
    m_templatesKnown = true;
    invalidateFilter();
}

bool UserProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (!ObjectTreeProxy::filterAcceptsRow(sourceRow, sourceParent))
        return false;
    if (!m_templateFilterEnabled || !m_templatesKnown || !sourceModel())
        return true;
    const ObjectTreeModel::Node *node = sourceModel()->nodeAt(sourceRow, sourceParent);
    if (!node)
        return false;
    if (m_currentUserUid != 0 && node->info.uid == m_currentUserUid)
        return true;
    return m_templates.contains(node->info.parameters.value(templateKey()));
}
