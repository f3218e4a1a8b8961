#include "employeesscreen.h"

#include "employeecard.h"
#include "employeetreeproxy.h"
#include "objectnamedelegate.h"
#include "screenslogging.h"

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/widgets/searchwidget.h>
#include <host/gui/widgets/treeview.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

#include <QAction>
#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

using zeral::LocalStorage;
using zeral::ObjectInfo;
using zeral::TYPE_ID;

namespace {

const QString orgStructure = QLatin1String(zeral::ORGSTRUCTURE_DATANAME);
const QString subjects = QLatin1String(zeral::SUBJECT_DATANAME);
const QString workerType = QLatin1String(db::orgstructure::WORKER);

bool isDismissed(const ObjectInfo &worker)
{
    return worker.parameters.value(QLatin1String(db::user::OBJECTSTATE)) == QLatin1String("d");
}

} // namespace

EmployeesScreen::EmployeesScreen(QWidget *parent)
    : PluginWidget(parent)
    , m_model(new ObjectTreeModel(this))
    , m_proxy(new EmployeeTreeProxy(this))
    , m_search(new SearchWidget(this))
    , m_view(new TreeView(this))
    , m_card(new EmployeeCard(this))
    , m_createMobileUsers(new QAction(QIcon::fromTheme(QStringLiteral("action-add")),
                                      tr("Создать мобильных пользователей"), this))
    , m_mobileUser(new QAction(QIcon::fromTheme(QStringLiteral("common-mobile")),
                               tr("Мобильный пользователь"), this))
{
    setObjectName(QStringLiteral("employeesScreen"));
    m_model->setColumnCount(1);
    m_model->setHorizontalHeaderLabels({tr("Организация")});
    m_proxy->setSourceModel(m_model);
    m_proxy->sort(0);

    m_createMobileUsers->setObjectName(QStringLiteral("createMobileUsersAction"));
    m_createMobileUsers->setToolTip(
        tr("Создать учетные записи мобильного приложения для выбранных сотрудников"));
    m_mobileUser->setObjectName(QStringLiteral("mobileUserAction"));
    m_mobileUser->setToolTip(tr("Открыть учетную запись, связанную с выбранным сотрудником"));
    auto *toolBar = new ZRActionsToolBar(this);
    toolBar->setObjectName(QStringLiteral("employeesToolBar"));
    ZRActionsInsertHelper::addActionWidget(toolBar, m_createMobileUsers);
    ZRActionsInsertHelper::addActionWidget(toolBar, m_mobileUser);
    addToolBar(Qt::TopToolBarArea, toolBar);

    m_search->setObjectName(QStringLiteral("employeeSearch"));
    m_search->setPlaceholderText(tr("Поиск сотрудника"));
    m_search->showAdvancedButton(false);
    m_view->setObjectName(QStringLiteral("employeesTree"));
    m_view->setModel(m_proxy);
    m_view->setItemDelegate(new ObjectNameDelegate(m_view));
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setHeaderHidden(true);
    m_view->setSortingEnabled(false); // the proxy keeps the order by name

    auto *treePane = new QWidget(this);
    auto *treeLayout = new QVBoxLayout(treePane);
    treeLayout->setContentsMargins(0, 0, 0, 0);
    treeLayout->addWidget(m_search);
    treeLayout->addWidget(m_view, 1);
    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(treePane);
    splitter->addWidget(m_card);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    setCentralWidget(splitter);

    connect(m_search, &SearchWidget::startSearch, this, &EmployeesScreen::search);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &EmployeesScreen::selectionChanged);
    // A new link to an account changes what the selected employee offers.
    connect(m_model, &QAbstractItemModel::dataChanged, this, &EmployeesScreen::updateActions);
    connect(m_createMobileUsers, &QAction::triggered, this, &EmployeesScreen::createMobileUsers);
    connect(m_mobileUser, &QAction::triggered, this, &EmployeesScreen::showMobileUser);
    updateActions();
}

EmployeesScreen::~EmployeesScreen() = default;

QString EmployeesScreen::pluginName() const
{
    return QStringLiteral("employees");
}

int EmployeesScreen::pluginVersion() const
{
    return 1;
}

QString EmployeesScreen::pluginBuild() const
{
    return QStringLiteral("0.1");
}

bool EmployeesScreen::canShow()
{
    return AuthData::roles().contains(QLatin1String(zeral::role::WORKER_SHOW));
}

QList<PLUGIN_TAB> EmployeesScreen::tabList()
{
    PLUGIN_TAB tab;
    tab.name = tr("Сотрудники");
    tab.icon = ZRGuiGlobals::objectIcon(QStringLiteral("OT_WORKER"));
    tab.index = 0;
    tab.current = true;
    return {tab};
}

void EmployeesScreen::onTabActivated(int) {}

void EmployeesScreen::activated()
{
    m_search->setFocus();
}

void EmployeesScreen::insertedToInterface()
{
    if (!m_following) {
        m_following = true;
        LocalStorage *store = LocalStorage::instance();
        connect(store, &LocalStorage::dataChanged, this, &EmployeesScreen::storeChanged);
        connect(store, &LocalStorage::dataRemoved, this, &EmployeesScreen::storeRemoved);
    }
    reload();
}

QList<TYPE_ID> EmployeesScreen::selectedEmployees() const
{
    const QModelIndexList rows = m_view->selectionModel()->selectedRows(0);
    QList<TYPE_ID> employees;
    for (const QModelIndex &row : qAsConst(rows)) {
        const TYPE_ID uid = m_model->uidForIndex(m_proxy->mapToSource(row));
        if (m_model->constInfo(uid).type == workerType)
            employees.append(uid);
    }
    std::sort(employees.begin(), employees.end());
    return employees;
}

void EmployeesScreen::createMobileUsers()
{
    QList<unsigned int> uids;
    for (TYPE_ID uid : selectedEmployees())
        uids.append(uid);
    if (uids.isEmpty())
        return;
    askUsersScreen(QLatin1String(zeral::proto::studio::ShowMobileUserWizards),
                   ZRDataStream::pack(uids));
}

void EmployeesScreen::showMobileUser()
{
    const QList<TYPE_ID> employees = selectedEmployees();
    if (employees.size() != 1)
        return;
    const TYPE_ID user = EmployeeCard::linkedUser(m_model->constInfo(employees.constFirst()));
    if (user == 0)
        return;
    askUsersScreen(QLatin1String(zeral::proto::studio::ShowMobileUserProperties),
                   ZRDataStream::pack(qint32(user)));
}

void EmployeesScreen::askUsersScreen(const QString &name, const QByteArray &payload)
{
    Command command = newCommand();
    command.type = zeral::proto::NamedCommand;
    command.name = name;
    command.data = payload;
    sendQuery(command, [this](Command &answer) {
        if (answer.isOk())
            return;
        qCWarning(lcStudioScreens)
            << answer.name << "was not handled:" << answer.status << answer.errorText();
        if (answer.status == zeral::proto::StatusNotFound) {
            showPopupCriticalMessage(
                tr("Экран пользователей недоступен: модуль пользователей не загружен в студию. "
                   "Проверьте, что он установлен в папке модулей, и перезапустите студию."));
            return;
        }
        const QString reason = answer.errorText();
        showPopupCriticalMessage(tr("Экран пользователей не открылся: %1")
                                     .arg(reason.isEmpty() ? tr("ошибка %1").arg(answer.status)
                                                           : reason));
    });
}

bool EmployeesScreen::belongsToTree(const QString &dataname, const ObjectInfo &object)
{
    if (object.uid == 0)
        return false;
    if (dataname == subjects)
        return object.type == workerType;
    return dataname == orgStructure
           && (object.type == QLatin1String(db::orgstructure::FIRM)
               || object.type == QLatin1String(db::orgstructure::DEPARTMENT));
}

void EmployeesScreen::reload()
{
    const LocalStorage *store = LocalStorage::instance();
    QList<ObjectInfo> objects;
    for (const QString &dataname : {orgStructure, subjects}) {
        const LocalStorage::Objects &dataset = store->constObjects(dataname);
        for (const ObjectInfo &object : dataset) {
            if (belongsToTree(dataname, object))
                objects.append(object);
        }
    }
    m_model->clear();
    m_dismissed.clear();
    addObjects(objects);
    m_view->expandToDepth(0);
    m_card->refresh();
}

void EmployeesScreen::storeChanged(const QString &dataname, const QList<TYPE_ID> &uids)
{
    if (dataname == orgStructure || dataname == subjects) {
        const LocalStorage *store = LocalStorage::instance();
        QList<ObjectInfo> objects;
        for (TYPE_ID uid : uids) {
            const ObjectInfo &object = store->constObject(uid, dataname);
            if (belongsToTree(dataname, object)) {
                objects.append(object);
            } else if (m_model->contains(uid)) {
                m_model->remove(uid); // no longer of a type the tree shows
                m_dismissed.remove(uid);
            }
        }
        addObjects(objects);
    }
    // Departments, positions and accounts all show on the card.
    if (m_card->employee() != 0)
        m_card->refresh();
}

void EmployeesScreen::storeRemoved(const QString &dataname, const QList<TYPE_ID> &uids)
{
    if (dataname == orgStructure || dataname == subjects) {
        for (TYPE_ID uid : uids) {
            m_model->remove(uid);
            m_dismissed.remove(uid);
        }
    }
    if (m_card->employee() != 0)
        m_card->refresh();
    updateActions();
}

void EmployeesScreen::addObjects(const QList<ObjectInfo> &objects)
{
    if (objects.isEmpty())
        return;
    m_model->add(objects);
    markDismissed(objects);
}

void EmployeesScreen::markDismissed(const QList<ObjectInfo> &workers)
{
    for (const ObjectInfo &worker : workers) {
        if (worker.type != workerType)
            continue;
        const bool dismissed = isDismissed(worker);
        if (dismissed == m_dismissed.contains(worker.uid))
            continue;
        const QIcon icon = dismissed ? ZRGuiGlobals::objectIcon(QStringLiteral("OT_WORKER-d"))
                                     : ZRGuiGlobals::objectIcon(QStringLiteral("OT_WORKER"));
        m_model->setData(m_model->indexForUid(worker.uid), icon, Qt::DecorationRole);
        if (dismissed)
            m_dismissed.insert(worker.uid);
        else
            m_dismissed.remove(worker.uid);
    }
}

void EmployeesScreen::search(const QString &text)
{
    m_proxy->searchEmployees(text);
    if (text.trimmed().isEmpty())
        m_view->expandToDepth(0);
    else
        m_view->expandAll();
}

void EmployeesScreen::selectionChanged()
{
    const QList<TYPE_ID> employees = selectedEmployees();
    m_card->showEmployee(employees.size() == 1 ? employees.constFirst() : 0);
    updateActions();
}

void EmployeesScreen::updateActions()
{
    const QList<TYPE_ID> employees = selectedEmployees();
    m_createMobileUsers->setEnabled(!employees.isEmpty());
    m_mobileUser->setEnabled(employees.size() == 1
                             && EmployeeCard::linkedUser(m_model->constInfo(employees.constFirst()))
                                    != 0);
}
