#include "userctl.h"
#include "ui_userctl.h"

#include <src/rolecontainer.h>

#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/emailmessage.h>
#include <shared/inheritdata.h>

#include <QClipboard>
#include <QDateTime>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHostInfo>
#include <QKeyEvent>
#include <QLocale>
#include <QNetworkInterface>
#include <QTabBar>
#include <QTimer>

namespace {

// Task kinds and the data keys their processors read.
const QString PropertyPrefix = QStringLiteral("property-");
const QString InheritChildPrefix = QStringLiteral("inherit-child-");
const QString InheritParentPrefix = QStringLiteral("inherit-parent-");
const QString ObjectPrefix = QStringLiteral("object-");
// The right every permission task grants on its objects.
constexpr qint32 TaskPermission = 12;

QString dataText(const zeral::TaskInfo &task, const QString &key)
{
    return task.data.value(key).toString();
}

// The object a save or create task describes: type, parent and one parameter per
// "property-" key.
zeral::ObjectInfo objectOfTask(const zeral::TaskInfo &task)
{
    zeral::ObjectInfo object;
    object.uid = task.uid;
    object.type = dataText(task, QStringLiteral("object_type"));
    object.parent = task.data.value(QStringLiteral("parent")).toUInt();
    const QList<QString> keys = task.data.uniqueKeys();
    for (const QString &key : keys) {
        if (key.startsWith(PropertyPrefix)) {
            QString name = key;
            object.parameters.insert(name.remove(PropertyPrefix), task.data.value(key).toString());
        }
    }
    return object;
}

// The permissions of a permission task: one per "object-" key; the value is not read.
QList<zeral::OBJECT_PERMISSION> permissionsOfTask(const zeral::TaskInfo &task)
{
    QList<zeral::OBJECT_PERMISSION> permissions;
    const QList<QString> keys = task.data.uniqueKeys();
    for (const QString &key : keys) {
        if (!key.startsWith(ObjectPrefix))
            continue;
        zeral::OBJECT_PERMISSION permission;
        permission.subject = task.uid;
        permission.object = key.mid(ObjectPrefix.size()).toUInt();
        permission.permission = TaskPermission;
        permissions.append(permission);
    }
    return permissions;
}

bool isKeyPress(const QEvent *event)
{
    return event->type() == QEvent::KeyPress;
}

} // namespace

UserCtl::UserCtl(QWidget *parent)
    : PluginWidget(parent)
    , m_ui(new Ui_UserCtl)
    , m_taskQueue(this)
{
    setWindowIcon(ZRGuiGlobals::objectIcon(QStringLiteral("OT_USER")));
    setWindowTitle(tr("Пользователи"));

    m_taskQueue.handlers.insert(QStringLiteral("save_object"), &UserCtl::processSaveObject);
    m_taskQueue.handlers.insert(QStringLiteral("create_object"), &UserCtl::processCreateObject);
    m_taskQueue.handlers.insert(QStringLiteral("prescribe"), &UserCtl::processPrescribeUser);
    m_taskQueue.handlers.insert(QStringLiteral("delete_object"), &UserCtl::processDeleteObject);
    m_taskQueue.handlers.insert(QStringLiteral("update_permissions"),
                                &UserCtl::processUpdatePermissions);
    m_taskQueue.handlers.insert(QStringLiteral("add_permissions"), &UserCtl::processAddPermissions);
    m_taskQueue.handlers.insert(QStringLiteral("send_email"), &UserCtl::processSendEmail);
    m_taskQueue.handlers.insert(QStringLiteral("save_to_clipboard"),
                                &UserCtl::processSaveToClipboard);

    m_sessionTimer = new QTimer(this);
    m_sessionTimer->setInterval(10000);
    connect(m_sessionTimer, &QTimer::timeout, this, &UserCtl::getSessionsInfo);

    connect(this, &PluginWidget::deactivate, this, &UserCtl::onDeactivate);
}

UserCtl::~UserCtl()
{
    delete m_ui;
}

// --- The plugin interface ------------------------------------------------------------------

QString UserCtl::composeClientId(const QString &plugin, const QString &instance,
                                 QList<QHostAddress> addresses, qint64 secondsSinceEpoch)
{
    addresses.removeOne(QHostAddress(QStringLiteral("127.0.0.1")));
    addresses.removeOne(QHostAddress(QStringLiteral("::1")));
    const QString address
        = addresses.isEmpty() ? QHostInfo::localHostName() : addresses.first().toString();
    return plugin + QLatin1Char(' ') + instance + QLatin1Char(' ') + address + QLatin1Char(' ')
           + QString::number(secondsSinceEpoch);
}

QList<CommandType> UserCtl::init(ZRServerInterface *server, const QString &name)
{
    m_clientId = composeClientId(
        pluginName(), Settings::value(QStringLiteral("userctl/id"), QStringLiteral("1")).toString(),
        QNetworkInterface::allAddresses(), QDateTime::currentSecsSinceEpoch());

    QList<CommandType> types = ZRPluginInterface::init(server, name);
    const auto handle
        = [this, &types](const QString &commandName, void (UserCtl::*member)(Command &)) {
              const CommandType type(zeral::proto::NamedCommand, commandName);
              types.append(type);
              registerCommandHandler(type, handler(member));
          };
    namespace studio = zeral::proto::studio;
    handle(QLatin1String(studio::FingerprintFinishedPrefix) + m_clientId,
           &UserCtl::fingerprintDialogClosedHandler);
    handle(QLatin1String(studio::ShowMobileUserWizards), &UserCtl::showNewMobileUserWizardsHandler);
    handle(QLatin1String(studio::ShowMobileUserProperties),
           &UserCtl::showMobileUserPropertiesHandler);
    return types;
}

void UserCtl::uninit() {}

void UserCtl::initOnExchangeReady() {}

void UserCtl::authentificated(Command &) {}

QString UserCtl::pluginName() const
{
    return QStringLiteral("userctl");
}

int UserCtl::pluginVersion() const
{
    return 1;
}

QString UserCtl::pluginBuild() const
{
    return QStringLiteral("0.1");
}

QWidget *UserCtl::widget()
{
    return this;
}

QObject *UserCtl::object()
{
    return this;
}

ZRPluginInterface::Callback UserCtl::handler(void (UserCtl::*member)(Command &))
{
    return [this, member](Command &command) {
        (this->*member)(command);
    };
}

// --- Building the screen -------------------------------------------------------------------

bool UserCtl::canShow()
{
    return userctl::RoleContainer::canShow();
}

void UserCtl::insertedToInterface()
{
    qCDebug(ucc()) << "inserted";
    // Each step uses what the one before made.
    initTimers();
    initWidgetContents();
    initUserInfo();
    initMobileUserInfo();
    initConnectedUsersInfoWidget();
    initPluginActions();
    initModels();
    sendGetRoletemplates();
}

void UserCtl::initTimers()
{
    m_userInfoTimer = new QTimer(this);
    m_userInfoTimer->setInterval(250);
    m_userInfoTimer->setSingleShot(true);
    connect(m_userInfoTimer, &QTimer::timeout, this, &UserCtl::updateUserInfo);

    m_connectedUserInfoTimer = new QTimer(this);
    m_connectedUserInfoTimer->setInterval(100);
    m_connectedUserInfoTimer->setSingleShot(true);
    connect(m_connectedUserInfoTimer, &QTimer::timeout, this,
            &UserCtl::updateConnectedUsersInfoWidget);
}

void UserCtl::initWidgetContents()
{
    m_ui->setupUi(this);

    connect(m_ui->actionAddUser, &QAction::triggered, this, &UserCtl::addButtonClicked);
    connect(m_ui->actionRemove, &QAction::triggered, this, [this] { removeButtonClicked(); });
    connect(m_ui->actionFingerptint, &QAction::triggered, this, &UserCtl::fingerprintButtonClicked);
    connect(m_ui->actionProperties, &QAction::triggered, this, &UserCtl::showUserProperties);
    connect(m_ui->actionBlockChange, &QAction::triggered, this, &UserCtl::userBlockChange);
    m_ui->actionBlockChange->setEnabled(false);
    connect(m_ui->usersList, &QAbstractItemView::doubleClicked, this, &UserCtl::showUserProperties);

    m_ui->actionAddUser->setEnabled(userctl::RoleContainer::canCreateUser());

    connect(m_ui->actionAddMobileUser, &QAction::triggered, this, &UserCtl::addMobileButtonClicked);
    connect(m_ui->actionPropertiesMobile, &QAction::triggered, this,
            &UserCtl::showMobileUserProperties);
    connect(m_ui->actionBlockMobileChange, &QAction::triggered, this,
            &UserCtl::mobileUserBlockChange);
    connect(m_ui->actionRemoveMobile, &QAction::triggered, this,
            &UserCtl::removeMobileButtonClicked);
    connect(m_ui->mobileUsersList, &QAbstractItemView::doubleClicked, this,
            &UserCtl::showMobileUserProperties);
    connect(m_ui->actionDisconnect, &QAction::triggered, this, &UserCtl::disconnectUser);
    m_ui->actionDisconnect->setEnabled(false);
    connect(m_ui->actionRefresh, &QAction::triggered, this, &UserCtl::getSessionsInfo);

    zeral::LocalStorage *storage = zeral::LocalStorage::instance();
    connect(storage, &zeral::LocalStorage::dataChanged, this, &UserCtl::dataChanged);
    connect(storage, &zeral::LocalStorage::dataRemoved, this, &UserCtl::dataRemoved);
    connect(m_ui->usersList, &ZRTableView::headerStateChanged, this,
            &UserCtl::saveUsersHeaderState);

    m_ui->usersList->installEventFilter(this);
    m_ui->mobileUsersList->installEventFilter(this);
    m_ui->connectedUsersList->installEventFilter(this);
}

void UserCtl::initPluginActions()
{
    // The studio lists the tabs at its side and switches them through onTabActivated().
    m_ui->tabWidget->tabBar()->hide();
    m_ui->tabWidget->setStyleSheet(
        QStringLiteral("QTabWidget {   border: 1px none %1;}"
                       "QTabWidget QStackedWidget {   background: %1;   border: 1px none %1;}")
            .arg(m_ui->tabWidget->palette().color(QPalette::Window).name()));

    using Helper = ZRActionsInsertHelper;
    const std::vector<Helper::Page> pages = {
        {{m_ui->actionAddUser},
         {m_ui->actionFingerptint, m_ui->actionProperties, m_ui->actionBlockChange,
          m_ui->actionRemove}},
        {{m_ui->actionAddMobileUser},
         {m_ui->actionPropertiesMobile, m_ui->actionBlockMobileChange, m_ui->actionRemoveMobile}},
        {{m_ui->actionDisconnect, m_ui->actionRefresh}},
    };

    m_toolbarBox = new QWidget(this);
    auto *boxLayout = new QHBoxLayout(m_toolbarBox);
    boxLayout->setSpacing(0);
    boxLayout->setContentsMargins(0, 0, 0, 0);

    m_stackedToolBars = new ZRStackedToolBars(m_toolbarBox);
    Helper::fillStackedWidget(m_stackedToolBars, pages);
    boxLayout->addWidget(m_stackedToolBars);

    m_search = new SearchWidget(m_toolbarBox);
    m_search->setMaximumWidth(400);
    m_search->setPlaceholderText(tr("Фильтр по логину пользователя"));
    m_search->showAdvancedButton(false);
    connect(m_search, &SearchWidget::startSearch, this, &UserCtl::applyUserFilter);
    boxLayout->addWidget(m_search);

    m_ui->toolBar->addWidget(m_toolbarBox);
}

void UserCtl::initUserInfo() {}

void UserCtl::initMobileUserInfo() {}

void UserCtl::initConnectedUsersInfoWidget() {}

void UserCtl::initModels()
{
    m_data = new zr5sdk::Data(this, AuthData::sessionId());
}

void UserCtl::sendGetRoletemplates() {}

void UserCtl::updateUserInfoLazy()
{
    m_userInfoTimer->start();
}

void UserCtl::updateUserInfo() {}

void UserCtl::updateConnectedUsersInfoWidgetLazy()
{
    if (m_connectedUserInfoTimer && !m_connectedUserInfoTimer->isActive())
        m_connectedUserInfoTimer->start();
}

void UserCtl::updateConnectedUsersInfoWidget() {}

// --- Tabs and keys -------------------------------------------------------------------------

QList<PLUGIN_TAB> UserCtl::tabList()
{
    const int current = m_stackedToolBars ? m_stackedToolBars->currentIndex() : -1;
    const auto tab = [current](const QString &name, const char *icon, int index, bool hidden) {
        PLUGIN_TAB entry;
        entry.name = name;
        entry.icon = QIcon::fromTheme(QLatin1String(icon));
        entry.index = index;
        entry.current = index == current;
        entry.hidden = hidden;
        return entry;
    };
    return {
        tab(tr("Пользователи"), "userctl", 0, false),
        tab(tr("Мобильные пользователи"), "common-mobile", 1,
            !userctl::RoleContainer::canShowMobile()),
        tab(tr("Активные сессии"), "action-login", 2, !userctl::RoleContainer::canShowOnline()),
    };
}

void UserCtl::onTabActivated(int index)
{
    m_stackedToolBars->setCurrentIndex(index);
    setCurrentView(index);
    qCDebug(ucc()) << "activate" << index;
}

void UserCtl::setCurrentView(int index)
{
    if (index >= 0 && index <= 2)
        m_ui->tabWidget->setCurrentIndex(index);
    activated();
}

void UserCtl::activated()
{
    const int page = m_ui->tabWidget->currentIndex();
    qCDebug(ucc()) << "activated" << page;
    // Sessions are polled only while their page is in view.
    if (page == 2)
        m_sessionTimer->start();
    else
        m_sessionTimer->stop();
    applyUserFilter(m_search->text());
    sendGetRoletemplates();
}

void UserCtl::onDeactivate()
{
    m_sessionTimer->stop();
}

bool UserCtl::eventFilter(QObject *watched, QEvent *event)
{
    if (!isKeyPress(event))
        return QObject::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (watched == m_ui->usersList) {
        if (key == Qt::Key_Insert)
            addButtonClicked();
        else if (enter)
            showUserProperties();
        else if (key == Qt::Key_Delete)
            removeButtonClicked({});
        else
            return QObject::eventFilter(watched, event);
        return true;
    }
    if (watched == m_ui->mobileUsersList) {
        if (key == Qt::Key_Insert)
            addMobileButtonClicked();
        else if (enter)
            showMobileUserProperties();
        else if (key == Qt::Key_Delete)
            removeMobileButtonClicked();
        else
            return QObject::eventFilter(watched, event);
        return true;
    }
    if (watched == m_ui->connectedUsersList) {
        if (key == Qt::Key_Delete)
            disconnectUser();
        else if (key == Qt::Key_F5)
            getSessionsInfo();
        else
            return QObject::eventFilter(watched, event);
        return true;
    }
    return QObject::eventFilter(watched, event);
}

// --- The task queue ------------------------------------------------------------------------

void UserCtl::addTask(zeral::TaskInfo task)
{
    m_taskQueue.tasks.append(task);
    // A running task's result handler starts the next one.
    if (m_taskQueue.tasks.size() >= 2 || m_taskQueue.paused)
        return;
    announceStarted(m_taskQueue.processNext());
}

void UserCtl::processNextTask()
{
    announceStarted(m_taskQueue.processNext());
}

void UserCtl::announceStarted(const zeral::TaskInfo &started)
{
    if (!started.type.isEmpty())
        emit showMessage(tr("%1").arg(m_taskQueue.current().startMessage));
}

void UserCtl::notifyReceiver(const zeral::TaskInfo &task, zeral::TYPE_ID uid)
{
    if (!task.receiver || task.method.isEmpty())
        return;
    QMetaObject::invokeMethod(task.receiver, task.method.toLatin1().constData(),
                              Qt::QueuedConnection, Q_ARG(zeral::TYPE_ID, uid));
}

bool UserCtl::processSaveObject(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    m_data->updateObject(objectOfTask(task), handler(&UserCtl::objectSavedHandler));
    return true;
}

bool UserCtl::processCreateObject(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    zeral::ObjectInfo object = objectOfTask(task);
    object.uid = 0;
    QList<zeral::_INHERIT_DATA> links;
    const QList<QString> keys = task.data.uniqueKeys();
    for (const QString &key : keys) {
        zeral::_INHERIT_DATA link;
        if (key.startsWith(InheritChildPrefix)) {
            link.child = task.data.value(key).toUInt();
            link.linkType = key.mid(InheritChildPrefix.size()).toUInt();
        } else if (key.startsWith(InheritParentPrefix)) {
            link.parent = task.data.value(key).toUInt();
            link.linkType = key.mid(InheritParentPrefix.size()).toUInt();
        } else {
            continue;
        }
        links.append(link);
    }
    m_data->addObject(object, links, handler(&UserCtl::objectCreatedHandler));
    return true;
}

bool UserCtl::processPrescribeUser(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    m_data->roleTemplatePrescribeUser(task.uid, dataText(task, QStringLiteral("PT_ROLETEMPLATE")),
                                      handler(&UserCtl::prescribeUserHandler));
    return true;
}

bool UserCtl::processDeleteObject(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    zeral::ObjectInfo object;
    object.uid = task.uid;
    object.type = dataText(task, QStringLiteral("object_type"));
    m_data->removeObject(object, handler(&UserCtl::deleteObjectHandler));
    return true;
}

bool UserCtl::processUpdatePermissions(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    m_data->updatePermissions(task.uid, permissionsOfTask(task),
                              handler(&UserCtl::updatePermissionsHandler));
    return true;
}

bool UserCtl::processAddPermissions(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    m_data->addPermissions(permissionsOfTask(task), handler(&UserCtl::updatePermissionsHandler));
    return true;
}

bool UserCtl::processSendEmail(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    const QString language
        = Settings::value(QStringLiteral("mainwindow/language"), QLocale().name())
              .toString()
              .left(2);
    zeral::_EMAIL_MESSAGE message;
    message.to = dataText(task, QStringLiteral("addr_to"));
    message.subject = tr("Zeral-Desk v6 Mobile");
    message.parameters.insert(QLatin1String(zeral::email::LOCALE), language);
    message.parameters.insert(QLatin1String(zeral::email::IS_MOBILE_TOKEN), true);
    message.parameters.insert(QLatin1String(zeral::email::GREETINGS),
                              task.data.value(QStringLiteral("greetings")));
    message.parameters.insert(QLatin1String(zeral::email::TOKEN),
                              dataText(task, QStringLiteral("auth_data")));

    Command command = newCommand();
    command.name = QLatin1String(zeral::proto::command::SendEmail);
    command.type = zeral::proto::NamedCommand;
    ZRDataStream out(&command.data, QIODevice::WriteOnly);
    out << message << AuthData::user();
    sendQuery(command, handler(&UserCtl::sendEmailHandler));
    return true;
}

bool UserCtl::processSaveToClipboard(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << task.data;
    QGuiApplication::clipboard()->setText(dataText(task, QStringLiteral("text")),
                                          QClipboard::Clipboard);
    // Later, so that the task is set up as the running one like any other first.
    QMetaObject::invokeMethod(this, "saveClipboardHandler", Qt::QueuedConnection);
    return true;
}

void UserCtl::objectSavedHandler(Command &command)
{
    if (m_taskQueue.tasks.isEmpty())
        return;
    const zeral::TaskInfo t = m_taskQueue.current();
    m_taskQueue.processed();
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
        qCDebug(ucc()) << "object saved" << t.uid;
    } else {
        qCWarning(ucc()) << "fail save object" << t.uid << command.status;
        notifyReceiver(t, 0);
        m_taskQueue.removeTasks(t);
        emit showMessage(t.errorMessage);
    }
    processNextTask();
}

void UserCtl::objectCreatedHandler(Command &command)
{
    if (m_taskQueue.tasks.isEmpty())
        return;
    const zeral::TaskInfo t = m_taskQueue.current();
    m_taskQueue.processed();
    if (command.status == zeral::proto::StatusOk) {
        qint32 uid = 0;
        ZRDataStream in(command.data);
        in >> uid;
        m_templateWatchUids.append(zeral::TYPE_ID(uid));
        notifyReceiver(t, zeral::TYPE_ID(uid));
        qCDebug(ucc()) << "object created" << uid;
    } else {
        qCWarning(ucc()) << "fail create object" << command.status;
        notifyReceiver(t, 0);
        m_taskQueue.removeTasks(t);
        emit showMessage(t.errorMessage);
    }
    processNextTask();
}

void UserCtl::prescribeUserHandler(Command &command)
{
    if (m_taskQueue.tasks.isEmpty())
        return;
    const zeral::TaskInfo t = m_taskQueue.current();
    m_taskQueue.processed();
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
        qCDebug(ucc()) << "user prescribed" << t.uid;
    } else {
        qCWarning(ucc()) << "fail prescribe user" << t.uid << command.status;
        notifyReceiver(t, 0);
        m_taskQueue.removeTasks(t);
        emit showMessage(t.errorMessage);
    }
    processNextTask();
}

void UserCtl::deleteObjectHandler(Command &command)
{
    if (m_taskQueue.tasks.isEmpty())
        return;
    const zeral::TaskInfo t = m_taskQueue.current();
    m_taskQueue.processed();
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
    } else {
        qCWarning(ucc()) << "fail delete object" << t.uid << command.status;
        m_taskQueue.removeTasks(t);
        notifyReceiver(t, 0);
    }
    processNextTask();
}

void UserCtl::sendEmailHandler(Command &command)
{
    if (m_taskQueue.tasks.isEmpty())
        return;
    const zeral::TaskInfo t = m_taskQueue.current();
    m_taskQueue.processed();
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
        qCDebug(ucc()) << "email sent" << t.uid;
    } else {
        qCWarning(ucc()) << "fail send email" << command.status;
        notifyReceiver(t, 0);
        m_taskQueue.removeTasks(t);
    }
    processNextTask();
}

void UserCtl::updatePermissionsHandler(Command &command)
{
    if (m_taskQueue.tasks.isEmpty())
        return;
    const zeral::TaskInfo t = m_taskQueue.current();
    m_taskQueue.processed();
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
    } else {
        qCWarning(ucc()) << "fail update permissions" << t.uid << command.status;
        m_taskQueue.removeTasks(t);
        notifyReceiver(t, 0);
    }
    // The open dialog gets the rights as the server has them now, whatever happened.
    m_data->getPermissions({t.uid}, handler(&UserCtl::getPermissionsHandler));
    processNextTask();
}

void UserCtl::saveClipboardHandler()
{
    qCDebug(ucc()) << "save clipboard, queue empty:"
                   << (m_taskQueue.tasks.isEmpty() ? "true" : "false");
    if (m_taskQueue.tasks.isEmpty())
        return;
    const zeral::TaskInfo t = m_taskQueue.current();
    m_taskQueue.processed();
    notifyReceiver(t, t.uid);
    qCDebug(ucc()) << "text saved to clipboard" << t.uid;
    processNextTask();
}

void UserCtl::getPermissionsHandler(Command &command)
{
    QList<zeral::OBJECT_PERMISSION> permissions;
    if (command.status == zeral::proto::StatusOk) {
        ZRDataStream in(command.data);
        in >> permissions;
    }
    emit permissionsRead(permissions);
}

void UserCtl::emptyHandler(Command &command)
{
    qCDebug(ucc())
        << QStringLiteral("cmd error object:%1 status:%2").arg(command.name).arg(command.status);
}

// --- Parts of the screen that come with the lists, the dialogs and the sessions -------------

void UserCtl::showNewMobileUserWizardsHandler(Command &) {}

void UserCtl::showMobileUserPropertiesHandler(Command &) {}

void UserCtl::fingerprintDialogClosedHandler(Command &command)
{
    command.status = zeral::proto::StatusOk;
}

void UserCtl::verifyEdit() {}

void UserCtl::dataChanged(QString, QList<zeral::TYPE_ID>) {}

void UserCtl::dataRemoved(QString, QList<zeral::TYPE_ID>) {}

void UserCtl::addButtonClicked() {}

void UserCtl::userEditFinished() {}

void UserCtl::removeButtonClicked(QList<zeral::TYPE_ID>) {}

void UserCtl::fingerprintButtonClicked() {}

void UserCtl::showUserProperties() {}

void UserCtl::userBlockChange() {}

void UserCtl::mobileUserBlockChange() {}

void UserCtl::changeUserBlockState(zeral::OBJECT_UID_SET, zeral::OBJECT_UID_SET) {}

void UserCtl::userBlockChangeResult(zeral::TYPE_ID) {}

void UserCtl::userSelectionChanged() {}

void UserCtl::mobileUserSelectionChanged() {}

void UserCtl::connectedUserSelectionChanged() {}

void UserCtl::cancelChanged() {}

void UserCtl::addMobileButtonClicked() {}

void UserCtl::showMobileUserProperties() {}

void UserCtl::removeMobileButtonClicked() {}

void UserCtl::disconnectUser() {}

void UserCtl::getUserTemplatesForCreateUser() {}

void UserCtl::getUserTemplatesForDeleteUser() {}

void UserCtl::getSessionsInfo() {}

void UserCtl::saveUsersHeaderState(QByteArray) {}

void UserCtl::restoreUsersHeaderState() {}

void UserCtl::applyUserFilter(QString) {}
