#pragma once

#include <host/core/zrplugininterface.h>
#include <host/gui/widgets/pluginwidget.h>
#include <shared/objectinfo.h>
#include <shared/types.h>

#include <QList>
#include <QSet>

class EmployeeCard;
class EmployeeTreeProxy;
class ObjectTreeModel;
class QAction;
class QTreeView;
class SearchWidget;

// The studio's employees screen: the organisation (firms, departments and their employees)
// as one tree with a search, a card of the selected employee, and the ways into the users
// screen for the mobile accounts of employees. It is built into the studio, and the studio
// treats it as it treats a loaded plugin.
class EmployeesScreen : public PluginWidget, public ZRPluginInterface
{
    Q_OBJECT
    Q_INTERFACES(ZRPluginInterface)
public:
    explicit EmployeesScreen(QWidget *parent = nullptr);
    ~EmployeesScreen() override;

    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QWidget *widget() override { return this; }
    QObject *object() override { return this; }

    bool canShow() override;
    QList<PLUGIN_TAB> tabList() override;
    void onTabActivated(int index) override;
    void activated() override;
    // Fills the tree from the local store and follows its changes from now on.
    void insertedToInterface() override;

    ObjectTreeModel *model() const { return m_model; }
    EmployeeTreeProxy *proxy() const { return m_proxy; }
    QTreeView *view() const { return m_view; }
    SearchWidget *searchWidget() const { return m_search; }
    EmployeeCard *card() const { return m_card; }
    QAction *createMobileUsersAction() const { return m_createMobileUsers; }
    QAction *mobileUserAction() const { return m_mobileUser; }

    // The uids of the selected rows that are employees, ascending.
    QList<zeral::TYPE_ID> selectedEmployees() const;

public slots:
    // Asks the users screen to create mobile accounts for the selected employees.
    void createMobileUsers();
    // Asks the users screen to show the mobile account of the selected employee.
    void showMobileUser();

private:
    void reload();
    void storeChanged(const QString &dataname, const QList<zeral::TYPE_ID> &uids);
    void storeRemoved(const QString &dataname, const QList<zeral::TYPE_ID> &uids);
    void addObjects(const QList<zeral::ObjectInfo> &objects);
    void markDismissed(const QList<zeral::ObjectInfo> &workers);
    void search(const QString &text);
    void selectionChanged();
    void updateActions();
    void askUsersScreen(const QString &name, const QByteArray &payload);
    static bool belongsToTree(const QString &dataname, const zeral::ObjectInfo &object);

    ObjectTreeModel *m_model;
    EmployeeTreeProxy *m_proxy;
    SearchWidget *m_search;
    QTreeView *m_view;
    EmployeeCard *m_card;
    QAction *m_createMobileUsers;
    QAction *m_mobileUser;
    QSet<zeral::TYPE_ID> m_dismissed; // employees shown with the dismissed icon
    bool m_following = false;
};
