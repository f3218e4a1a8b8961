#pragma once

#include <host/gui/models/objecttreeproxy.h>

// The proxy of a list of user accounts: besides the filters of ObjectTreeProxy it shows only
// users of the role templates that the operator may manage. The operator's own account
// always shows, whatever its template. Until a list of templates is given, the template
// filter lets every user through; afterwards exactly the listed templates pass.
class UserProxyModel : public ObjectTreeProxy
{
    Q_OBJECT
public:
    explicit UserProxyModel(QObject *parent = nullptr);

    void setCurrentUserUid(zeral::TYPE_ID uid);
    zeral::TYPE_ID currentUserUid() const { return m_currentUserUid; }
    void setRoletemplateFilterEnabled(bool enabled);
    bool isRoletemplateFilterEnabled() const { return m_templateFilterEnabled; }
    void setRoletemplateFilter(const QStringList &ids);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    zeral::TYPE_ID m_currentUserUid = 0;
    bool m_templateFilterEnabled = false;
    bool m_templatesKnown = false;
    QSet<QString> m_templates;
};
