#pragma once

#include <src/taskqueue.h>

#include <host/core/zrplugininterface.h>
#include <host/gui/models/objecttreemodel.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/widgets/searchwidget.h>
#include <host/gui/widgets/zrstackedtoolbars.h>
#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/roletemplateinfo.h>
#include <shared/taskinfo.h>
#include <shared/templatedata.h>
#include <shared/types.h>

#include <QColor>
#include <QHash>
#include <QHostAddress>
#include <QMultiHash>
#include <QPointer>

#include <optional>

class ConnectedUsersInfoWidget;
class ConnectedUsersModel;
class MailDeliveryWatcher;
class MobileUserItemDelegate;
class QAbstractItemView;
class QSortFilterProxyModel;
class QTimer;
class UserFilterProxyModel;
class UserInfoWidget;
class UserRoleInfoWidget;
class UsersItemDelegate;
class ZRTableView;
class Ui_UserCtl;
namespace zr5sdk {
class Data;
}

// The users screen: the studio shows it as three tabs (users, mobile users, sessions). It owns
// the form, the models, the side panels, the timers and the one queue through which every
// change of the screen and of its dialogs goes to the server.
class UserCtl : public PluginWidget, public ZRPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "zeral.zrservice.ZRPluginInterface/1.0" FILE "userctl.json")
    Q_INTERFACES(ZRPluginInterface)

public:
    explicit UserCtl(QWidget *parent = nullptr);
    ~UserCtl() override;

    // ZRPluginInterface
    QList<CommandType> init(ZRServerInterface *server, const QString &name) override;
    void uninit() override;
    void initOnExchangeReady() override;
    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QWidget *widget() override;
    QObject *object() override;

    // PluginWidget
    bool canShow() override;
    void activated() override;
    void onTabActivated(int index) override;
    QList<PLUGIN_TAB> tabList() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

    void authentificated(Command &command);
    // The identity by which the studio's enrolment screen tells this client's screens apart:
    // plugin, instance number, the first address that isn't loopback (the host name if there
    // is none) and the start time in seconds.
    static QString composeClientId(const QString &plugin, const QString &instance,
                                   QList<QHostAddress> addresses, qint64 secondsSinceEpoch);
    QString clientId() const { return m_clientId; }

signals:
    void userAdded(zeral::ObjectInfo user);
    void userSaved(zeral::TYPE_ID uid);
    void userAccessSaved(zeral::TYPE_ID uid);
    void userPasswordCleared(zeral::TYPE_ID uid);
    void userPasswordSet(zeral::TYPE_ID uid);
    void userRolesRead(QMultiHash<zeral::TYPE_ID, QString> user_roles);
    void roleTemplatesRead(zeral::ROLETEMPLATES_HASH rt_hash);
    void userTemplatesRead(zeral::TYPE_ID uid, int count);
    void showMessage(QString message);
    void showMessage(QString message, QColor color);
    void startVerify();
    void templatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);
    void acceptChanges();
    void rejectChanges();
    void uidsForVerify(int variant, int index, QList<zeral::TYPE_ID>);
    void variantsForVerify(QString name, int id, int count);
    void permissionsRead(QList<zeral::OBJECT_PERMISSION> permissions);

private slots:
    void saveClipboardHandler();

public slots:
    void insertedToInterface() override;
    void addTask(zeral::TaskInfo task);
    void processNextTask();
    void verifyEdit();
    void onDeactivate();

private slots:
    void dataChanged(QString dataname, QList<zeral::TYPE_ID> uids);
    void dataRemoved(QString dataname, QList<zeral::TYPE_ID> uids);
    void addButtonClicked();
    void userEditFinished();
    void removeButtonClicked(QList<zeral::TYPE_ID> uids = {});
    void fingerprintButtonClicked();
    void showUserProperties();
    void userBlockChange();
    void mobileUserBlockChange();
    void changeUserBlockState(zeral::OBJECT_UID_SET blocked, zeral::OBJECT_UID_SET unblocked);
    void userBlockChangeResult(zeral::TYPE_ID uid);
    void userSelectionChanged();
    void mobileUserSelectionChanged();
    void connectedUserSelectionChanged();
    void cancelChanged();
    void addMobileButtonClicked();
    void showMobileUserProperties();
    void removeMobileButtonClicked();
    void disconnectUser();
    void getUserTemplatesForCreateUser();
    void getUserTemplatesForDeleteUser();
    void setCurrentView(int index);
    void getSessionsInfo();
    void saveUsersHeaderState(QByteArray header_state);
    void restoreUsersHeaderState();
    void applyUserFilter(QString text);

private:
    // Building the screen, in the order insertedToInterface() calls them.
    void initTimers();
    void initWidgetContents();
    void initUserInfo();
    void initMobileUserInfo();
    void initConnectedUsersInfoWidget();
    void initPluginActions();
    void initModels();
    void initUserModels();
    void initMobileUserModels();
    void initSessionModels();
    // A proxy of the user model for one of the two user tables, without its tab's filters.
    UserFilterProxyModel *makeUserProxy(ZRTableView *table);

    // The user model follows the local store.
    void usersRead(const QList<zeral::TYPE_ID> &uids);
    void usersRemoved(const QList<zeral::TYPE_ID> &uids);
    // The users selected in either user table.
    QSet<zeral::TYPE_ID> selectedUserUids() const;
    // Whether the card shows one user, who is selected and among `uids`.
    bool userInfoShowsOneOf(const QSet<zeral::TYPE_ID> &selected,
                            const QList<zeral::TYPE_ID> &uids) const;

    // Role templates are read anew at every show and spread by roleTemplatesRead().
    void sendGetRoletemplates();
    void roleTemplatesResult(Command &command);
    // The operator-facing name of a template: its own for a custom one, else the built-in one.
    QString roleTemplateName(const QString &id) const;
    // The users model's cells that show the user's own parameters, worked out when asked for.
    void setUserCells();
    // The name of a user's template for the template column, by the template's code.
    QString templateNameOf(const ObjectTreeModel::Node &user) const;
    void setCurrentUserInfoRoles();

    // The side panels are redrawn a moment after a burst of selection changes, not at each.
    void updateUserInfoLazy();
    void updateUserInfo();
    void updateConnectedUsersInfoWidgetLazy();
    void updateConnectedUsersInfoWidget();

    // Sessions: polled while their page is in view; rebuilt from each answer in full.
    void getSessionsInfoResult(Command &command);
    // Login to the uid of the first stored user of that login; rebuilt after user changes.
    const QHash<QString, zeral::TYPE_ID> &userUidsByLogin();
    // What the sessions table shows of the stored user of a login: his uid and template.
    struct SessionUser
    {
        zeral::TYPE_ID uid = 0;
        QString templateId;
    };
    const SessionUser &sessionUser(const QString &login);
    // After a change of the users: the indexes by login are made anew when next asked for.
    void forgetLoginIndexes();
    // Whether the operator may cut a session of that login, by both sides' templates.
    bool canDisconnect(const QString &login);
    bool canDisconnectTemplate(const QString &target) const;
    void setCurrentConnectedUserInfoRoles();
    void disconnectUserResult(Command &command);

    // Opens the new-mobile-users wizard under `parent`, on these employees if any are given.
    void openNewMobileUserWizard(QWidget *parent, const zeral::OBJECT_UID_LIST &employees);

    // Commands the studio sends to the screen.
    void showNewMobileUserWizardsHandler(Command &command);
    void showMobileUserPropertiesHandler(Command &command);
    void fingerprintDialogClosedHandler(Command &command);

    // Blocking: the selection of a users table, split into blocked and unblocked users.
    void changeBlockStateOfSelection(const QAbstractItemView *table);

    // Biometric confirmation: the stored templates of everybody who holds the confirming role
    // go to the fingerprint widget of whoever asked, through the ...ForVerify signals.
    void sendConfirmationQuery(const char *confirmingRole, const QString &ending = QString());
    void templatesRead(Command &command);
    // Who confirmed: tasks queued while a confirmation is being accepted are the confirmed
    // change's, and each tells the server the confirmer just before it goes, so that the
    // server's audit row of each of its requests names him (the server keeps a confirmer for
    // one request only).
    void nameConfirmerOf(const zeral::TaskInfo &task);
    void confirmerNamedHandler(Command &command);
    // The first of `identified` (the people a confirmation's fingerprints found, in the order
    // read) who may confirm, as the last confirmation query found them; 0 if none is.
    zeral::TYPE_ID confirmerAmong(const QList<zeral::TYPE_ID> &identified) const;
    // A task a wizard hands over: marked with the confirmer among those its own confirmation
    // identified (none without one), and queued from the event loop, as the wizards' tasks
    // always are. The creation and deletion wizards confirm in pages of their own, so the
    // screen asks them whom they identified when each task comes.
    void takeWizardTask(const zeral::TaskInfo &task, const QList<zeral::TYPE_ID> &identified);
    // Logs a task as it starts and names its confirmer, if it has one.
    void beginTask(const zeral::TaskInfo &task);
    // The template counts of the users a dialog waits for.
    void fingerExistsRead(Command &command);
    void editBiometricsHandler(Command &command);

    // The processors of the task kinds: each sends its task's request and returns whether
    // a result handler will run.
    bool processSaveObject(const zeral::TaskInfo &task);
    bool processCreateObject(const zeral::TaskInfo &task);
    bool processPrescribeUser(const zeral::TaskInfo &task);
    bool processDeleteObject(const zeral::TaskInfo &task);
    bool processUpdatePermissions(const zeral::TaskInfo &task);
    bool processAddPermissions(const zeral::TaskInfo &task);
    bool processSendEmail(const zeral::TaskInfo &task);
    bool processSaveToClipboard(const zeral::TaskInfo &task);

    // The answers to the processors' requests.
    void objectSavedHandler(Command &command);
    void objectCreatedHandler(Command &command);
    void prescribeUserHandler(Command &command);
    void deleteObjectHandler(Command &command);
    void updatePermissionsHandler(Command &command);
    void sendEmailHandler(Command &command);
    void getPermissionsHandler(Command &command);
    void emptyHandler(Command &command);
    // Takes the running task off the queue for its answer; none on an empty queue.
    std::optional<zeral::TaskInfo> takeAnsweredTask();
    // A failed save, create or prescribe: its window hears 0, the tasks resting on it go, and
    // the open dialogs show its message and then the server's reason.
    void failShownTask(const zeral::TaskInfo &failed, const Command &answer);
    // The wiring every property dialog of the screen gets: messages, the save (through a
    // biometric confirmation when the operator's template asks for one), its tasks, its end;
    // then, once it has its user, the data the screen reads for it.
    template<class Dialog>
    void connectEditor(Dialog *dialog);
    template<class Dialog>
    void connectEditorData(Dialog *dialog);
    // A user's dialog, desktop or mobile, made, wired and given its user over `parent`, with
    // the reads it waits for asked; nullptr, after saying so, for an operator who may not
    // look at another's account. The caller shows it.
    template<class Dialog>
    Dialog *openUserDialog(const zeral::ObjectInfo &info, QWidget *parent);
    // The mobile user dialog on the stored user of that uid, over `parent`.
    void openMobileUserProperties(zeral::TYPE_ID uid, QWidget *parent);
    // The answer to a save or a prescription: the window told, or the failure shown.
    void finishShownTask(Command &command, const char *doneLog, const char *failLog);
    // Tells the task's window the outcome, later, from the event loop: the uid, 0 on failure.
    void notifyReceiver(const zeral::TaskInfo &task, zeral::TYPE_ID uid);
    // Emits the start message of the task just started, if one was.
    void announceStarted(const zeral::TaskInfo &started);
    // A callback that runs a member handler while the screen lives.
    ZRPluginInterface::Callback handler(void (UserCtl::*member)(Command &));

    Ui_UserCtl *m_ui = nullptr;
    QString m_clientId;
    zr5sdk::Data *m_data = nullptr;
    // What the server said about the credentials mails of this session, for the wizards.
    MailDeliveryWatcher *m_mailWatcher = nullptr;
    ObjectTreeModel *m_userModel = nullptr;
    UserFilterProxyModel *m_userProxy = nullptr;
    UserFilterProxyModel *m_mobileUserProxy = nullptr;
    ConnectedUsersModel *m_connectedUsersModel = nullptr;
    QSortFilterProxyModel *m_connectedUsersProxy = nullptr;
    UserInfoWidget *m_userInfo = nullptr;
    UserRoleInfoWidget *m_userRolesInfo = nullptr;
    UserInfoWidget *m_mobileUserInfo = nullptr;
    UserRoleInfoWidget *m_mobileUserRolesInfo = nullptr;
    UserRoleInfoWidget *m_connectedUserRolesInfo = nullptr;
    ConnectedUsersInfoWidget *m_connectedUserInfo = nullptr;
    UsersItemDelegate *m_usersDelegate = nullptr;
    MobileUserItemDelegate *m_mobileUsersDelegate = nullptr;
    zeral::ROLETEMPLATES_HASH m_roleTemplates;
    // The template column's names by the users model's template code; worked out anew after
    // the templates changed. Sorting on the column asks for two names per comparison.
    mutable QVector<std::optional<QString>> m_templateNamesByCode;
    QList<zeral::TYPE_ID> m_templateWatchUids;
    // Those who may confirm, as the last confirmation query found them; the one of them whose
    // finger granted the change being accepted (0 outside that moment); the confirmer of each
    // confirmed task still queued, by task id.
    QList<zeral::TYPE_ID> m_confirmerCandidates;
    zeral::TYPE_ID m_acceptingConfirmer = 0;
    QHash<int, zeral::TYPE_ID> m_confirmedTasks;
    TaskQueue<UserCtl> m_taskQueue;
    QTimer *m_sessionTimer = nullptr;
    QTimer *m_connectedUserInfoTimer = nullptr;
    QTimer *m_userInfoTimer = nullptr;
    QHash<QString, QString> m_loginTemplates;
    QPointer<QWidget> m_toolbarBox;
    QPointer<ZRStackedToolBars> m_stackedToolBars;
    QPointer<SearchWidget> m_search;
    // The sessions poll's index of the stored users by login, and whether it is current.
    QHash<QString, zeral::TYPE_ID> m_loginUids;
    bool m_loginUidsValid = false;
    // The users of the logins that the polls named. The sessions of a poll are mostly those
    // of the last one, and this small table stays in the processor's caches, where a lookup
    // in the indexes of all users (100,000 logins) misses them three times a session.
    QHash<QString, SessionUser> m_sessionUsers;

    // Drives the answers to the confirmation queries directly.
    friend class TestUserCtlConfirm;
};
