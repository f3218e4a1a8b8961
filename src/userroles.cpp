#include "userroles.h"
#include "ui_userroles.h"

#include <src/mobileuserhelper.h>
#include <src/rolecontainer.h>
#include <src/roletemplatechoices.h>
#include <src/usertaskdata.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/zrglobals.h>
#include <host/gui/models/fastproxymodel.h>
#include <host/gui/models/fasttreemodel.h>
#include <host/gui/widgets/styleditemdelegate.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QSignalBlocker>
#include <QVector>

namespace {
// The role of the roles tree that keeps the catalogue's own order.
constexpr int RoleOrderSortRole = 259;
} // namespace

UserRoles::UserRoles(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::UserRoles>())
    , m_rolesModel(zeral::LocalStorage::instance()->rolesModel())
{
    m_ui->setupUi(this);

    TreeView *view = m_ui->roleView;
    m_proxy = new FastProxyModel(view);
    if (m_rolesModel)
        m_proxy->setSourceModel(m_rolesModel);
    m_proxy->setCheckable(true);
    // The tree only shows what a template grants; the template is what the operator changes.
    m_proxy->setDisabledAll(true);
    m_proxy->setReadOnly(true);
    m_proxy->setSortRole(RoleOrderSortRole);
    m_proxy->setPartiallyCheckEnabled(true);

    view->setModel(m_proxy);
    view->setColumnHidden(1, true);
    view->expandAll();
    view->sortByColumn(0, Qt::AscendingOrder);
    view->setItemDelegate(new StyledItemDelegate(view));
    // A catalogue that comes after the editor (the store still loading, or read anew) resets
    // the tree; the granted roles stay checked by key and are shown expanded again.
    connect(m_proxy, &QAbstractItemModel::modelReset, view, &QTreeView::expandAll);
    connect(m_proxy, &QAbstractItemModel::rowsInserted, view, &QTreeView::expandAll);

    m_ui->infoMessage->hide();
    m_ui->errorMessage->hide();

    connect(m_ui->roleTemplateSelector, &ZRComboBox::currentDataChanged, this,
            &UserRoles::roleTemplateChanged);
    connect(m_ui->roleTemplateSelector, qOverload<int>(&QComboBox::activated), this,
            &UserRoles::dataEdited);
}

UserRoles::~UserRoles() = default;

void UserRoles::setMobileRolesAvailable(bool available)
{
    m_mobileRolesAvailable = available;
}

void UserRoles::setDesktopRolesAvalable(bool available)
{
    m_desktopRolesAvailable = available;
}

bool UserRoles::isMobileRole(const QString &id) const
{
    return MobileUserHelper::standardMobileRoleTemplates().contains(id, Qt::CaseSensitive)
           || id.startsWith(QLatin1String("RT_MOBILE"), Qt::CaseSensitive);
}

bool UserRoles::isDesktopRole(const QString &id) const
{
    return !isMobileRole(id);
}

void UserRoles::setCurrent(const zeral::ObjectInfo &info)
{
    // A failed save hands the stored user back to put the selector back.
    if (&info != &m_current)
        m_current = info;

    const bool self = editsSelf();
    const bool mayLink = userctl::RoleContainer::canRoleLinkUser();
    m_ui->roleTemplateSelector->setEnabled(!self && mayLink);
    m_ui->infoMessage->setVisible(self);
    m_ui->errorMessage->setVisible(!mayLink);

    if (m_current.type.isEmpty())
        return;
    // A template that isn't in the list leaves the selector empty rather than showing a
    // template the user doesn't hold; applying then keeps the user's template as it is.
    if (!m_ui->roleTemplateSelector->setCurrentData(presentTemplateId()))
        m_ui->roleTemplateSelector->setCurrentIndex(-1);
}

void UserRoles::setRoleTemplates(const zeral::ROLETEMPLATES_HASH &templs)
{
    m_roleTemplates = templs;
    // Nobody hands out the template he holds himself; on his own card it stays, as his.
    if (!editsSelf())
        m_roleTemplates.remove(AuthData::roletemplateId());

    ZRComboBox *selector = m_ui->roleTemplateSelector;
    const QString remembered = selector->currentData().toString();

    QVector<RoleTemplateChoices::Choice> choices;
    const QString present = presentTemplateId();
    for (auto it = m_roleTemplates.cbegin(); it != m_roleTemplates.cend(); ++it) {
        const QString &id = it.key();
        const bool mobile = isMobileRole(id);
        if (id != present) {
            if (!m_mobileRolesAvailable && mobile)
                continue;
            if (!m_desktopRolesAvailable && !mobile)
                continue;
        }
        choices.append({templateName(id), id});
    }
    // The list goes by name, as the form's insert policy says.
    RoleTemplateChoices::fill(selector, choices);
    {
        // Refilling is no choice of anybody's: the selector speaks once it is filled.
        const QSignalBlocker quiet(selector);
        selector->setCurrentIndex(-1);
    }

    // A remembered choice that the new table no longer holds gives way to the user's own.
    if (!remembered.isEmpty() && selector->setCurrentData(remembered)) {
        showTemplateRoles(remembered);
    } else if (!m_current.type.isEmpty()) {
        const zeral::ObjectInfo &stored = zeral::LocalStorage::instance()->constObject(
            m_current.uid, QLatin1String(zeral::USER_DATANAME));
        // While the store is still loading it may not hold the user yet: then the user we
        // were given is what we know.
        const QString id = stored.type.isEmpty()
                               ? present
                               : stored.parameters.value(QLatin1String(db::user::ROLE_TEMPLATE));
        if (!selector->setCurrentData(id))
            showTemplateRoles(QString());
    } else {
        showTemplateRoles(QString());
    }
}

void UserRoles::applyChanges()
{
    const QString newId = selectedTemplateId();
    const QString oldId = presentTemplateId();
    const bool changed = newId != oldId;

    // Only the template, the one parameter this tab owns. The properties tab of the same
    // dialog saves its changes just before this task runs; the user's other parameters as
    // this tab was given them would put the old login and names back over them.
    zeral::TaskInfo save;
    save.uid = m_current.uid;
    save.type = QStringLiteral("save_object");
    UserTaskData::putChanges(&save, m_current,
                             {{QLatin1String(db::user::ROLE_TEMPLATE), changed ? newId : oldId}});
    save.receiver = this;
    save.method = QStringLiteral("saved");
    const QString name = ZRGlobals::objectName(m_current);
    save.startMessage = tr("Сохранение параметров пользователя %1").arg(name);
    save.errorMessage = tr("Ошибка сохранения параметров пользователя %1").arg(name);
    qCDebug(ucc()) << "roles: save user" << m_current.uid << "template" << oldId << "->" << newId;
    emit appendTask(save);

    if (!changed)
        return;
    // No receiver and no dependency: the queue's order alone puts it behind the save, and a
    // failed save takes it along, being on the same user.
    zeral::TaskInfo prescribe;
    prescribe.uid = m_current.uid;
    prescribe.type = QStringLiteral("prescribe");
    prescribe.data.insert(QLatin1String(db::user::ROLE_TEMPLATE), newId);
    prescribe.startMessage = tr("Изменение параметров пользователя");
    prescribe.errorMessage = tr("Ошибка изменения параметров пользователя");
    emit appendTask(prescribe);
}

void UserRoles::saved(zeral::TYPE_ID uid)
{
    if (uid == 0) {
        setCurrent(m_current);
        emit showMessage(tr("Ошибка сохранения параметров пользователя"));
        return;
    }
    const QString id = selectedTemplateId();
    m_current.parameters.insert(QLatin1String(db::user::ROLE_TEMPLATE), id);
    emit showMessage(tr("Параметры пользователя сохранены"));
    emit roleChanged(id);
}

void UserRoles::roleTemplateChanged()
{
    showTemplateRoles(m_ui->roleTemplateSelector->currentData().toString());
}

void UserRoles::showTemplateRoles(const QString &rt_id)
{
    m_proxy->clearCheckStateFilter();
    // An id the table doesn't hold grants nothing.
    m_proxy->setChecked(m_roleTemplates.value(rt_id).roles);
    m_proxy->setCheckStateFilter({Qt::Checked, Qt::PartiallyChecked});
    m_ui->roleView->expandAll();
}

QString UserRoles::presentTemplateId() const
{
    return m_current.parameters.value(QLatin1String(db::user::ROLE_TEMPLATE));
}

// An empty selector (the user's template is not in the list) chooses nothing, so the user
// keeps the template he has.
QString UserRoles::selectedTemplateId() const
{
    if (m_ui->roleTemplateSelector->currentIndex() < 0)
        return presentTemplateId();
    return m_ui->roleTemplateSelector->currentData().toString();
}

QString UserRoles::templateName(const QString &id) const
{
    const zeral::_ROLETEMPLATE_INFO info = m_roleTemplates.value(id);
    if (info.custom)
        return info.name;
    return RoleTemplateChoices::builtInName(id);
}

bool UserRoles::editsSelf() const
{
    return m_current.uid == AuthData::userId();
}
