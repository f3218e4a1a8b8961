// UserCtl, the user lists: the model follows the store's changes, the role templates come
// with every show, the selection drives the actions and the side panels.

#include "userctl.h"

#include "ui_userctl.h"
#include "userctl_p.h"

#include <src/rolecontainer.h>
#include <src/userfilterproxymodel.h>
#include <src/userinfowidget.h>
#include <src/userroleinfowidget.h>

#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrglobals.h>
#include <host/gui/models/fastproxymodel.h>
#include <host/gui/models/itemroles.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/widgets/treeview.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QCoreApplication>
#include <QHeaderView>
#include <QMetaMethod>
#include <QSet>
#include <QSettings>
#include <QTimer>

using namespace userctl::detail;

namespace {

// The parameters a row of the user lists shows, made into QStrings once: they are looked up
// for each of up to 100,000 users.
struct UserRowKeys
{
    const QString login = QLatin1String(db::user::LOGIN);
    const QString surname = QLatin1String(db::user::SURNAME);
    const QString name = QLatin1String(db::user::NAME);
    const QString patronymic = QLatin1String(db::user::PATRONYMIC);
    const QString roleTemplate = QLatin1String(db::user::ROLE_TEMPLATE);
    const QString passwordExpired = QLatin1String(db::database::PASSWORD_EXPIRED);
    const QString objectState = QLatin1String(db::user::OBJECTSTATE);
};

const UserRowKeys &userRowKeys()
{
    static const UserRowKeys keys;
    return keys;
}

// The pattern "%1 %2 %3", as translated, filled with the three parts of a person's name. As
// written, the pattern is filled by joining the parts, which is what arg() gives for it at a
// fraction of the cost: this is done for each of up to 100,000 users.
QString fillNamePattern(const QString &pattern, const QString &surname, const QString &name,
                        const QString &patronymic)
{
    static const QString asWritten = QStringLiteral("%1 %2 %3");
    if (pattern == asWritten)
        return surname + QLatin1Char(' ') + name + QLatin1Char(' ') + patronymic;
    return pattern.arg(surname, name, patronymic);
}

// Where the operator's layout of the users table's header is kept.
const QString UsersHeaderStateKey = QStringLiteral("userctl/users_header_state");

// "Блокировать" while any of the users is unblocked, "Разблокировать" otherwise.
void setBlockActionState(QAction *action, const QList<zeral::TYPE_ID> &uids)
{
    bool anyUnblocked = false;
    for (const zeral::TYPE_ID uid : uids)
        anyUnblocked = anyUnblocked || !isBlocked(storedUser(uid));
    const QString text = anyUnblocked ? UserCtl::tr("Блокировать") : UserCtl::tr("Разблокировать");
    action->setText(text);
    action->setToolTip(text);
    action->setIcon(QIcon::fromTheme(anyUnblocked ? QStringLiteral("action-lock")
                                                  : QStringLiteral("action-unlock")));
}

// Every section interactive. Setting the mode anew, though it is already set, lays the
// stretched last section out again and repaints the header and the whole table: after every
// change of a user, where only the changed row needs painting.
void makeSectionsInteractive(QHeaderView *header)
{
    if (header->count() == 0) // the mode new sections get
        header->setSectionResizeMode(QHeaderView::Interactive);
    for (int section = 0; section < header->count(); ++section) {
        if (header->sectionResizeMode(section) != QHeaderView::Interactive) {
            header->setSectionResizeMode(QHeaderView::Interactive);
            return;
        }
    }
}

} // namespace

// --- The store's changes -------------------------------------------------------------------

void UserCtl::dataChanged(QString dataname, QList<zeral::TYPE_ID> uids)
{
    if (dataname == QLatin1String(zeral::USER_DATANAME))
        usersRead(uids);
}

void UserCtl::dataRemoved(QString dataname, QList<zeral::TYPE_ID> uids)
{
    if (dataname == QLatin1String(zeral::USER_DATANAME))
        usersRemoved(uids);
}

void UserCtl::usersRead(const QList<zeral::TYPE_ID> &uids)
{
    const UserRowKeys &keys = userRowKeys();
    const auto &users
        = zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::USER_DATANAME));
    const QSet<zeral::TYPE_ID> selected = selectedUserUids();
    bool selectedTouched = false;
    QVector<ObjectTreeModel::Row> rows;
    rows.reserve(uids.size());
    const QString fullNameFormat = tr("%1 %2 %3");
    // Grown once rather than rehashed a dozen times over on the first 100,000 users.
    m_loginTemplates.reserve(m_loginTemplates.size() + uids.size());
    for (const zeral::TYPE_ID uid : uids) {
        const auto found = users.constFind(uid);
        if (found == users.constEnd())
            continue;
        selectedTouched = selectedTouched || selected.contains(uid);
        const zeral::ObjectInfo &user = found.value();
        const auto &parameters = user.parameters;
        ObjectTreeModel::Row row;
        row.object = &user;
        // The other cells are the user's parameters, read when shown (setUserCells); the
        // full name is put together once, as the name column sorts on it.
        row.values
            = {{3, ItemRoles::SortText,
                fillNamePattern(fullNameFormat, parameters.value(keys.surname),
                                parameters.value(keys.name), parameters.value(keys.patronymic))}};
        rows.append(std::move(row));
        m_loginTemplates.insert(parameters.value(keys.login), parameters.value(keys.roleTemplate));
    }
    // New rows come with their cells filled, so that each proxy places them once: row by row,
    // 100,000 users would cost seconds.
    const bool announce = isSignalConnected(QMetaMethod::fromSignal(&UserCtl::userAdded));
    QList<zeral::ObjectInfo> added;
    if (announce) {
        for (const ObjectTreeModel::Row &row : qAsConst(rows))
            added.append(*row.object);
    }
    m_userModel->add(std::move(rows));
    forgetLoginIndexes();
    // Each emission copies the user; nobody listening, nobody to copy for.
    for (const zeral::ObjectInfo &user : qAsConst(added))
        emit userAdded(user);

    m_ui->usersList->setHeaderHiddenByDefaultColumns({1, 2});
    makeSectionsInteractive(m_ui->usersList->horizontalHeader());
    const QHeaderView *header = m_ui->usersList->horizontalHeader();
    if (header->isSortIndicatorShown())
        m_ui->usersList->sortByColumn(header->sortIndicatorSection(), header->sortIndicatorOrder());
    m_ui->mobileUsersList->setHeaderHiddenByDefaultColumns({1, 2});
    makeSectionsInteractive(m_ui->mobileUsersList->horizontalHeader());

    if (selectedTouched) {
        userSelectionChanged();
        mobileUserSelectionChanged();
        connectedUserSelectionChanged();
    }
    // The card is redrawn only for a change of the user it shows.
    if (userInfoShowsOneOf(selected, uids))
        updateUserInfoLazy();
}

void UserCtl::usersRemoved(const QList<zeral::TYPE_ID> &uids)
{
    const QSet<zeral::TYPE_ID> selected = selectedUserUids();
    bool selectedTouched = false;
    for (const zeral::TYPE_ID uid : uids) {
        m_userModel->remove(uid);
        selectedTouched = selectedTouched || selected.contains(uid);
    }
    forgetLoginIndexes();
    if (selectedTouched) {
        userSelectionChanged();
        mobileUserSelectionChanged();
    } else if (userInfoShowsOneOf(selected, uids)) {
        updateUserInfoLazy();
    }
}

// --- Selection and the side panels ---------------------------------------------------------

QSet<zeral::TYPE_ID> UserCtl::selectedUserUids() const
{
    QSet<zeral::TYPE_ID> selected;
    for (const zeral::TYPE_ID uid : selectedUids(m_ui->usersList))
        selected.insert(uid);
    for (const zeral::TYPE_ID uid : selectedUids(m_ui->mobileUsersList))
        selected.insert(uid);
    return selected;
}

bool UserCtl::userInfoShowsOneOf(const QSet<zeral::TYPE_ID> &selected,
                                 const QList<zeral::TYPE_ID> &uids) const
{
    if (!m_userInfo || m_userInfo->uids().size() != 1)
        return false;
    const zeral::TYPE_ID shown = m_userInfo->uids().first();
    return selected.contains(shown) && uids.contains(shown);
}

void UserCtl::userSelectionChanged()
{
    using userctl::RoleContainer;
    const QList<zeral::TYPE_ID> uids = selectedUids(m_ui->usersList);
    const bool one = uids.size() == 1;
    const bool any = !uids.isEmpty();
    m_ui->actionFingerptint->setEnabled(one && RoleContainer::canUpdateUser());
    m_ui->actionRemove->setEnabled(any && RoleContainer::canDeleteUser());
    m_ui->actionProperties->setEnabled(one && RoleContainer::canUpdateUser());
    m_ui->actionBlockChange->setEnabled(any && RoleContainer::canBlockUser());
    setBlockActionState(m_ui->actionBlockChange, uids);
    updateUserInfoLazy();
}

void UserCtl::mobileUserSelectionChanged()
{
    using userctl::RoleContainer;
    const QList<zeral::TYPE_ID> uids = selectedUids(m_ui->mobileUsersList);
    const bool any = !uids.isEmpty();
    m_ui->actionAddMobileUser->setEnabled(RoleContainer::canCreateUser());
    m_ui->actionRemoveMobile->setEnabled(any && RoleContainer::canDeleteUser());
    m_ui->actionPropertiesMobile->setEnabled(uids.size() == 1 && RoleContainer::canUpdateUser());
    m_ui->actionBlockMobileChange->setEnabled(any && RoleContainer::canBlockUser());
    setBlockActionState(m_ui->actionBlockMobileChange, uids);
    updateUserInfoLazy();
}

void UserCtl::updateUserInfoLazy()
{
    m_userInfoTimer->start();
}

void UserCtl::updateUserInfo()
{
    if (!m_userInfo)
        return;
    if (m_ui->usersList->selectionModel())
        m_userInfo->setCurrent(selectedRows(m_ui->usersList));
    if (m_mobileUserInfo && m_ui->mobileUsersList->selectionModel()) {
        m_mobileUserInfo->setCurrent(selectedRows(m_ui->mobileUsersList));
        setCurrentUserInfoRoles();
    }
}

// --- Role templates ------------------------------------------------------------------------

void UserCtl::sendGetRoletemplates()
{
    m_data->roleTemplateInherit(AuthData::roletemplateId(), handler(&UserCtl::roleTemplatesResult));
}

void UserCtl::roleTemplatesResult(Command &command)
{
    ZRDataStream in(command.data);
    if (command.status != zeral::proto::StatusOk) {
        QString text;
        in >> text;
        qCWarning(ucc()) << "Read role templates error" << command.status << text;
        return;
    }
    zeral::ROLETEMPLATES_HASH templates;
    QList<QString> unused;
    bool ownTemplateAllowed = false;
    in >> templates >> unused >> ownTemplateAllowed;
    if (in.status() != QDataStream::Ok) {
        qCWarning(ucc()) << "Read role templates error: unreadable answer";
        return;
    }
    const bool templatesChanged = templates != m_roleTemplates;
    m_roleTemplates = templates;

    QStringList allowed = m_roleTemplates.keys();
    if (!ownTemplateAllowed)
        allowed.removeAll(AuthData::roletemplateId());
    m_userProxy->setRoletemplateFilter(allowed);
    m_mobileUserProxy->setRoletemplateFilter(allowed);
    m_mobileUserProxy->setRoleTemplates(m_roleTemplates);

    // The template column shows the names from this table.
    if (templatesChanged) {
        m_templateNamesByCode.clear();
        m_userModel->announceColumn(4, ItemRoles::SortText);
    }
    emit roleTemplatesRead(m_roleTemplates);

    m_ui->usersList->update();
    setCurrentUserInfoRoles();
    getSessionsInfo();
}

QString UserCtl::roleTemplateName(const QString &id) const
{
    const auto found = m_roleTemplates.constFind(id);
    if (found == m_roleTemplates.constEnd())
        return QString();
    if (found->custom)
        return found->name;
    return QCoreApplication::translate(
        "ZRGlobals", ZRGlobals::roleTemplateNames().value(id).toUtf8().constData());
}

void UserCtl::setUserCells()
{
    const UserRowKeys &keys = userRowKeys();
    const auto parameter = [this](int column, int role, const QString &key) {
        m_userModel->setDerivedCell(column, role, [key](const ObjectTreeModel::Node &user) {
            return QVariant(user.info.parameters.value(key));
        });
    };
    m_userModel->setDerivedCell(2, Qt::EditRole, [](const ObjectTreeModel::Node &user) {
        return QVariant(ZRGlobals::objectName(user.info));
    });
    parameter(3, Qt::EditRole, keys.name);
    parameter(4, Qt::EditRole, keys.roleTemplate);
    parameter(5, Qt::EditRole, keys.passwordExpired);
    parameter(5, ItemRoles::ObjectState, keys.objectState);
    m_userModel->setDerivedCell(4, ItemRoles::SortText, [this](const ObjectTreeModel::Node &user) {
        return QVariant(templateNameOf(user));
    });
}

QString UserCtl::templateNameOf(const ObjectTreeModel::Node &user) const
{
    const QString &key = userRowKeys().roleTemplate;
    const int code = m_userModel->codeOf(user, key);
    if (code < 0)
        return roleTemplateName(user.info.parameters.value(key));
    if (code >= m_templateNamesByCode.size())
        m_templateNamesByCode.resize(code + 1);
    std::optional<QString> &name = m_templateNamesByCode[code];
    if (!name)
        name = roleTemplateName(m_userModel->codeText(code));
    return *name;
}

void UserCtl::setCurrentUserInfoRoles()
{
    QAbstractItemView *table = nullptr;
    UserRoleInfoWidget *panel = nullptr;
    switch (m_ui->tabWidget->currentIndex()) {
    case 0:
        table = m_ui->usersList;
        panel = m_userRolesInfo;
        break;
    case 1:
        table = m_ui->mobileUsersList;
        panel = m_mobileUserRolesInfo;
        break;
    default:
        return;
    }
    const QModelIndexList rows = selectedRows(table);
    QString templateId;
    if (rows.size() == 1) {
        templateId = rows.first()
                         .data(ItemRoles::Parameters)
                         .toHash()
                         .value(QLatin1String(db::user::ROLE_TEMPLATE))
                         .toString();
    }
    if (panel && panel->model()) {
        panel->model()->setChecked(m_roleTemplates.value(templateId).roles);
        panel->treeView()->expandAll();
    }
}

// --- The users table's header --------------------------------------------------------------

void UserCtl::saveUsersHeaderState(QByteArray header_state)
{
    Settings::setValue(UsersHeaderStateKey, header_state);
    Settings::instance()->sync();
}

void UserCtl::restoreUsersHeaderState()
{
    m_ui->usersList->restoreHeaderState(Settings::value(UsersHeaderStateKey).toByteArray());
}
