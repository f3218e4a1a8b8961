#pragma once

#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/types.h>

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QWidget>

#include <memory>

class ObjectTreeModel;
class ObjectTreeProxy;

namespace Ui {
class UserPermissions;
}

// The objects a user may reach: five trees (departments, access objects, reports, access
// groups, monitoring settings), one proxy each, whose check marks live as long as the
// editor. Which trees are offered follows the roles of the edited user's template. The
// checks of all five trees become one "update_permissions" task that replaces the user's
// whole set at the server.
class UserPermissions : public QWidget
{
    Q_OBJECT
public:
    explicit UserPermissions(QWidget *parent = nullptr);
    ~UserPermissions() override;

    // Every uid below `uid` in `model`, at all depths, without `uid` itself.
    void getChildUids(ObjectTreeModel *model, unsigned int uid, QSet<unsigned int> &result);

signals:
    void dataEdited();
    void appendTask(zeral::TaskInfo task);

public slots:
    void setCurrent(zeral::ObjectInfo info);
    void setPermissions(QList<zeral::OBJECT_PERMISSION> permissions);
    void setRoleTemplates(zeral::ROLETEMPLATES_HASH templs);
    void applyChanges();
    void saved(zeral::TYPE_ID uid);
    void setDatatype(QString datatype);
    QString getCurrentDatatype();
    void setObjectTypeSelectorEnabled(bool enabled);
    bool isObjectTypeSelectoEnabled();
    void setObjectTypeSelectorVisible(bool visible);
    bool isObjectTypeSelectorVisisble();
    void checkAll();
    void uncheckAll();
    void setCurrentRoleTemplate(QString rt_id);

private slots:
    void setCurrentModel(int index);
    void search(QString text);
    void updatePermissionsEnabled();

private:
    void setRootIndex();
    bool isOperator() const;
    // Once per burst of objects that reach the store: checks those of the stored permissions
    // that no tree held when they were read, and settles the tree in view.
    void scheduleSettle();
    void settle();

    std::unique_ptr<Ui::UserPermissions> m_ui;
    zeral::ObjectInfo m_current;
    QList<zeral::OBJECT_PERMISSION> m_permissions;
    zeral::ROLETEMPLATES_HASH m_roleTemplates;
    ObjectTreeProxy *m_currentProxy = nullptr;
    QHash<int, ObjectTreeProxy *> m_proxies;

    // Objects of the stored permissions that no tree's model held yet when they were read.
    QSet<zeral::TYPE_ID> m_pending;
    bool m_settleScheduled = false;
    bool m_viewNeedsSettle = false;
};
