#include "studiocontroller.h"

#include <app/screens/auditlogscreen.h>
#include <app/screens/employeesscreen.h>
#include <app/screens/fingerprintenrolmentservice.h>
#include <app/startup/embeddedserver.h>
#include <app/startup/logindialog.h>
#include <app/startup/passwordchangedialog.h>
#include <app/startup/rootpassworddialog.h>
#include <app/startup/studiolanguage.h>
#include <app/startup/studiosettings.h>
#include <app/window/mainwindow.h>
#include <app/window/pluginloader.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/localstorageloader.h>
#include <host/core/loginclient.h>
#include <host/core/passhash.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrglobals.h>
#include <host/gui/biometrics/fingerprintreaderfactory.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <server/engine/demo/demoorganisation.h>
#include <shared/datasets.h>

#include <QApplication>
#include <QDialog>
#include <QHostInfo>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QTimer>

Q_LOGGING_CATEGORY(lcStudio, "zr.studio")

namespace {

// How long a notice that all is well again stays above the screen.
constexpr int RecoveredNoticeMs = 8000;
constexpr int RecentServerCount = 5;

QString datasetTitle(const QString &dataname)
{
    static const QHash<QString, const char *> titles = {
        {QString(), QT_TRANSLATE_NOOP("StudioController", "роли")},
        {QLatin1String(zeral::USER_DATANAME),
         QT_TRANSLATE_NOOP("StudioController", "пользователи")},
        {QLatin1String(zeral::SUBJECT_DATANAME),
         QT_TRANSLATE_NOOP("StudioController", "сотрудники")},
        {QLatin1String(zeral::ORGSTRUCTURE_DATANAME),
         QT_TRANSLATE_NOOP("StudioController", "организационная структура")},
        {QLatin1String(zeral::REPORT_DATANAME), QT_TRANSLATE_NOOP("StudioController", "отчёты")},
        {QLatin1String(zeral::PLACING_DATANAME),
         QT_TRANSLATE_NOOP("StudioController", "объекты доступа")},
        {QLatin1String(zeral::MONITORING_DATANAME),
         QT_TRANSLATE_NOOP("StudioController", "настройки мониторинга")},
        {QLatin1String(zeral::POLICY_DATANAME),
         QT_TRANSLATE_NOOP("StudioController", "политики доступа")},
        {QLatin1String(zeral::DB_DATANAME),
         QT_TRANSLATE_NOOP("StudioController", "настройки системы")},
        {QLatin1String(zeral::JOB_DATANAME), QT_TRANSLATE_NOOP("StudioController", "должности")},
    };
    const char *title = titles.value(dataname);
    return title ? QCoreApplication::translate("StudioController", title) : dataname;
}

QString roleTemplateTitle(const QString &id)
{
    const QString source = ZRGlobals::roleTemplateNames().value(id);
    return source.isEmpty() ? id
                            : QCoreApplication::translate("ZRGlobals", source.toUtf8().constData());
}

} // namespace

StudioController::StudioController(const StudioOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_router(new ZRServerInterface(this))
    , m_login(new LoginClient(m_router, this))
    , m_loader(new zeral::LocalStorageLoader(m_router, zeral::LocalStorage::instance(), this))
    , m_plugins(new PluginLoader(options.pluginDir, this))
    , m_enrolment(new FingerprintEnrolmentService(m_router, this))
{
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::kindFromSetting(
        Settings::value(QLatin1String(studio::settings::FingerprintReader)).toString(),
        FingerprintReaderFactory::Kind::Libfprint));
    zeral::LocalStorage::instance()->attach(m_router);
    // The server gives its reasons in the language the studio speaks: the one of the settings
    // at the start, as StudioLanguage installed it (a change in the menu waits for a restart).
    m_login->setLanguage(StudioLanguage::configuredLanguage());
    connect(m_router, &ZRServerInterface::connected, this, &StudioController::onConnected);
    connect(m_router, &ZRServerInterface::connectionFailed, this,
            &StudioController::onConnectionFailed);
    connect(m_router, &ZRServerInterface::connectionLost, this,
            &StudioController::onConnectionLost);
    connect(m_router, &ZRServerInterface::stateChanged, this, &StudioController::onStateChanged);
    connect(m_router, &ZRServerInterface::reconnecting, this, &StudioController::onReconnecting);
    connect(m_login, &LoginClient::loggedIn, this, &StudioController::onLoggedIn);
    connect(m_login, &LoginClient::loginFailed, this, &StudioController::onLoginFailed);
    connect(m_login, &LoginClient::passwordPolicyReceived, this,
            &StudioController::onPasswordPolicy);
    connect(m_login, &LoginClient::passwordChangeFailed, this,
            &StudioController::onPasswordChangeFailed);
    connect(m_login, &LoginClient::resumed, this, &StudioController::onResumed);
    connect(m_login, &LoginClient::sessionLost, this, &StudioController::onSessionLost);
    connect(m_loader, &zeral::LocalStorageLoader::progress, this,
            &StudioController::onLoadProgress);
    connect(m_loader, &zeral::LocalStorageLoader::finished, this,
            &StudioController::onLoadFinished);
    connect(m_loader, &zeral::LocalStorageLoader::failed, this, &StudioController::onLoadFailed);
}

StudioController::~StudioController()
{
    closeMainWindow();
    delete m_closingWindow;
    delete m_passwordDialog;
    delete m_loginDialog;
    if (m_embedded)
        m_embedded->stop();
}

LoginDialog *StudioController::loginDialog() const
{
    return m_loginDialog;
}

PasswordChangeDialog *StudioController::passwordChangeDialog() const
{
    return m_passwordDialog;
}

MainWindow *StudioController::mainWindow() const
{
    return m_mainWindow;
}

void StudioController::setPhase(Phase phase)
{
    if (m_phase == phase)
        return;
    qCDebug(lcStudio) << "phase" << phase;
    m_phase = phase;
    emit phaseChanged(phase);
}

void StudioController::start()
{
    m_loginDialog = new LoginDialog;
    connect(m_loginDialog, &LoginDialog::loginRequested, this, &StudioController::onLoginRequested);
    connect(m_loginDialog, &LoginDialog::quitRequested, this, &StudioController::quit);
    m_loginDialog->setLogin(Settings::value(QLatin1String(studio::settings::LastLogin)).toString());
    m_loginDialog->show();
    if (!m_options.embedded()) {
        showLogin(QString(), MessageWidget::Information);
        return;
    }
    setPhase(Phase::StartingServer);
    m_loginDialog->setBusy(m_options.demo ? tr("Запуск встроенного сервера. Первый запуск с "
                                               "демонстрационными данными займёт до минуты…")
                                          : tr("Запуск встроенного сервера…"));
    m_embedded = new EmbeddedServer(this);
    connect(m_embedded, &EmbeddedServer::started, this, &StudioController::onServerStarted);
    connect(m_embedded, &EmbeddedServer::failed, this, &StudioController::onServerFailed);
    m_embedded->setSmtpUrl(m_options.smtpUrl);
    m_embedded->start(m_options.databasePath, m_options.demo);
}

void StudioController::onServerStarted(quint16 port)
{
    m_embeddedAddress = StudioOptions::formatServerAddress(QStringLiteral("127.0.0.1"), port);
    if (!m_embedded->rootPasswordIsSet() && !askRootPassword())
        return;
    QString message;
    if (m_options.demo && m_loginDialog->login().isEmpty()) {
        m_loginDialog->setLogin(QStringLiteral("root"));
        message = tr("Демонстрационная база: войдите как root с паролем %1")
                      .arg(zeral::server::DemoOrganisation::demoPassword());
    }
    showLogin(message, MessageWidget::Information);
}

void StudioController::onServerFailed(const QString &reason)
{
    setPhase(Phase::Finished);
    QMessageBox::critical(m_loginDialog, tr("Студия Zeral"),
                          tr("Встроенный сервер не запустился: %1").arg(reason));
    emit finished(1);
}

bool StudioController::askRootPassword()
{
    RootPasswordDialog dialog(m_loginDialog);
    for (;;) {
        if (dialog.exec() != QDialog::Accepted) {
            quit();
            return false;
        }
        if (m_embedded->setRootPassword(
                PassHash::encrypt(dialog.password(), QCryptographicHash::Md5)))
            break;
        QMessageBox::warning(&dialog, dialog.windowTitle(),
                             tr("Сервер не сохранил пароль. Попробуйте ещё раз; если ошибка "
                                "повторится, проверьте место на диске и права на файл базы."));
    }
    m_loginDialog->setLogin(QStringLiteral("root"));
    return true;
}

QString StudioController::serverText() const
{
    if (m_options.embedded())
        return m_embeddedAddress;
    return StudioOptions::formatServerAddress(m_options.serverHost, m_options.serverPort);
}

void StudioController::showLogin(const QString &message, MessageWidget::Icon icon)
{
    setPhase(Phase::Login);
    const QStringList recent
        = Settings::value(QLatin1String(studio::settings::RecentServers)).toStringList();
    // After a refusal the operator retries the server he typed, not the default.
    const QString typed = m_loginDialog->serverText();
    m_loginDialog->setServers(m_embeddedAddress, recent, typed.isEmpty() ? serverText() : typed);
    m_loginDialog->clearPassword();
    m_loginDialog->showMessage(message, icon);
    m_loginDialog->show();
    m_loginDialog->raise();
    m_loginDialog->activateWindow();
}

void StudioController::onLoginRequested()
{
    QString host;
    quint16 port = 0;
    const QString server = m_loginDialog->serverText();
    if (!StudioOptions::parseServerAddress(server, &host, &port)) {
        m_loginDialog->showMessage(tr("Адрес сервера «%1» не подходит: укажите его как "
                                      "ХОСТ:ПОРТ, например 127.0.0.1:7700.")
                                       .arg(server),
                                   MessageWidget::Warning);
        return;
    }
    if (m_router->state() == ZRServerInterface::State::Connected && m_router->host() == host
        && m_router->port() == port) {
        sendLogin();
        return;
    }
    setPhase(Phase::Connecting);
    m_loginDialog->setBusy(tr("Подключение к серверу %1…").arg(server));
    m_router->disconnectFromServer();
    m_router->connectToServer(host, port);
}

void StudioController::onConnected()
{
    // A reconnection while logged in is LoginClient's: it resumes the session.
    if (m_phase == Phase::Connecting)
        sendLogin();
}

void StudioController::onConnectionFailed(const QString &reason)
{
    if (m_phase != Phase::Connecting)
        return;
    m_loginDialog->showMessage(tr("Сервер %1 недоступен: %2. Проверьте адрес и что сервер "
                                  "запущен, затем нажмите «Войти» ещё раз.")
                                   .arg(m_loginDialog->serverText(), reason),
                               MessageWidget::Critical);
    setPhase(Phase::Login);
}

void StudioController::sendLogin()
{
    setPhase(Phase::LoggingIn);
    m_loginDialog->setBusy(tr("Вход…"));
    m_login->login(m_loginDialog->login(), m_loginDialog->password(), clientName());
}

QString StudioController::clientName() const
{
    return tr("Студия на %1").arg(QHostInfo::localHostName());
}

void StudioController::onLoginFailed(qint32 status, const QString &reason)
{
    if (m_phase != Phase::LoggingIn)
        return;
    using namespace zeral::proto;
    QString text = reason;
    MessageWidget::Icon icon = MessageWidget::Critical;
    switch (status) {
    case StatusLoginFailed:
        icon = MessageWidget::Warning;
        if (text.isEmpty())
            text = tr("Неверное имя пользователя или пароль.");
        break;
    case StatusAccountBlocked:
        if (text.isEmpty())
            text = tr("Учётная запись заблокирована. Обратитесь к администратору.");
        break;
    case StatusLoginLocked:
        if (text.isEmpty())
            text = tr("Вход временно закрыт после нескольких неудачных попыток. Попробуйте позже.");
        break;
    case StatusPasswordChangeRequired:
        beginPasswordChange(reason);
        return;
    case StatusConnectionLost:
        text = tr("Связь с сервером %1 прервалась во время входа: %2. Нажмите «Войти» ещё раз.")
                   .arg(m_loginDialog->serverText(), reason);
        break;
    default:
        text = tr("Войти не удалось: %1")
                   .arg(reason.isEmpty() ? tr("ошибка %1").arg(status) : reason);
        break;
    }
    qCInfo(lcStudio) << "login refused with status" << status;
    showLogin(text, icon);
}

void StudioController::beginPasswordChange(const QString &reason)
{
    // The password just typed stays in the login dialog, locked: it is the current one the
    // change is sent with. The policy comes from the server, since no store is loaded yet.
    setPhase(Phase::ChangingPassword);
    m_passwordChangeReason = reason;
    m_loginDialog->setBusy(tr("Нужно сменить пароль…"));
    m_login->requestPasswordPolicy();
}

void StudioController::onPasswordPolicy(const QMap<QString, QVariant> &options)
{
    if (m_phase != Phase::ChangingPassword || m_passwordDialog)
        return;
    auto *dialog = new PasswordChangeDialog(m_loginDialog->login(), m_loginDialog);
    m_passwordDialog = dialog;
    dialog->setReason(m_passwordChangeReason);
    dialog->setPasswordOptions(options);
    connect(dialog, &PasswordChangeDialog::changeRequested, this,
            &StudioController::sendPasswordChange);
    connect(dialog, &QDialog::rejected, this, &StudioController::onPasswordChangeCancelled);
    dialog->open();
}

void StudioController::sendPasswordChange()
{
    if (m_phase != Phase::ChangingPassword || !m_passwordDialog)
        return;
    m_passwordDialog->setBusy(true);
    m_login->changePassword(m_loginDialog->login(), m_loginDialog->password(),
                            m_passwordDialog->password(), clientName());
}

void StudioController::onPasswordChangeFailed(qint32 status, const QString &reason)
{
    if (m_phase != Phase::ChangingPassword)
        return;
    using namespace zeral::proto;
    // A password the server won't take (the same as before, ...) is retried in the dialog;
    // anything else is a failed login, told in the login dialog.
    if (m_passwordDialog && (status == StatusConflict || status == StatusMalformed)) {
        m_passwordDialog->showRefusal(reason);
        return;
    }
    closePasswordDialog();
    setPhase(Phase::LoggingIn);
    onLoginFailed(status, reason);
}

void StudioController::onPasswordChangeCancelled()
{
    if (m_phase != Phase::ChangingPassword)
        return;
    closePasswordDialog();
    showLogin(tr("Пароль не сменён, поэтому войти нельзя. Чтобы войти, введите текущий пароль "
                 "ещё раз и задайте новый."),
              MessageWidget::Warning);
}

void StudioController::closePasswordDialog()
{
    if (!m_passwordDialog)
        return;
    PasswordChangeDialog *dialog = m_passwordDialog;
    m_passwordDialog = nullptr;
    dialog->disconnect(this);
    dialog->hide();
    dialog->deleteLater();
}

void StudioController::onLoggedIn()
{
    if (m_phase != Phase::LoggingIn && m_phase != Phase::ChangingPassword)
        return;
    closePasswordDialog();
    qCInfo(lcStudio) << "logged in as" << AuthData::user();
    Settings::setValue(QLatin1String(studio::settings::LastLogin), AuthData::user());
    rememberServer(m_loginDialog->serverText());
    m_loginDialog->clearPassword();
    setPhase(Phase::Loading);
    // Another operator's objects must not show for a moment: start from an empty store.
    zeral::LocalStorage::instance()->clear();
    m_loader->start();
}

void StudioController::rememberServer(const QString &server)
{
    if (server == m_embeddedAddress)
        return; // its port may differ at the next start
    QStringList recent
        = Settings::value(QLatin1String(studio::settings::RecentServers)).toStringList();
    recent.removeAll(server);
    recent.prepend(server);
    Settings::setValue(QLatin1String(studio::settings::RecentServers),
                       QStringList(recent.mid(0, RecentServerCount)));
}

void StudioController::onLoadProgress(int step, int steps, const QString &dataname)
{
    const QString text = tr("Загрузка данных: %1").arg(datasetTitle(dataname));
    if (m_phase == Phase::Loading)
        m_loginDialog->setBusy(text, step, steps);
    else if (m_phase == Phase::Reloading && m_mainWindow)
        m_mainWindow->showNotice(tr("Связь восстановлена. %1…").arg(text),
                                 MessageWidget::Information);
}

void StudioController::onLoadFinished()
{
    if (m_phase == Phase::Loading) {
        openMainWindow();
        return;
    }
    if (m_phase != Phase::Reloading || !m_mainWindow)
        return;
    setPhase(Phase::Running);
    m_mainWindow->showNotice(tr("Связь с сервером восстановлена, данные обновлены."),
                             MessageWidget::Positive);
    const QString recovered = m_mainWindow->notice()->text();
    QTimer::singleShot(RecoveredNoticeMs, m_mainWindow, [window = m_mainWindow, recovered] {
        // Unless something newer, such as another drop, is being told meanwhile.
        if (window->notice()->text() == recovered)
            window->hideNotice();
    });
}

void StudioController::onLoadFailed(const QString &reason)
{
    if (m_phase == Phase::Loading) {
        m_login->logout();
        showLogin(tr("Данные не загрузились: %1. Войдите ещё раз.").arg(reason),
                  MessageWidget::Critical);
    } else if (m_phase == Phase::Reloading && m_mainWindow) {
        // A new drop is told by its own notice, and the next resume loads again.
        setPhase(Phase::Running);
        m_mainWindow->showNotice(tr("Данные после восстановления связи не обновились: %1. "
                                    "Чтобы увидеть текущее состояние, войдите заново: "
                                    "«Студия → Сменить пользователя».")
                                     .arg(reason),
                                 MessageWidget::Warning);
    }
}

void StudioController::openMainWindow()
{
    closeMainWindow();
    // The previous operator's screens must be gone before the plugins make new ones.
    delete m_closingWindow;
    auto *window = new MainWindow(m_router);
    m_mainWindow = window;
    ZRGuiGlobals::zrApp = window;
    connect(window, &MainWindow::logoutRequested, this, &StudioController::logout);
    connect(window, &MainWindow::quitRequested, this, &StudioController::quit);

    m_pluginProblems.clear();
    QList<QObject *> screens = m_plugins->instances(&m_pluginProblems);
    screens.append(new EmployeesScreen);
    screens.append(new AuditLogScreen);
    for (QObject *screen : qAsConst(screens)) {
        QString error;
        if (!window->installScreen(screen, &error) && !error.isEmpty())
            m_pluginProblems.append(error);
    }
    window->setOperator(AuthData::user(), roleTemplateTitle(AuthData::roletemplateId()));
    window->setConnectionState(m_router->state(), m_loginDialog->serverText());
    if (window->screenCount() == 0)
        window->showNotice(tr("Для вашей учётной записи нет доступных экранов. Обратитесь к "
                              "администратору."),
                           MessageWidget::Warning);
    else if (!m_pluginProblems.isEmpty())
        window->showNotice(m_pluginProblems.join(QLatin1Char('\n')), MessageWidget::Warning);
    setPhase(Phase::Running);
    m_loginDialog->hide();
    window->show();
    window->showLastTab();
}

void StudioController::closeMainWindow()
{
    if (!m_mainWindow)
        return;
    MainWindow *window = m_mainWindow;
    m_mainWindow = nullptr;
    // Enrolment dialogs tell their screens while those are still registered.
    m_enrolment->closeAll();
    // A screen may be inside a modal dialog of its own (the session can end at any time):
    // that dialog's loop must end, and the screen's code after it run, before the screen
    // goes. So the window is deleted from the event loop, not here.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *widget : windows) {
        if (widget == m_loginDialog || !widget->isVisible() || !widget->isModal())
            continue;
        if (auto *dialog = qobject_cast<QDialog *>(widget))
            dialog->reject();
        else
            widget->close();
    }
    ZRGuiGlobals::zrApp = nullptr;
    window->hide();
    m_closingWindow = window;
    window->deleteLater();
}

void StudioController::onStateChanged(ZRServerInterface::State state)
{
    if (m_mainWindow)
        m_mainWindow->setConnectionState(
            state, StudioOptions::formatServerAddress(m_router->host(), m_router->port()));
}

void StudioController::onConnectionLost(const QString &reason)
{
    if (m_phase != Phase::Running && m_phase != Phase::Reloading)
        return;
    setPhase(Phase::Running);
    m_mainWindow->showNotice(tr("Связь с сервером потеряна: %1. Студия переподключается сама; "
                                "изменения, отправленные до разрыва, могли не сохраниться.")
                                 .arg(reason),
                             MessageWidget::Warning);
}

void StudioController::onReconnecting(int attempt)
{
    // Logged in, the router brings the session back by itself. Before that, only the attempt
    // under way may try its server once more (a login that went down with its connection is
    // sent again); a server the operator has left or changed is not called in the background.
    const bool loggedIn
        = m_phase == Phase::Loading || m_phase == Phase::Running || m_phase == Phase::Reloading;
    if (loggedIn || (m_phase == Phase::LoggingIn && attempt == 1))
        return;
    qCInfo(lcStudio) << "not reconnecting to" << m_router->host() << m_router->port() << "in phase"
                     << m_phase;
    m_router->disconnectFromServer();
}

void StudioController::onResumed()
{
    if (m_phase != Phase::Running || !m_mainWindow)
        return;
    setPhase(Phase::Reloading);
    m_loader->start();
}

void StudioController::onSessionLost(const QString &reason)
{
    if (m_phase == Phase::Finished)
        return;
    closeMainWindow();
    m_loader->stop();
    zeral::LocalStorage::instance()->clear();
    showLogin(reason, MessageWidget::Warning);
}

void StudioController::logout()
{
    closeMainWindow();
    m_loader->stop();
    m_login->logout();
    zeral::LocalStorage::instance()->clear();
    showLogin(QString(), MessageWidget::Information);
}

void StudioController::quit()
{
    if (m_phase == Phase::Finished)
        return;
    setPhase(Phase::Finished);
    closeMainWindow();
    m_login->logout();
    m_router->disconnectFromServer();
    if (m_loginDialog)
        m_loginDialog->hide();
    if (m_embedded)
        m_embedded->stop();
    emit finished(0);
}
