#pragma once

#include <host/core/zrserverinterface.h>
#include <host/gui/widgets/messagewidget.h>
#include <shared/maildelivery.h>

#include <QList>
#include <QMainWindow>
#include <QPointer>

class MailDeliveryWatcher;
class PluginWidget;
class QLabel;
class QSplitter;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;
class ZRPluginInterface;

// The studio's main window: the screens and their tabs in a list at the side, the screen in
// view beside it, a line for notices about the connection above it and the connection and the
// operator in the status bar. It brings each screen in as the plugin contract asks: init with
// the router, canShow, placed, insertedToInterface, and on every switch deactivate for the
// screen left and onTabActivated for the tab chosen.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(ZRServerInterface *server, QWidget *parent = nullptr);
    // Takes the screens down: out of the router, uninit, deleted.
    ~MainWindow() override;

    // Brings in a plugin's root object. False, with the reason in `error`, when it isn't a
    // screen of the studio; false without a reason when the operator may not see it. Either
    // way a refused object is deleted.
    bool installScreen(QObject *instance, QString *error = nullptr);
    int screenCount() const { return m_screens.size(); }
    PluginWidget *screen(int index) const;
    PluginWidget *screenByName(const QString &pluginName) const;
    PluginWidget *currentScreen() const;
    int currentTab() const { return m_currentTab; }
    // Shows that tab of that screen, as if the operator had picked it in the list.
    bool showTab(PluginWidget *screen, int tabIndex);
    // Shows the screen and tab in view when the studio was last closed, else the first tab.
    void showLastTab();

    void setOperator(const QString &login, const QString &roleTemplateName);
    void setConnectionState(ZRServerInterface::State state, const QString &server);
    // A line above the screen, for what the operator must know about the connection.
    void showNotice(const QString &text, MessageWidget::Icon icon);
    void hideNotice();
    MessageWidget *notice() const { return m_notice; }
    // What the server said about the mails this operator queued.
    MailDeliveryWatcher *mailDeliveries() const { return m_mailDeliveries; }

signals:
    void logoutRequested();
    void quitRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    struct Screen
    {
        ZRPluginInterface *plugin = nullptr;
        QPointer<PluginWidget> widget;
        QObject *root = nullptr;
    };

    void buildMenus();
    void addNavigation(int screenIndex);
    void onNavigationChanged(QTreeWidgetItem *item);
    void activate(int screenIndex, int tabIndex);
    QTreeWidgetItem *navigationItem(int screenIndex, int tabIndex) const;
    void saveLayout();
    void chooseLanguage(const QString &language);
    // The logins locked after failed attempts, for an operator who may change users.
    void showLoginLocks();
    // A mail of this operator that waits for a retry or was given up on gets a notice.
    void onMailDelivery(const zeral::MailDelivery &delivery);

    QPointer<ZRServerInterface> m_server;
    QList<Screen> m_screens;
    QSplitter *m_splitter;
    QTreeWidget *m_navigation;
    QStackedWidget *m_stack;
    MessageWidget *m_notice;
    QLabel *m_connectionIcon;
    QLabel *m_connectionLabel;
    QLabel *m_operatorLabel;
    MailDeliveryWatcher *m_mailDeliveries = nullptr;
    qint64 m_mailNoticeId = 0; // the mail the notice speaks of, 0 if it speaks of none
    int m_currentScreen = -1;
    int m_currentTab = -1;
};
