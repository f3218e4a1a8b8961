#include "mainwindow.h"

#include <app/startup/studiosettings.h>
#include <app/window/loginlocksdialog.h>

#include <host/core/authdata.h>
#include <host/core/maildeliverywatcher.h>
#include <host/core/settings.h>
#include <host/core/zrplugininterface.h>
#include <host/gui/widgets/pluginwidget.h>
#include <shared/rolenames.h>

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLoggingCategory>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTreeWidget>
#include <QVBoxLayout>

Q_LOGGING_CATEGORY(lcWindow, "zr.studio.window")

namespace {
// Where a navigation item points: the screen and the tab (-1: the screen's own row).
constexpr int ScreenRole = Qt::UserRole;
constexpr int TabRole = Qt::UserRole + 1;
} // namespace

MainWindow::MainWindow(ZRServerInterface *server, QWidget *parent)
    : QMainWindow(parent)
    , m_server(server)
    , m_splitter(new QSplitter(this))
    , m_navigation(new QTreeWidget(m_splitter))
    , m_stack(new QStackedWidget)
    , m_notice(new MessageWidget)
    , m_connectionIcon(new QLabel)
    , m_connectionLabel(new QLabel)
    , m_operatorLabel(new QLabel)
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(tr("Студия Zeral"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("object-OT_DATABASE")));

    m_navigation->setObjectName(QStringLiteral("screenNavigation"));
    m_navigation->setHeaderHidden(true);
    m_navigation->setRootIsDecorated(false);
    m_navigation->setIconSize(QSize(24, 24));
    m_navigation->setIndentation(14);
    m_navigation->setFrameShape(QFrame::NoFrame);
    m_navigation->setMinimumWidth(180);
    connect(m_navigation, &QTreeWidget::currentItemChanged, this,
            [this](QTreeWidgetItem *item) { onNavigationChanged(item); });

    m_stack->setObjectName(QStringLiteral("screenStack"));
    m_notice->setObjectName(QStringLiteral("connectionNotice"));
    m_notice->setCloseButtonVisible(false);
    m_notice->setWordWrap(true);
    m_notice->hide();
    auto *right = new QWidget(m_splitter);
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->setSpacing(0);
    rightLayout->addWidget(m_notice);
    rightLayout->addWidget(m_stack);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({220, 1000});
    setCentralWidget(m_splitter);

    m_connectionLabel->setObjectName(QStringLiteral("connectionLabel"));
    m_operatorLabel->setObjectName(QStringLiteral("operatorLabel"));
    statusBar()->addWidget(m_connectionIcon);
    statusBar()->addWidget(m_connectionLabel);
    statusBar()->addPermanentWidget(m_operatorLabel);
    buildMenus();

    // The server tells only the operator who queued a mail what became of it.
    if (server) {
        m_mailDeliveries = new MailDeliveryWatcher(server, this);
        connect(m_mailDeliveries, &MailDeliveryWatcher::deliveryChanged, this,
                &MainWindow::onMailDelivery);
    }

    resize(1280, 800);
    restoreGeometry(Settings::value(QLatin1String(studio::settings::Geometry)).toByteArray());
    m_splitter->restoreState(
        Settings::value(QLatin1String(studio::settings::Navigation)).toByteArray());
}

MainWindow::~MainWindow()
{
    for (const Screen &screen : qAsConst(m_screens)) {
        if (m_server)
            m_server->unregisterPlugin(screen.plugin);
        screen.plugin->uninit();
    }
    for (const Screen &screen : qAsConst(m_screens)) {
        if (screen.root != screen.widget.data())
            delete screen.root;
        delete screen.widget.data();
    }
}

void MainWindow::buildMenus()
{
    QMenu *studioMenu = menuBar()->addMenu(tr("&Студия"));
    QAction *logout = studioMenu->addAction(QIcon::fromTheme(QStringLiteral("action-login")),
                                            tr("Сменить пользователя"));
    logout->setObjectName(QStringLiteral("actionLogout"));
    connect(logout, &QAction::triggered, this, &MainWindow::logoutRequested);
    // The window is made for one operator: what he may do is known now. The server checks it
    // again on every request.
    if (AuthData::roles().contains(QLatin1String(zeral::role::USER_UPDATE))) {
        QAction *locks = studioMenu->addAction(QIcon::fromTheme(QStringLiteral("action-lock")),
                                               tr("Заблокированные входы…"));
        locks->setObjectName(QStringLiteral("actionLoginLocks"));
        connect(locks, &QAction::triggered, this, &MainWindow::showLoginLocks);
    }
    studioMenu->addSeparator();
    QAction *quit = studioMenu->addAction(tr("Выход"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, &MainWindow::close);

    QMenu *settingsMenu = menuBar()->addMenu(tr("&Настройки"));
    QMenu *languageMenu = settingsMenu->addMenu(tr("Язык интерфейса"));
    auto *languages = new QActionGroup(this);
    const QString current = Settings::value(QLatin1String(studio::settings::Language)).toString();
    // Each language is named in itself, so that an operator finds his own in any of them.
    const QList<QPair<QString, QString>> choices
        = {{QStringLiteral("ru_RU"), QStringLiteral("Русский")},
           {QStringLiteral("en_US"), QStringLiteral("English")}};
    for (const auto &choice : choices) {
        QAction *action = languageMenu->addAction(choice.second);
        action->setData(choice.first);
        action->setCheckable(true);
        action->setChecked(current.left(2) == choice.first.left(2));
        languages->addAction(action);
        const QString language = choice.first;
        connect(action, &QAction::triggered, this, [this, language] { chooseLanguage(language); });
    }

    QMenu *helpMenu = menuBar()->addMenu(tr("&Справка"));
    QAction *about = helpMenu->addAction(tr("О студии"));
    connect(about, &QAction::triggered, this, [this] {
        QMessageBox::about(
            this, tr("О студии"),
            tr("<b>Студия Zeral</b> %1<br>Администрирование системы контроля "
               "доступа и учёта рабочего времени.<br>Сервер: %2")
                .arg(QApplication::applicationVersion(),
                     m_server ? QStringLiteral("%1:%2").arg(m_server->host()).arg(m_server->port())
                              : QString()));
    });
}

void MainWindow::showLoginLocks()
{
    auto *dialog = new LoginLocksDialog(m_server.data(), this);
    dialog->setObjectName(QStringLiteral("loginLocksDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void MainWindow::chooseLanguage(const QString &language)
{
    if (Settings::value(QLatin1String(studio::settings::Language)).toString() == language)
        return;
    Settings::setValue(QLatin1String(studio::settings::Language), language);
    QMessageBox::information(this, tr("Язык интерфейса"),
                             tr("Язык интерфейса сменится при следующем запуске студии. Он "
                                "определяет тексты студии и стандартных окон, формат дат и "
                                "язык писем пользователям."));
}

bool MainWindow::installScreen(QObject *instance, QString *error)
{
    auto *plugin = qobject_cast<ZRPluginInterface *>(instance);
    auto *widget = plugin ? qobject_cast<PluginWidget *>(plugin->widget()) : nullptr;
    if (!plugin || !widget) {
        if (error)
            *error = tr("Модуль %1 не является экраном студии и пропущен.")
                         .arg(instance->metaObject()->className());
        delete instance;
        return false;
    }
    const QList<CommandType> types = plugin->init(m_server, plugin->pluginName());
    m_server->registerPlugin(plugin, types);
    if (!widget->canShow()) {
        qCInfo(lcWindow) << "screen" << plugin->pluginName() << "is not for this operator";
        m_server->unregisterPlugin(plugin);
        plugin->uninit();
        const QPointer<QWidget> guard = widget; // the root object may own its widget
        if (instance != widget)
            delete instance;
        delete guard.data();
        return false;
    }
    widget->setWindowFlags(Qt::Widget);
    m_stack->addWidget(widget);
    m_screens.append({plugin, widget, instance});
    widget->insertedToInterface();
    addNavigation(m_screens.size() - 1);
    qCInfo(lcWindow) << "screen" << plugin->pluginName() << "placed";
    return true;
}

void MainWindow::addNavigation(int screenIndex)
{
    PluginWidget *widget = m_screens.at(screenIndex).widget;
    QList<PLUGIN_TAB> tabs;
    const QList<PLUGIN_TAB> all = widget->tabList();
    for (const PLUGIN_TAB &tab : all) {
        if (!tab.hidden)
            tabs.append(tab);
    }
    auto *top = new QTreeWidgetItem(m_navigation);
    top->setData(0, ScreenRole, screenIndex);
    if (tabs.size() <= 1) {
        // A screen of one tab is one row.
        const PLUGIN_TAB tab = tabs.value(0);
        top->setText(0, tab.name.isEmpty() ? widget->windowTitle() : tab.name);
        top->setIcon(0, tab.icon.isNull() ? widget->windowIcon() : tab.icon);
        top->setData(0, TabRole, tab.index);
        return;
    }
    top->setText(0, widget->windowTitle());
    top->setIcon(0, widget->windowIcon());
    top->setData(0, TabRole, -1);
    QFont bold = top->font(0);
    bold.setBold(true);
    top->setFont(0, bold);
    for (const PLUGIN_TAB &tab : qAsConst(tabs)) {
        auto *child = new QTreeWidgetItem(top);
        child->setText(0, tab.name);
        child->setIcon(0, tab.icon);
        child->setData(0, ScreenRole, screenIndex);
        child->setData(0, TabRole, tab.index);
    }
    top->setExpanded(true);
}

void MainWindow::onNavigationChanged(QTreeWidgetItem *item)
{
    if (!item)
        return;
    const int screenIndex = item->data(0, ScreenRole).toInt();
    const int tabIndex = item->data(0, TabRole).toInt();
    if (tabIndex >= 0) {
        activate(screenIndex, tabIndex);
        return;
    }
    // The row of a screen with several tabs stands for the tab the screen calls current.
    PluginWidget *widget = m_screens.at(screenIndex).widget;
    int chosen = -1;
    const QList<PLUGIN_TAB> tabs = widget->tabList();
    for (const PLUGIN_TAB &tab : tabs) {
        if (!tab.hidden && (chosen < 0 || tab.current))
            chosen = tab.index;
    }
    if (QTreeWidgetItem *tabItem = navigationItem(screenIndex, chosen))
        m_navigation->setCurrentItem(tabItem);
}

QTreeWidgetItem *MainWindow::navigationItem(int screenIndex, int tabIndex) const
{
    QTreeWidgetItemIterator it(m_navigation);
    for (; *it; ++it) {
        if ((*it)->data(0, ScreenRole).toInt() == screenIndex
            && (*it)->data(0, TabRole).toInt() == tabIndex)
            return *it;
    }
    return nullptr;
}

void MainWindow::activate(int screenIndex, int tabIndex)
{
    if (screenIndex == m_currentScreen && tabIndex == m_currentTab)
        return;
    PluginWidget *widget = m_screens.at(screenIndex).widget;
    if (screenIndex != m_currentScreen) {
        if (PluginWidget *left = currentScreen())
            emit left->deactivate();
        m_stack->setCurrentWidget(widget);
    }
    m_currentScreen = screenIndex;
    m_currentTab = tabIndex;
    qCDebug(lcWindow) << "show" << m_screens.at(screenIndex).plugin->pluginName() << "tab"
                      << tabIndex;
    widget->onTabActivated(tabIndex);
    Settings::setValue(QLatin1String(studio::settings::Screen),
                       m_screens.at(screenIndex).plugin->pluginName());
    Settings::setValue(QLatin1String(studio::settings::Tab), tabIndex);
}

PluginWidget *MainWindow::screen(int index) const
{
    return index >= 0 && index < m_screens.size() ? m_screens.at(index).widget.data() : nullptr;
}

PluginWidget *MainWindow::screenByName(const QString &pluginName) const
{
    for (const Screen &screen : m_screens) {
        if (screen.plugin->pluginName() == pluginName)
            return screen.widget;
    }
    return nullptr;
}

PluginWidget *MainWindow::currentScreen() const
{
    return screen(m_currentScreen);
}

bool MainWindow::showTab(PluginWidget *widget, int tabIndex)
{
    for (int i = 0; i < m_screens.size(); ++i) {
        if (m_screens.at(i).widget != widget)
            continue;
        QTreeWidgetItem *item = navigationItem(i, tabIndex);
        if (!item)
            return false; // hidden, or no such tab
        m_navigation->setCurrentItem(item);
        return true;
    }
    return false;
}

void MainWindow::showLastTab()
{
    const QString name = Settings::value(QLatin1String(studio::settings::Screen)).toString();
    const int tab = Settings::value(QLatin1String(studio::settings::Tab), 0).toInt();
    if (PluginWidget *last = screenByName(name); last && showTab(last, tab))
        return;
    if (QTreeWidgetItem *first = m_navigation->topLevelItem(0))
        m_navigation->setCurrentItem(first);
}

void MainWindow::setOperator(const QString &login, const QString &roleTemplateName)
{
    m_operatorLabel->setText(roleTemplateName.isEmpty()
                                 ? tr("Оператор: %1").arg(login)
                                 : tr("Оператор: %1 (%2)").arg(login, roleTemplateName));
}

void MainWindow::setConnectionState(ZRServerInterface::State state, const QString &server)
{
    QString icon = QStringLiteral("common-offline");
    QString text;
    switch (state) {
    case ZRServerInterface::State::Connected:
        icon = QStringLiteral("common-online");
        text = tr("Подключено к серверу %1").arg(server);
        break;
    case ZRServerInterface::State::Connecting:
        text = tr("Подключение к серверу %1…").arg(server);
        break;
    case ZRServerInterface::State::Reconnecting:
        text = tr("Нет связи с сервером %1, переподключение…").arg(server);
        break;
    case ZRServerInterface::State::Disconnected:
        text = tr("Нет связи с сервером %1").arg(server);
        break;
    }
    m_connectionIcon->setPixmap(QIcon::fromTheme(icon).pixmap(16, 16));
    m_connectionLabel->setText(text);
}

void MainWindow::showNotice(const QString &text, MessageWidget::Icon icon)
{
    m_notice->setText(text);
    m_notice->setMessageIcon(icon);
    m_notice->show();
    m_mailNoticeId = 0;
}

void MainWindow::hideNotice()
{
    m_notice->hide();
    m_mailNoticeId = 0;
}

void MainWindow::onMailDelivery(const zeral::MailDelivery &delivery)
{
    using zeral::MailDelivery;
    const QString reason = delivery.error.isEmpty() ? tr("причина не названа") : delivery.error;
    if (delivery.state == QLatin1String(MailDelivery::Pending)) {
        const QString at
            = delivery.nextAttempt.isValid()
                  ? delivery.nextAttempt.toLocalTime().toString(QStringLiteral("HH:mm"))
                  : tr("позже");
        showNotice(tr("Письмо для %1 пока не доставлено: %2. Сервер повторит отправку в %3.")
                       .arg(delivery.recipient, reason, at),
                   MessageWidget::Warning);
    } else if (delivery.state == QLatin1String(MailDelivery::Failed)) {
        showNotice(tr("Письмо для %1 не доставлено: %2. Сервер больше не будет его отправлять: "
                      "проверьте адрес и почтовый сервер и отправьте письмо снова.")
                       .arg(delivery.recipient, reason),
                   MessageWidget::Critical);
    } else {
        // Delivered at last: the warning about this mail is out of date.
        if (m_mailNoticeId == delivery.id)
            hideNotice();
        return;
    }
    m_mailNoticeId = delivery.id;
}

void MainWindow::saveLayout()
{
    Settings::setValue(QLatin1String(studio::settings::Geometry), saveGeometry());
    Settings::setValue(QLatin1String(studio::settings::Navigation), m_splitter->saveState());
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    saveLayout();
    event->ignore(); // the studio decides what closing means, and deletes the window
    emit quitRequested();
}
