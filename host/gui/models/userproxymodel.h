#pragma once

#include <host/gui/models/objecttreeproxy.h>

#include <QSet>
#include <QStringList>
#include <QVector>

// The proxy of a list of user accounts: besides the filters of ObjectTreeProxy it shows only
// users of the role templates that the operator may manage. The operator's own account
// always shows, whatever its template. Until a list of templates is given, the template
// filter lets every user through; afterwards exactly the listed templates pass.
//
// Whether a user shows depends, beyond the base filters, only on his role template and on
// whether he is the operator; so the answer is worked out once per template and kept until
// a filter changes. A site has a few templates and up to 100,000 users.
class UserProxyModel : public ObjectTreeProxy
{
    Q_OBJECT
public:
    explicit UserProxyModel(QObject *parent = nullptr);

    // The source's role template is made its coded parameter.
    void setSourceModel(QAbstractItemModel *model) override;

    void setCurrentUserUid(zeral::TYPE_ID uid);
    zeral::TYPE_ID currentUserUid() const { return m_currentUserUid; }
    void setRoletemplateFilterEnabled(bool enabled);
    bool isRoletemplateFilterEnabled() const { return m_templateFilterEnabled; }
    void setRoletemplateFilter(const QStringList &ids);

protected:
    bool acceptsObject(const ObjectTreeModel::Node *node) const override;
    // Whether users of this template show; `own` for the operator's own account. Subclasses
    // add their conditions, and call templateFiltersChanged() when those change.
    virtual bool acceptsTemplate(const QString &templateId, bool own) const;
    // Works out anew the answers per template, and filters the rows anew if one changed.
    void templateFiltersChanged();

private:
    zeral::TYPE_ID m_currentUserUid = 0;
    bool m_templateFilterEnabled = false;
    bool m_templatesKnown = false;
    QSet<QString> m_templates;
    // acceptsTemplate() by the code of the template id in the source, for other users [0]
    // and for the operator [1]; -1 where no row has asked yet.
    mutable QVector<qint8> m_verdicts[2];
};
