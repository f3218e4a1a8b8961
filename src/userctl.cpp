// UserCtl: construction, the plugin interface, building the screen, its tabs and keys. The
// other parts of the class stand in userctl_*.cpp, one file per concern; what they share is in
// userctl_p.h.

#include "userctl.h"
#include "ui_userctl.h"

#include <src/connectedusersinfowidget.h>
#include <src/connectedusersmodel.h>
#include <src/mobileuserhelper.h>
#include <src/mobileuseritemdelegate.h>
#include <src/rolecontainer.h>
#include <src/userfilterproxymodel.h>
#include <src/userinfowidget.h>
#include <src/userroleinfowidget.h>
#include <src/usersitemdelegate.h>

#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/maildeliverywatcher.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/gui/models/itemroles.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/widgets/hiddenpanel.h>
#include <host/gui/widgets/styleditemdelegate.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/datasets.h>
#include <shared/rolenames.h>

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHostInfo>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QNetworkInterface>
#include <QSortFilterProxyModel>
#include <QTabBar>
#include <QTimer>

#include <algorithm>

namespace {

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
    delete m_data;
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
    m_mailWatcher = new MailDeliveryWatcher(server, this);
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

    m_usersDelegate = new UsersItemDelegate(m_ui->usersList);
    m_usersDelegate->setIconSize(24, 24);
    connect(this, &UserCtl::roleTemplatesRead, m_usersDelegate,
            &UsersItemDelegate::setRoleTemplates);
    m_ui->usersList->setItemDelegate(m_usersDelegate);
    // The full name is drawn from the parameters of column 0, and its own cells change with it.
    m_ui->usersList->setUnpaintedRoles({ItemRoles::Parameters});
    m_mobileUsersDelegate = new MobileUserItemDelegate(m_ui->mobileUsersList);
    m_mobileUsersDelegate->setIconSize(24, 24);
    connect(this, &UserCtl::roleTemplatesRead, m_mobileUsersDelegate,
            &UsersItemDelegate::setRoleTemplates);
    m_ui->mobileUsersList->setItemDelegate(m_mobileUsersDelegate);
    m_ui->mobileUsersList->setUnpaintedRoles({ItemRoles::Parameters});

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

void UserCtl::initUserInfo()
{
    m_userInfo = new UserInfoWidget(m_ui->userInfo);
    m_ui->userInfo->setTitle(tr("Свойства"));
    m_ui->userInfo->setIcon(QIcon::fromTheme(QStringLiteral("object-OT_USER")));
    m_ui->userInfo->hideTitle();
    m_ui->userInfo->addWidget(m_userInfo);
    connect(this, &UserCtl::roleTemplatesRead, m_userInfo, &UserInfoWidget::setRoleTemplates);

    m_userRolesInfo = new UserRoleInfoWidget(m_ui->userRoles);
    m_ui->userRoles->setTitle(tr("Роли доступа"));
    m_ui->userRoles->setIcon(QIcon::fromTheme(QStringLiteral("object-OT_ROLE")));
    m_ui->userRoles->addWidget(m_userRolesInfo);
}

void UserCtl::initMobileUserInfo()
{
    m_mobileUserInfo = new UserInfoWidget(m_ui->mobileUserInfo);
    m_ui->mobileUserInfo->setTitle(tr("Свойства"));
    m_ui->mobileUserInfo->setIcon(QIcon::fromTheme(QStringLiteral("common-mobile")));
    m_ui->mobileUserInfo->addWidget(m_mobileUserInfo);
    connect(this, &UserCtl::roleTemplatesRead, m_mobileUserInfo, &UserInfoWidget::setRoleTemplates);

    m_mobileUserRolesInfo = new UserRoleInfoWidget(m_ui->mobileRoles);
    m_ui->mobileRoles->setTitle(tr("Роли доступа"));
    m_ui->mobileRoles->setIcon(QIcon::fromTheme(QStringLiteral("object-OT_ROLE")));
    m_ui->mobileRoles->addWidget(m_mobileUserRolesInfo);
}

void UserCtl::initConnectedUsersInfoWidget()
{
    m_connectedUserInfo = new ConnectedUsersInfoWidget(m_ui->connectedUserInfo);
    m_connectedUserInfo->setFocusPolicy(Qt::NoFocus);
    m_ui->connectedUserInfo->setTitle(tr("Свойства"));
    m_ui->connectedUserInfo->setIcon(QIcon::fromTheme(QStringLiteral("object-OT_USER")));
    m_ui->connectedUserInfo->hideTitle();
    m_ui->connectedUserInfo->addWidget(m_connectedUserInfo);

    m_connectedUserRolesInfo = new UserRoleInfoWidget(m_ui->connectedUserRoles);
    m_ui->connectedUserRoles->setTitle(tr("Роли доступа"));
    m_ui->connectedUserRoles->setIcon(QIcon::fromTheme(QStringLiteral("object-OT_ROLE")));
    m_ui->connectedUserRoles->addWidget(m_connectedUserRolesInfo);
}

void UserCtl::initModels()
{
    m_data = new zr5sdk::Data(this, AuthData::sessionId());
    initUserModels();
    initMobileUserModels();
    initSessionModels();

    const auto &users
        = zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::USER_DATANAME));
    // In the order of the uids, as the store's snapshot brought them and laid them out in
    // memory: read in the store's hash order, each of 100,000 users is a cache miss.
    QList<zeral::TYPE_ID> uids = users.keys();
    std::sort(uids.begin(), uids.end());
    usersRead(uids);

    for (ZRTableView *table : {m_ui->usersList, m_ui->mobileUsersList}) {
        table->horizontalHeader()->setSortIndicatorShown(true);
        table->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    }
    restoreUsersHeaderState();
    mobileUserSelectionChanged();
}

UserFilterProxyModel *UserCtl::makeUserProxy(ZRTableView *table)
{
    auto *proxy = new UserFilterProxyModel(table);
    proxy->setSourceModel(m_userModel);
    proxy->setReadOnly(true);
    proxy->setRoletemplateFilterEnabled(true);
    proxy->setCurrentUserUid(AuthData::userId());
    proxy->setSortRole(ItemRoles::SortText);
    proxy->setSortCaseSensitivity(Qt::CaseInsensitive);
    proxy->setSearchIndex(QLatin1String(zeral::USER_DATANAME));
    proxy->setSearchEnabled(true);
    return proxy;
}

void UserCtl::initUserModels()
{
    m_userModel = new ObjectTreeModel(m_ui->usersList);
    m_userModel->setColumnCount(6);
    m_userModel->setHorizontalHeaderLabels({tr("Логин"), tr("Тип объекта"), tr("Логин"), tr("ФИО"),
                                            tr("Шаблон ролей"), tr("Состояние")});
    setUserCells();

    m_userProxy = makeUserProxy(m_ui->usersList);
    // Users of the mobile templates have a tab of their own.
    m_userProxy->setFilterByRoleTemplateList(MobileUserHelper::standardMobileRoleTemplates(),
                                             ObjectTreeProxy::MustNotMatch);
    m_ui->usersList->setModel(m_userProxy);
    // Sorted by login while still empty, as initModels() will show it: sorting 100,000 rows
    // again for the indicator would take a tenth of a second.
    m_ui->usersList->sortByColumn(0, Qt::AscendingOrder);
    connect(m_ui->usersList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &UserCtl::userSelectionChanged);
}

void UserCtl::initMobileUserModels()
{
    m_mobileUserProxy = makeUserProxy(m_ui->mobileUsersList);
    // Every account whose template grants the mobile login, except supervisors.
    m_mobileUserProxy->setFilterByRoleTemplateList({QLatin1String(zeral::roletemplate::SUPERVISOR)},
                                                   ObjectTreeProxy::MustNotMatch);
    m_mobileUserProxy->setFilterByRoleList({QLatin1String(zeral::role::MOBILE_LOGIN)},
                                           ObjectTreeProxy::MustMatch);
    m_ui->mobileUsersList->setModel(m_mobileUserProxy);
    m_ui->mobileUsersList->sortByColumn(0, Qt::AscendingOrder);
    connect(m_ui->mobileUsersList->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &UserCtl::mobileUserSelectionChanged);
}

void UserCtl::initSessionModels()
{
    m_connectedUsersModel = new ConnectedUsersModel(m_ui->connectedUsersList);
    m_connectedUsersProxy = new QSortFilterProxyModel(m_ui->connectedUsersList);
    m_connectedUsersProxy->setSourceModel(m_connectedUsersModel);
    m_ui->connectedUsersList->setModel(m_connectedUsersProxy);
    connect(m_ui->connectedUsersList->selectionModel(), &QItemSelectionModel::selectionChanged,
            this, &UserCtl::connectedUserSelectionChanged);
    m_ui->connectedUsersList->hideColumn(6);
    m_ui->connectedUsersList->hideColumn(7);
    // One line per session, drawn like the user tables; so every poll fits the rows to their
    // contents by measuring one row, not each of thousands.
    m_ui->connectedUsersList->setItemDelegate(new StyledItemDelegate(m_ui->connectedUsersList));
    m_ui->connectedUsersList->setUniformRowHeights(true);
}

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
    if (!m_data)
        return; // not placed by the studio yet
    m_stackedToolBars->setCurrentIndex(index);
    setCurrentView(index);
    qCDebug(ucc()) << "activate" << index;
}

void UserCtl::setCurrentView(int index)
{
    if (m_data && index >= 0 && index <= 2)
        m_ui->tabWidget->setCurrentIndex(index);
    activated();
}

void UserCtl::activated()
{
    if (!m_data)
        return; // not placed by the studio yet
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

void UserCtl::applyUserFilter(QString text)
{
    const QWidget *page = m_ui->tabWidget->currentWidget();
    UserFilterProxyModel *users = nullptr;
    if (page == m_ui->tabUsers)
        users = m_userProxy;
    else if (page == m_ui->tabMobileUsers)
        users = m_mobileUserProxy;
    if (users) {
        if (text.isEmpty())
            users->clearFilter();
        else
            users->setFilter(text);
    } else if (page == m_ui->tabConnectedUsers && m_connectedUsersProxy) {
        m_connectedUsersProxy->setFilterFixedString(text);
    }
}
