#pragma once

#include <app/startup/studiooptions.h>

#include <host/core/zrserverinterface.h>
#include <host/gui/widgets/messagewidget.h>

#include <QObject>
#include <QPointer>
#include <QStringList>

class EmbeddedServer;
class FingerprintEnrolmentService;
class LoginClient;
class LoginDialog;
class MainWindow;
class PasswordChangeDialog;
class PluginLoader;

namespace zeral {
class LocalStorageLoader;
}

// The life of the studio: the embedded server (if any), the password of root at the first
// start, the login dialog, the load of the local store, the main window with its screens,
// and what follows a drop of the connection, a session closed by the server, a change of
// operator and the end.
class StudioController : public QObject
{
    Q_OBJECT
public:
    enum class Phase {
        StartingServer,
        Login,      // the login dialog waits for the operator
        Connecting, // to the server named in the dialog
        LoggingIn,
        ChangingPassword, // the server wants a new password first; its dialog is open
        Loading,          // the store, before the main window opens
        Running,          // the main window is open
        Reloading,        // the store again, after the connection came back
        Finished,
    };
    Q_ENUM(Phase)

    explicit StudioController(const StudioOptions &options, QObject *parent = nullptr);
    ~StudioController() override;

    void start();
    Phase phase() const { return m_phase; }
    LoginDialog *loginDialog() const;
    PasswordChangeDialog *passwordChangeDialog() const;
    MainWindow *mainWindow() const;
    ZRServerInterface *router() const { return m_router; }
    EmbeddedServer *embeddedServer() const { return m_embedded; }
    // What the plugin folder held that could not be used, for the operator.
    QStringList pluginProblems() const { return m_pluginProblems; }

signals:
    void phaseChanged(StudioController::Phase phase);
    // The studio is done; the program ends with this code.
    void finished(int exitCode);

private:
    void setPhase(Phase phase);
    void onServerStarted(quint16 port);
    void onServerFailed(const QString &reason);
    bool askRootPassword();
    void showLogin(const QString &message, MessageWidget::Icon icon);
    void onLoginRequested();
    void sendLogin();
    void onConnected();
    void onConnectionFailed(const QString &reason);
    void onLoggedIn();
    void onLoginFailed(qint32 status, const QString &reason);
    void beginPasswordChange(const QString &reason);
    void onPasswordPolicy(const QMap<QString, QVariant> &options);
    void sendPasswordChange();
    void onPasswordChangeFailed(qint32 status, const QString &reason);
    void onPasswordChangeCancelled();
    void closePasswordDialog();
    QString clientName() const;
    void onLoadProgress(int step, int steps, const QString &dataname);
    void onLoadFinished();
    void onLoadFailed(const QString &reason);
    void openMainWindow();
    void closeMainWindow();
    void onStateChanged(ZRServerInterface::State state);
    void onConnectionLost(const QString &reason);
    void onReconnecting(int attempt);
    void onResumed();
    void onSessionLost(const QString &reason);
    void logout();
    void quit();
    QString serverText() const;
    void rememberServer(const QString &server);

    StudioOptions m_options;
    Phase m_phase = Phase::Login;
    EmbeddedServer *m_embedded = nullptr;
    ZRServerInterface *m_router;
    LoginClient *m_login;
    zeral::LocalStorageLoader *m_loader;
    PluginLoader *m_plugins;
    FingerprintEnrolmentService *m_enrolment;
    QPointer<LoginDialog> m_loginDialog;
    QPointer<PasswordChangeDialog> m_passwordDialog;
    QString m_passwordChangeReason;
    QPointer<MainWindow> m_mainWindow;
    QPointer<MainWindow> m_closingWindow; // of the last operator, deleted from the event loop
    QStringList m_pluginProblems;
    QString m_embeddedAddress;
};
