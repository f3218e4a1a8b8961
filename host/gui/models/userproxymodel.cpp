#include "userproxymodel.h"

#include <shared/dbkeys.h>

#include <algorithm>

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

void UserProxyModel::setSourceModel(QAbstractItemModel *model)
{
    for (QVector<qint8> &verdicts : m_verdicts)
        verdicts.clear();
    if (auto *tree = qobject_cast<ObjectTreeModel *>(model))
        tree->setCodedParameter(templateKey());
    ObjectTreeProxy::setSourceModel(model);
}

void UserProxyModel::templateFiltersChanged()
{
    // Every row that reached this filter did so with a template of the lists: if no answer
    // on them changes, no row changes, and 100,000 rows needn't be filtered and sorted anew.
    // Without the codes, the lists don't cover every row.
    bool changed = !sourceModel() || sourceModel()->codedParameter() != templateKey();
    for (int own = 0; own < 2; ++own) {
        QVector<qint8> &verdicts = m_verdicts[own];
        for (int code = 0; code < verdicts.size(); ++code) {
            if (verdicts.at(code) < 0)
                continue;
            const qint8 accepted = acceptsTemplate(sourceModel()->codeText(code), own);
            changed = changed || accepted != verdicts.at(code);
            verdicts[code] = accepted;
        }
    }
    if (changed)
        refilter();
}

bool UserProxyModel::acceptsObject(const ObjectTreeModel::Node *node) const
{
    const bool own = m_currentUserUid != 0 && node->info.uid == m_currentUserUid;
    // A source that codes another parameter: the template is looked up in each object.
    const ObjectTreeModel *source = sourceModel();
    const int code = source->codeOf(*node, templateKey());
    if (code < 0)
        return acceptsTemplate(node->info.parameters.value(templateKey()), own);
    // Asked for every row at each refilter: the answer known, nothing is written.
    const QVector<qint8> &known = m_verdicts[own];
    if (code < known.size() && known.at(code) >= 0)
        return known.at(code);
    QVector<qint8> &verdicts = m_verdicts[own];
    if (code >= verdicts.size()) {
        const int count = verdicts.size();
        verdicts.resize(code + 1);
        std::fill(verdicts.begin() + count, verdicts.end(), qint8(-1));
    }
    verdicts[code] = acceptsTemplate(source->codeText(code), own);
    return verdicts.at(code);
}

bool UserProxyModel::acceptsTemplate(const QString &templateId, bool own) const
{
    return !m_templateFilterEnabled || !m_templatesKnown || own || m_templates.contains(templateId);
}
