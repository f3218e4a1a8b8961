#include "userfilterproxymodel.h"

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
    templateFiltersChanged();
}

void UserFilterProxyModel::setFilterByRoleList(const QStringList &roles,
                                               ObjectTreeProxy::FilterType type)
{
    m_roleFilter = QSet<QString>(roles.cbegin(), roles.cend());
    m_roleFilterType = type;
    templateFiltersChanged();
}

void UserFilterProxyModel::setFilterByRoleTemplateList(const QStringList &ids,
                                                       ObjectTreeProxy::FilterType type)
{
    m_templateFilter = QSet<QString>(ids.cbegin(), ids.cend());
    m_templateFilterType = type;
    templateFiltersChanged();
}

bool UserFilterProxyModel::acceptsTemplate(const QString &templateId, bool own) const
{
    if (!UserProxyModel::acceptsTemplate(templateId, own))
        return false;
    if (!m_roleFilter.isEmpty() && !roleFilterAccepts(templateId))
        return false;
    if (!m_templateFilter.isEmpty())
        return templateFilterAccepts(templateId);
    return true;
}

bool UserFilterProxyModel::roleFilterAccepts(const QString &templateId) const
{
    // A template the table doesn't hold (yet) grants no roles.
    const auto found = m_roleTemplates.constFind(templateId);
    const bool shares
        = found != m_roleTemplates.cend()
          && std::any_of(found->roles.cbegin(), found->roles.cend(),
                         [this](const QString &role) { return m_roleFilter.contains(role); });
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
