#include "userpermissions.h"

#include "ui_userpermissions.h"

#include <src/usertaskdata.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/zrglobals.h>
#include <host/gui/models/grantedproxymodel.h>
#include <host/gui/models/itemroles.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/models/placingmodelproxy.h>
#include <host/gui/widgets/styleditemdelegate.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QIcon>
#include <QMetaObject>
#include <QStandardItemModel>

#include <algorithm>

using zeral::TYPE_ID;

namespace {

const QString OrgstructureData = QString::fromLatin1(zeral::ORGSTRUCTURE_DATANAME);
const QString PlacingData = QString::fromLatin1(zeral::PLACING_DATANAME);
const QString ReportData = QString::fromLatin1(zeral::REPORT_DATANAME);
const QString PolicyData = QString::fromLatin1(zeral::POLICY_DATANAME);
const QString MonitoringData = QString::fromLatin1(zeral::MONITORING_DATANAME);
const QString HiddenKey = QString::fromLatin1(db::object::HIDDEN);
const QString TrueText = QStringLiteral("true");

// The devices of the tree of access objects: what it shows, and what may be checked in it.
QStringList placingDevices()
{
    return ZRGlobals::accessShowDevices() + ZRGlobals::videoServerDevices()
           + ZRGlobals::videoDevices() + ZRGlobals::relayDevices();
}

QStringList shownPlacingTypes()
{
    return placingDevices() << QStringLiteral("OT_TERM_ZR_DESK")
                            << QStringLiteral("OT_TERM_VIRTUAL_CHECKPOINT")
                            << QStringLiteral("OT_TERM_EXTERNAL_DEVICE");
}

QStringList checkablePlacingTypes()
{
    return placingDevices() << QStringLiteral("OT_TERM_ZR_NOVA_E")
                            << QStringLiteral("OT_TERM_ZR_DESK")
                            << QStringLiteral("OT_TERM_VIRTUAL_CHECKPOINT")
                            << QStringLiteral("OT_TERM_EXTERNAL_DEVICE");
}

// The trees that depend on the edited user's roles, and the roles of which he needs one.
struct GuardedTree
{
    QString datatype;
    QStringList roles;
};

const QVector<GuardedTree> &guardedTrees()
{
    static const QVector<GuardedTree> trees{
        {OrgstructureData,
         {QStringLiteral("RL_WORKER_SHOW"), QStringLiteral("RL_FIRM_SHOW"),
          QStringLiteral("RL_DEPARTMENT_SHOW"), QStringLiteral("RL_MONITORING_SHOW"),
          QStringLiteral("RL_REPORT_CREATE_CHANGE"), QStringLiteral("RL_DEVICE_LOG_SHOW"),
          QStringLiteral("RL_SYSTEM_LOG_SHOW"), QStringLiteral("RL_ACCESS_POLICY_SHOW"),
          QStringLiteral("RL_ACCESS_SCHEDULE_SHOW"), QStringLiteral("RL_PLACINGS_SHOW"),
          QStringLiteral("RL_USER_SHOW")}},
        {ReportData,
         {QStringLiteral("RL_REPORT_CREATE_CHANGE"), QStringLiteral("RL_WORKER_SHOW"),
          QStringLiteral("RL_FIRM_SHOW"), QStringLiteral("RL_DEPARTMENT_SHOW"),
          QStringLiteral("RL_USER_SHOW")}},
        {MonitoringData, {QStringLiteral("RL_MONITORING_SHOW"), QStringLiteral("RL_USER_SHOW")}},
    };
    return trees;
}

} // namespace

UserPermissions::UserPermissions(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::UserPermissions>())
{
    m_ui->setupUi(this);
    TreeView *view = m_ui->objectView;
    view->setItemDelegate(new StyledItemDelegate(view));
    view->setUniformRowHeights(true);
    m_ui->searchWidget->showAdvancedButton(false);
    connect(m_ui->searchWidget, &SearchWidget::startSearch, this, &UserPermissions::search);

    QComboBox *selector = m_ui->cbDatatype;
    selector->addItem(QIcon::fromTheme(QStringLiteral("object-OT_DEPARTMENT")), tr("Подразделения"),
                      OrgstructureData);
    selector->addItem(QIcon::fromTheme(QStringLiteral("object-OT_PLACING")), tr("Объекты доступа"),
                      PlacingData);
    selector->addItem(QIcon::fromTheme(QStringLiteral("object-OT_REPORT")), tr("Отчеты"),
                      ReportData);
    selector->addItem(QIcon::fromTheme(QStringLiteral("object-OT_ACCESS_POLICY")),
                      tr("Группы доступа"), PolicyData);
    selector->addItem(QIcon::fromTheme(QStringLiteral("plugin-monitoring")),
                      tr("Настройки мониторинга"), MonitoringData);

    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    const auto add = [this](ObjectTreeProxy *proxy) {
        m_proxies.insert(m_proxies.size(), proxy);
        return proxy;
    };
    // Search and filters are set before the model, so that each proxy filters its rows once.
    ObjectTreeProxy *departments = add(new GrantedProxyModel(view));
    departments->setSearchEnabled(true);
    departments->setSearchIndex(OrgstructureData);
    departments->setObjectTypeFilter({QString::fromLatin1(db::orgstructure::SUBJECTROOT),
                                      QString::fromLatin1(db::orgstructure::FIRM),
                                      QString::fromLatin1(db::orgstructure::DEPARTMENT)});
    departments->setSourceModel(store->model(OrgstructureData));

    ObjectTreeProxy *placings = add(new PlacingModelProxy(view));
    placings->setSearchEnabled(true);
    placings->setSearchIndex(PlacingData);
    placings->setObjectTypeFilter(shownPlacingTypes());
    placings->setCheckableObjectTypes(checkablePlacingTypes());
    placings->setSourceModel(store->model(PlacingData));

    const auto hiddenOut = [](ObjectTreeProxy *proxy, const QString &type) {
        proxy->setSearchRole(ItemRoles::SortText);
        proxy->setSearchByWordsEnabled(true);
        if (!type.isEmpty())
            proxy->setObjectTypeFilter({type});
        proxy->addParameterFilter(HiddenKey, {TrueText}, ObjectTreeProxy::MustNotMatch);
        proxy->setSearchEnabled(true);
    };
    ObjectTreeProxy *reports = add(new GrantedProxyModel(view));
    hiddenOut(reports, QStringLiteral("OT_REPORT"));
    reports->setSourceModel(store->model(ReportData));

    ObjectTreeProxy *policies = add(new GrantedProxyModel(view));
    hiddenOut(policies, QString::fromLatin1(db::policy::ACCESS_POLICY));
    policies->setSourceModel(store->model(PolicyData));

    ObjectTreeProxy *monitoring = add(new GrantedProxyModel(view));
    monitoring->setSearchRole(ItemRoles::SortText);
    monitoring->setSearchByWordsEnabled(true);
    monitoring->setSearchEnabled(true);
    monitoring->setSourceModel(store->model(MonitoringData));

    for (ObjectTreeProxy *proxy : qAsConst(m_proxies)) {
        proxy->setCheckable(true);
        // The store may still be filling: what arrives later is shown, and checked if the
        // permissions read before named it.
        if (ObjectTreeModel *model = proxy->sourceModel()) {
            const auto arrived = [this, proxy] {
                if (proxy == m_currentProxy)
                    m_viewNeedsSettle = true;
                scheduleSettle();
            };
            connect(model, &QAbstractItemModel::rowsInserted, this, arrived);
            connect(model, &QAbstractItemModel::modelReset, this, arrived);
        }
    }

    connect(selector, QOverload<int>::of(&QComboBox::activated), this,
            &UserPermissions::setCurrentModel);
    selector->setCurrentIndex(0);
    setCurrentModel(0);

    connect(view, &QAbstractItemView::clicked, this, &UserPermissions::dataEdited);
    connect(m_ui->tbCheckAll, &QToolButton::clicked, this, &UserPermissions::checkAll);
    connect(m_ui->tbUncheckAll, &QToolButton::clicked, this, &UserPermissions::uncheckAll);

    m_ui->infoMessage->hide();
}

UserPermissions::~UserPermissions() = default;

void UserPermissions::getChildUids(ObjectTreeModel *model, unsigned int uid,
                                   QSet<unsigned int> &result)
{
    if (!model)
        return;
    const QModelIndex parent = model->indexForUid(uid);
    if (uid != 0 && !parent.isValid())
        return;
    const int rows = model->rowCount(parent);
    for (int row = 0; row < rows; ++row) {
        const unsigned int child = model->index(row, 0, parent).data().toUInt();
        result.insert(child);
        getChildUids(model, child, result);
    }
}

void UserPermissions::setCurrent(zeral::ObjectInfo info)
{
    m_current = std::move(info);
    const bool own = isOperator();
    m_ui->infoMessage->setVisible(own);
    m_ui->objectView->setEnabled(!own);
    m_ui->tbCheckAll->setEnabled(!own);
    m_ui->tbUncheckAll->setEnabled(!own);
    updatePermissionsEnabled();
}

void UserPermissions::setPermissions(QList<zeral::OBJECT_PERMISSION> permissions)
{
    m_permissions = std::move(permissions);
    QSet<TYPE_ID> objects;
    objects.reserve(m_permissions.size());
    for (const zeral::OBJECT_PERMISSION &permission : qAsConst(m_permissions))
        objects.insert(permission.object);

    // The stored set as it is: checking a department here must not grant what lies below it.
    for (ObjectTreeProxy *proxy : qAsConst(m_proxies)) {
        proxy->setAutoCheckChildren(false);
        proxy->uncheckAll();
        proxy->setChecked(objects);
        proxy->setAutoCheckChildren(true);
    }

    // What no tree holds yet is checked when the store brings it.
    m_pending.clear();
    for (TYPE_ID uid : qAsConst(objects)) {
        const bool known = std::any_of(m_proxies.cbegin(), m_proxies.cend(), [uid](auto proxy) {
            return proxy->sourceModel() && proxy->sourceModel()->contains(uid);
        });
        if (!known)
            m_pending.insert(uid);
    }
}

void UserPermissions::setRoleTemplates(zeral::ROLETEMPLATES_HASH templs)
{
    m_roleTemplates = std::move(templs);
    updatePermissionsEnabled();
}

void UserPermissions::applyChanges()
{
    QSet<TYPE_ID> uids;
    for (const ObjectTreeProxy *proxy : qAsConst(m_proxies))
        uids.unite(proxy->checked());
    // Unchecking everything is no way of taking all permissions away: nothing is sent.
    if (uids.isEmpty())
        return;

    zeral::TaskInfo task;
    task.uid = m_current.uid;
    task.type = QStringLiteral("update_permissions");
    task.receiver = this;
    task.method = QStringLiteral("saved");
    const QString name = ZRGlobals::objectName(m_current);
    task.startMessage = tr("Сохранение полномочий пользователя %1").arg(name);
    task.errorMessage = tr("Ошибка сохранения полномочий пользователя %1").arg(name);

    // Hidden reports are never in the tree; they go with the set of the reports tree.
    if (m_ui->cbDatatype->currentData(ItemRoles::SelectorData).toString() == ReportData) {
        const auto &reports = zeral::LocalStorage::instance()->constObjects(ReportData);
        for (auto it = reports.cbegin(); it != reports.cend(); ++it) {
            if (it.value().parameters.value(HiddenKey) == TrueText)
                uids.insert(it.value().uid);
        }
    }

    UserTaskData::putPermissionObjects(&task, uids);
    emit appendTask(task);
}

// The dialog that holds the editor tells the outcome; the editor keeps its checks either way.
void UserPermissions::saved(zeral::TYPE_ID) {}

void UserPermissions::setDatatype(QString datatype)
{
    const int row = m_ui->cbDatatype->findData(datatype, ItemRoles::SelectorData);
    if (row < 0) {
        qCWarning(ucc()) << "unknown datatype" << datatype;
        return;
    }
    m_ui->cbDatatype->setCurrentIndex(row);
    setCurrentModel(row);
}

QString UserPermissions::getCurrentDatatype()
{
    return m_ui->cbDatatype->currentText();
}

void UserPermissions::setObjectTypeSelectorEnabled(bool enabled)
{
    m_ui->cbDatatype->setEnabled(enabled);
}

bool UserPermissions::isObjectTypeSelectoEnabled()
{
    return m_ui->cbDatatype->isEnabled();
}

void UserPermissions::setObjectTypeSelectorVisible(bool visible)
{
    m_ui->cbDatatype->setVisible(visible);
    m_ui->lbDatatype->setVisible(visible);
}

bool UserPermissions::isObjectTypeSelectorVisisble()
{
    return m_ui->cbDatatype->isVisible();
}

void UserPermissions::checkAll()
{
    if (m_currentProxy)
        m_currentProxy->checkAll();
    emit dataEdited();
}

void UserPermissions::uncheckAll()
{
    if (m_currentProxy)
        m_currentProxy->uncheckAll();
    emit dataEdited();
}

void UserPermissions::setCurrentRoleTemplate(QString rt_id)
{
    qCDebug(ucc()) << "role changed" << rt_id;
    m_current.parameters.insert(QString::fromLatin1(db::user::ROLE_TEMPLATE), rt_id);
    updatePermissionsEnabled();
}

void UserPermissions::setCurrentModel(int index)
{
    m_currentProxy = m_proxies.value(index, nullptr);
    if (!m_currentProxy)
        return;
    // A search typed in another tree doesn't follow the operator into this one.
    if (!m_currentProxy->filterText().isEmpty())
        m_currentProxy->clearFilter();
    m_ui->searchWidget->setText(QString());
    m_currentProxy->setSortRole(ItemRoles::SortText);
    m_currentProxy->setSortCaseSensitivity(Qt::CaseInsensitive);

    TreeView *view = m_ui->objectView;
    // The header keeps the root of the tree before; it must not meet the new model's rows.
    view->setRootIndex(QModelIndex());
    view->setModel(m_currentProxy);
    setRootIndex();
    view->setColumnHidden(1, true);
    view->sortByColumn(0, Qt::AscendingOrder);
    view->expandAll();
}

void UserPermissions::search(QString text)
{
    if (m_currentProxy)
        m_currentProxy->setFilter(text);
}

void UserPermissions::updatePermissionsEnabled()
{
    if (isOperator() || m_roleTemplates.isEmpty())
        return;
    const QString templateId
        = m_current.parameters.value(QString::fromLatin1(db::user::ROLE_TEMPLATE));
    // An id the table doesn't hold grants no roles.
    const QList<QString> roles = m_roleTemplates.value(templateId).roles;
    auto *items = qobject_cast<QStandardItemModel *>(m_ui->cbDatatype->model());
    if (!items)
        return;

    for (const GuardedTree &tree : guardedTrees()) {
        const int row = m_ui->cbDatatype->findData(tree.datatype, ItemRoles::SelectorData);
        QStandardItem *item = row >= 0 ? items->item(row) : nullptr;
        if (!item)
            continue;
        const bool enabled
            = std::any_of(roles.cbegin(), roles.cend(), [&tree](const QString &role) {
                  return tree.roles.contains(role, Qt::CaseSensitive);
              });
        item->setFlags(enabled ? item->flags() | Qt::ItemIsEnabled
                               : item->flags() & ~Qt::ItemIsEnabled);
    }

    // Off a tree that the template no longer offers; its checks stay and are still sent.
    const QStandardItem *current = items->item(m_ui->cbDatatype->currentIndex());
    if (current && current->isEnabled())
        return;
    for (int row = 0; row < items->rowCount(); ++row) {
        if (items->item(row)->isEnabled()) {
            m_ui->cbDatatype->setCurrentIndex(row);
            setCurrentModel(row);
            return;
        }
    }
}

void UserPermissions::setRootIndex()
{
    TreeView *view = m_ui->objectView;
    if (!m_currentProxy)
        return;
    if (m_ui->cbDatatype->currentData(ItemRoles::SelectorData).toString() != OrgstructureData) {
        view->setRootIndex(QModelIndex());
        return;
    }
    // The organisation's tree begins below its invisible root.
    const QString rootType = QString::fromLatin1(db::orgstructure::SUBJECTROOT);
    const int rows = m_currentProxy->rowCount();
    for (int row = 0; row < rows; ++row) {
        if (m_currentProxy->index(row, 1).data().toString() != rootType)
            continue;
        const QModelIndex root = m_currentProxy->index(row, 0);
        if (view->rootIndex() != root)
            view->setRootIndex(root);
        return;
    }
}

bool UserPermissions::isOperator() const
{
    return m_current.uid == AuthData::userId();
}

void UserPermissions::scheduleSettle()
{
    if (m_settleScheduled)
        return;
    m_settleScheduled = true;
    QMetaObject::invokeMethod(this, &UserPermissions::settle, Qt::QueuedConnection);
}

void UserPermissions::settle()
{
    m_settleScheduled = false;
    if (!m_pending.isEmpty()) {
        for (ObjectTreeProxy *proxy : qAsConst(m_proxies)) {
            const ObjectTreeModel *model = proxy->sourceModel();
            if (!model)
                continue;
            QSet<TYPE_ID> arrived;
            for (TYPE_ID uid : qAsConst(m_pending)) {
                if (model->contains(uid))
                    arrived.insert(uid);
            }
            if (arrived.isEmpty())
                continue;
            m_pending.subtract(arrived);
            proxy->setAutoCheckChildren(false);
            proxy->setChecked(proxy->checked() | arrived);
            proxy->setAutoCheckChildren(true);
        }
    }
    if (m_viewNeedsSettle) {
        m_viewNeedsSettle = false;
        setRootIndex();
        m_ui->objectView->expandAll();
    }
}
