// UserCtl, the sessions tab: polled while in view, rebuilt from each answer, and the
// disconnecting of the selected sessions.

#include "userctl.h"

#include "ui_userctl.h"
#include "userctl_p.h"

#include <src/connectedusersinfowidget.h>
#include <src/connectedusersmodel.h>
#include <src/rolecontainer.h>
#include <src/userroleinfowidget.h>

#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/gui/models/fastproxymodel.h>
#include <host/gui/widgets/treeview.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>
#include <shared/sessiontablereader.h>

#include <QDateTime>
#include <QSortFilterProxyModel>
#include <QTimer>

using namespace userctl::detail;

// --- The poll ------------------------------------------------------------------------------

void UserCtl::getSessionsInfo()
{
    m_data->getSessionsInfo(handler(&UserCtl::getSessionsInfoResult));
}

void UserCtl::getSessionsInfoResult(Command &command)
{
    ZRDataStream in(command.data);
    if (command.status != zeral::proto::StatusOk) {
        QString text;
        in >> text;
        qCWarning(ucc()) << "An error has occurred while getting session info:" << text
                         << command.status;
        return;
    }
    QHash<QByteArray, zeral::ConnectedUserInfo> sessions;
    QDateTime serverTime;
    zeral::wire::SessionTableReader::read(in, sessions) >> serverTime;
    if (!serverTime.isValid()) {
        qCDebug(ucc()) << "empty server time, using local time";
        serverTime = QDateTime::currentDateTime();
    }

    ZRTableView *table = m_ui->connectedUsersList;
    const bool nothingSelected = selectedRows(table).isEmpty();
    QVariantMap savedSelection;
    if (selectedRows(table).size() == 1)
        savedSelection
            = table->currentIndex().data(ConnectedUsersModel::SessionIdentityRole).toMap();

    m_connectedUsersModel->clear();
    m_connectedUsersModel->setCurrentServerTime(serverTime);
    const QString undefinedTemplate = tr("Не определено");
    QVector<ConnectedUsersModel::ModelRecord> records;
    records.reserve(sessions.size());
    QHash<QString, QString> templateNames;
    for (const zeral::ConnectedUserInfo &session : qAsConst(sessions)) {
        if (session.ipPort.isEmpty())
            continue;
        ConnectedUsersModel::ModelRecord record;
        static_cast<zeral::ConnectedUserInfo &>(record) = session;
        const SessionUser &user = sessionUser(session.user);
        const QString &templateId = user.templateId;
        if (m_roleTemplates.contains(templateId)) {
            // Named once per template and poll: a translation lookup per session adds up.
            auto name = templateNames.find(templateId);
            if (name == templateNames.end())
                name = templateNames.insert(templateId, roleTemplateName(templateId));
            record.roleTemplate = *name;
        }
        if (record.roleTemplate.isEmpty())
            record.roleTemplate = undefinedTemplate;
        record.category = canDisconnectTemplate(templateId) ? 1 : 4;
        record.userId = user.uid;
        records.append(std::move(record));
    }
    m_connectedUsersModel->addRecords(records);

    if (nothingSelected) {
        connectedUserSelectionChanged();
    } else {
        // A session is recognised across polls by its address and port.
        const QVariant savedAddress = savedSelection.value(QStringLiteral("ipPort"));
        for (int row = 0; row < m_connectedUsersModel->rowCount(); ++row) {
            const QModelIndex index = m_connectedUsersProxy->index(row, 0);
            if (savedSelection.isEmpty())
                break;
            if (index.data(ConnectedUsersModel::SessionIdentityRole)
                    .toMap()
                    .value(QStringLiteral("ipPort"))
                == savedAddress) {
                table->setCurrentIndex(index);
                break;
            }
        }
    }
    table->resizeRowsToContents();
}

const QHash<QString, zeral::TYPE_ID> &UserCtl::userUidsByLogin()
{
    // One pass over the store instead of one per session, and only after the users changed;
    // the first user of a login in the store's order wins.
    if (m_loginUidsValid)
        return m_loginUids;
    QHash<QString, zeral::TYPE_ID> &uids = m_loginUids;
    uids.clear();
    const auto &users
        = zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::USER_DATANAME));
    for (auto it = users.constBegin(); it != users.constEnd(); ++it) {
        const QString login = it.value().parameters.value(QLatin1String(db::user::LOGIN));
        if (!uids.contains(login))
            uids.insert(login, it.key());
    }
    m_loginUidsValid = true;
    return uids;
}

const UserCtl::SessionUser &UserCtl::sessionUser(const QString &login)
{
    auto found = m_sessionUsers.find(login);
    if (found == m_sessionUsers.end()) {
        // The template as canDisconnect reads it, leaving an empty entry for an unknown login.
        const SessionUser user{userUidsByLogin().value(login), m_loginTemplates[login]};
        found = m_sessionUsers.insert(login, user);
    }
    return *found;
}

void UserCtl::forgetLoginIndexes()
{
    m_loginUidsValid = false;
    m_sessionUsers.clear();
}

bool UserCtl::canDisconnect(const QString &login)
{
    return canDisconnectTemplate(m_loginTemplates[login]);
}

bool UserCtl::canDisconnectTemplate(const QString &target) const
{
    namespace templates = zeral::roletemplate;
    const QString operatorTemplate = AuthData::roletemplateId();
    if (operatorTemplate == QLatin1String(templates::SUPERVISOR))
        return true;
    if (operatorTemplate == QLatin1String(templates::ADMINISTRATOR)
        && target != QLatin1String(templates::SUPERVISOR))
        return true;
    if (!userctl::RoleContainer::canRoleDisconnect())
        return false;
    return target != QLatin1String(templates::SUPERVISOR)
           && target != QLatin1String(templates::ADMINISTRATOR);
}

// --- Selection and the side panels ---------------------------------------------------------

void UserCtl::connectedUserSelectionChanged()
{
    // The row's category says whether the session may be cut; the action also needs the right.
    const QModelIndexList categories
        = m_ui->connectedUsersList->selectionModel()
              ? m_ui->connectedUsersList->selectionModel()->selectedRows(6)
              : QModelIndexList();
    m_ui->actionDisconnect->setEnabled(categories.size() == 1
                                       && userctl::RoleContainer::canRoleDisconnect()
                                       && categories.first().data().toInt() == 1);
    setCurrentConnectedUserInfoRoles();
    updateConnectedUsersInfoWidgetLazy();
}

void UserCtl::setCurrentConnectedUserInfoRoles()
{
    const QModelIndexList rows = selectedRows(m_ui->connectedUsersList);
    QString templateId;
    if (rows.size() == 1)
        templateId = m_loginTemplates.value(rows.first().data().toString());
    m_connectedUserRolesInfo->model()->setChecked(m_roleTemplates.value(templateId).roles);
    m_connectedUserRolesInfo->treeView()->expandAll();
}

void UserCtl::updateConnectedUsersInfoWidgetLazy()
{
    if (m_connectedUserInfoTimer && !m_connectedUserInfoTimer->isActive())
        m_connectedUserInfoTimer->start();
}

void UserCtl::updateConnectedUsersInfoWidget()
{
    if (!m_connectedUserInfo)
        return;
    QList<QModelIndex> rows;
    for (const QModelIndex &row : selectedRows(m_ui->connectedUsersList))
        rows.append(m_connectedUsersProxy->mapToSource(row));
    m_connectedUserInfo->setCurrent(rows);
}

// --- Disconnecting -------------------------------------------------------------------------

void UserCtl::disconnectUser()
{
    QList<QByteArray> sessionIds;
    for (const QModelIndex &row : selectedRows(m_ui->connectedUsersList)) {
        const QVariantMap identity = row.data(ConnectedUsersModel::SessionIdentityRole).toMap();
        if (identity.contains(QStringLiteral("sessionId")))
            sessionIds.append(identity.value(QStringLiteral("sessionId")).toByteArray());
    }
    Command command = newCommand();
    command.name = QLatin1String(zeral::proto::command::DisconnectUsers);
    command.type = zeral::proto::NamedCommand;
    command.sessionId = m_data->sessionId();
    ZRDataStream out(&command.data, QIODevice::WriteOnly);
    out << qint32(sessionIds.size());
    for (const QByteArray &id : qAsConst(sessionIds))
        out << id;
    sendQuery(command, handler(&UserCtl::disconnectUserResult));
}

void UserCtl::disconnectUserResult(Command &command)
{
    ZRDataStream in(command.data);
    if (command.status == zeral::proto::StatusOk)
        return;
    QString text;
    in >> text;
    // Whatever the server refused, this is what the operator is told.
    qCWarning(ucc()) << "An error has occurred while getting session info:" << text
                     << command.status;
    showPopupMessage(tr("Вы не можете отключить себя!"), MessageWidget::Icon(0), 0);
}
