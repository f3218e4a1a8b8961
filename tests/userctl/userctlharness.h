#pragma once

#include <src/userctl.h>
#include <tests/support/builders.h>
#include <tests/support/scriptedserver.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/zrtableview.h>
#include <shared/rolenames.h>
#include <shared/roletemplateinfo.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QPointer>
#include <QStringList>
#include <QTemporaryDir>

#include <list>

using zeral::TYPE_ID;
namespace command = zeral::proto::command;

// Reads the values one after the other from a request's payload.
template<class... Values>
void unpack(const QByteArray &data, Values &...values)
{
    ZRDataStream in(data);
    (in >> ... >> values);
}

// One "data.update_object" request as the server reads it.
struct SavedObject
{
    explicit SavedObject(const Command &request)
    {
        unpack(request.data, uid, type, parent, parameters);
    }
    TYPE_ID uid = 0;
    QString type;
    TYPE_ID parent = 0;
    QHash<QString, QString> parameters;
};

// The users screen as the studio sets it up (init, registered with the router, placed),
// talking to a scripted server, for the logged-in operator given. Once placed, the models
// of its three tables run under QAbstractItemModelTester.
class UserCtlHarness
{
public:
    // Every role the screen asks about.
    static QStringList allRoles()
    {
        return {QStringLiteral("RL_USER_SHOW"),        QStringLiteral("RL_USER_MOBILE_SHOW"),
                QStringLiteral("RL_USER_ONLINE_SHOW"), QStringLiteral("RL_USER_CREATE"),
                QStringLiteral("RL_USER_UPDATE"),      QStringLiteral("RL_USER_DELETE"),
                QStringLiteral("RL_USER_BLOCK"),       QStringLiteral("RL_ROLE_LINKUSER"),
                QStringLiteral("RL_ROLE_LINKSUBDIV"),  QStringLiteral("RL_ROLE_DISCONNECT_USER")};
    }
    static QStringList allRolesBut(const QString &role)
    {
        QStringList roles = allRoles();
        roles.removeAll(role);
        return roles;
    }

    static void logIn(const QStringList &roles, const QString &login = QStringLiteral("admin"),
                      zeral::TYPE_ID uid = 2,
                      const QString &roleTemplate = QStringLiteral("RT_ADMINISTRATOR"))
    {
        AuthData::set({login, uid, "session-42", roleTemplate, roles, QString()});
    }

    // A stored user of that template, parent 40, with a surname and name to show.
    static zeral::ObjectInfo user(TYPE_ID uid, const QString &login, const QString &roleTemplate,
                                  const QString &state = QString())
    {
        zeral::ObjectInfo object = testing::makeUser(uid, login);
        object.parent = 40;
        object.parameters.insert(QStringLiteral("PT_ROLETEMPLATE"), roleTemplate);
        object.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Фамилия") + login);
        object.parameters.insert(QStringLiteral("PT_NAME"), QStringLiteral("Имя"));
        if (!state.isEmpty())
            object.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), state);
        return object;
    }
    static void storeUsers(const QList<zeral::ObjectInfo> &users)
    {
        zeral::LocalStorage::instance()->clear();
        zeral::LocalStorage::instance()->applyChanged(QStringLiteral("user"), users);
    }

    explicit UserCtlHarness(const QStringList &roles = allRoles(), bool place = true)
    {
        Settings::useFile(settingsDir.filePath(QStringLiteral("studio.ini")));
        logIn(roles);
        screen = new UserCtl;
        const QList<CommandType> types = screen->init(&server, QStringLiteral("userctl"));
        server.registerPlugin(screen, types);
        if (!place)
            return;
        screen->insertedToInterface();
        users = child<ZRTableView>("usersList");
        mobile = child<ZRTableView>("mobileUsersList");
        sessions = child<ZRTableView>("connectedUsersList");
        for (const ZRTableView *table : {users, mobile, sessions})
            testers.emplace_back(table->model(),
                                 QAbstractItemModelTester::FailureReportingMode::QtTest);
    }
    ~UserCtlHarness()
    {
        testers.clear();
        delete screen;
        AuthData::clear();
    }
    UserCtlHarness(const UserCtlHarness &) = delete;
    UserCtlHarness &operator=(const UserCtlHarness &) = delete;

    // Answers the role template request. The supervisor's template grants the mobile login
    // here, so that only the template filter keeps him off the mobile tab; "RT_DUTY" is a
    // custom one.
    void answerTemplates(bool ownTemplateAllowed = true)
    {
        const auto entry = [](const QString &id, const QStringList &roles,
                              const QString &customName = QString()) {
            return zeral::_ROLETEMPLATE_INFO{id,    customName, QString(), !customName.isEmpty(),
                                             roles, QString()};
        };
        const QString login = QStringLiteral("RL_MOBILE_LOGIN");
        const zeral::ROLETEMPLATES_HASH templates{
            {"RT_SUPERVISOR", entry("RT_SUPERVISOR", {login, "RL_USER_SHOW"})},
            {"RT_ADMINISTRATOR", entry("RT_ADMINISTRATOR", {"RL_USER_SHOW"})},
            {"RT_OPERATOR", entry("RT_OPERATOR", {"RL_USER_SHOW"})},
            {"RT_MOBILE", entry("RT_MOBILE", {login})},
            {"RT_MOBILE_CHIEF", entry("RT_MOBILE_CHIEF", {login})},
            {"RT_DUTY", entry("RT_DUTY", {login}, QStringLiteral("Дежурный"))}};
        server.answerOk(sent(command::RoleTemplateInherit).last(),
                        ZRDataStream::pack(templates, QList<QString>(), ownTemplateAllowed));
    }

    // Requests of that name sent so far.
    QList<Command> sent(const char *name) const
    {
        QList<Command> found;
        for (const Command &command : server.sent()) {
            if (command.name == QLatin1String(name))
                found.append(command);
        }
        return found;
    }

    template<class Widget = QAction>
    Widget *child(const char *name) const
    {
        return screen->findChild<Widget *>(QLatin1String(name));
    }

    QStringList popupTexts() const
    {
        QStringList texts;
        for (const MessageWidget *popup : screen->popups())
            texts.append(popup->text());
        return texts;
    }

    // The uids a table shows, top to bottom.
    static QList<TYPE_ID> shownUids(const QAbstractItemView *table)
    {
        QList<TYPE_ID> uids;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            uids.append(table->model()->index(row, 0).data().toUInt());
        return uids;
    }
    static void select(QAbstractItemView *table, const QList<TYPE_ID> &uids)
    {
        table->clearSelection();
        const QAbstractItemModel *model = table->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            if (uids.contains(model->index(row, 0).data().toUInt()))
                table->selectionModel()->select(
                    model->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }

    QTemporaryDir settingsDir; // each screen starts from settings of its own
    ScriptedServer server;
    QPointer<UserCtl> screen;
    ZRTableView *users = nullptr;
    ZRTableView *mobile = nullptr;
    ZRTableView *sessions = nullptr;
    std::list<QAbstractItemModelTester> testers;
};
