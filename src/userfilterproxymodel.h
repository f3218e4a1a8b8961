#pragma once

#include <host/gui/models/userproxymodel.h>
#include <shared/roletemplateinfo.h>

#include <QSet>
#include <QStringList>

// The proxy of one user list of the users screen. Besides what UserProxyModel filters, it
// shows a user by the roles that his role template grants and by the template's id. A row
// carries only the template id; the roles are looked up in the table of role templates,
// and a template that the table lacks grants nothing. The role filter is asked first, the
// template filter has the last word; an empty set turns its filter off.
class UserFilterProxyModel : public UserProxyModel
{
    Q_OBJECT
public:
    explicit UserFilterProxyModel(QObject *parent);

    zeral::ROLETEMPLATES_HASH roleTemplates() const { return m_roleTemplates; }

    void setFilterByRoleList(const QStringList &roles, ObjectTreeProxy::FilterType type);
    QStringList filterByRoleList() const { return m_roleFilter.values(); }
    ObjectTreeProxy::FilterType filterRoleType() const { return m_roleFilterType; }

    void setFilterByRoleTemplateList(const QStringList &ids, ObjectTreeProxy::FilterType type);
    QStringList filterByRoleTemplate() const { return m_templateFilter.values(); }
    ObjectTreeProxy::FilterType filterRoleTemplateType() const { return m_templateFilterType; }

public slots:
    // Filters again every time, except for the same table again: rows that waited for their
    // template's roles show as soon as the table is here.
    void setRoleTemplates(zeral::ROLETEMPLATES_HASH rt_hash);

protected:
    bool acceptsTemplate(const QString &templateId, bool own) const override;

private:
    bool roleFilterAccepts(const QString &templateId) const;
    bool templateFilterAccepts(const QString &templateId) const;

    zeral::ROLETEMPLATES_HASH m_roleTemplates;
    bool m_roleTemplatesSet = false;
    QSet<QString> m_roleFilter;
    ObjectTreeProxy::FilterType m_roleFilterType = ObjectTreeProxy::MustMatch;
    QSet<QString> m_templateFilter;
    ObjectTreeProxy::FilterType m_templateFilterType = ObjectTreeProxy::MustMatch;
};
