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
    templateFiltersChanged();
}

void UserProxyModel::setRoletemplateFilterEnabled(bool enabled)
{
    if (enabled == m_templateFilterEnabled)
        return;
    m_templateFilterEnabled = enabled;
    templateFiltersChanged();
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
    templateFiltersChanged();
}

void UserProxyModel::templateFiltersChanged()
{
    // Every row that reached this filter did so with a template of the lists: if no answer
    // on them changes, no row changes, and 100,000 rows needn't be filtered and sorted anew.
    bool changed = false;
    for (int own = 0; own < 2; ++own) {
        for (auto it = m_verdicts[own].begin(); it != m_verdicts[own].end(); ++it) {
            const bool accepted = acceptsTemplate(it.key(), own);
            changed = changed || accepted != it.value();
            it.value() = accepted;
        }
    }
    if (changed)
        refilter();
}

bool UserProxyModel::acceptsObject(const ObjectTreeModel::Node *node) const
{
    const bool own = m_currentUserUid != 0 && node->info.uid == m_currentUserUid;
    static const QString none;
    const auto &parameters = node->info.parameters;
    const auto found = parameters.constFind(templateKey());
    const QString &templateId = found != parameters.cend() ? found.value() : none;
    QHash<QString, bool> &verdicts = m_verdicts[own];
    const auto verdict = verdicts.constFind(templateId);
    if (verdict != verdicts.cend())
        return verdict.value();
    const bool accepted = acceptsTemplate(templateId, own);
    verdicts.insert(templateId, accepted);
    return accepted;
}

bool UserProxyModel::acceptsTemplate(const QString &templateId, bool own) const
{
    return !m_templateFilterEnabled || !m_templatesKnown || own || m_templates.contains(templateId);
}
