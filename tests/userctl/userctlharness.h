#pragma once

#include <src/userctl.h>
#include <tests/support/scriptedserver.h>

#include <host/core/authdata.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <shared/rolenames.h>

#include <QPointer>
#include <QStringList>
#include <QTemporaryDir>

// The users screen as the studio sets it up (init, registered with the router, placed),
// talking to a scripted server, for the logged-in operator given.
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

    static void logIn(const QStringList &roles, const QString &login = QStringLiteral("admin"),
                      zeral::TYPE_ID uid = 2,
                      const QString &roleTemplate = QStringLiteral("RT_ADMINISTRATOR"))
    {
        AuthData::set({login, uid, "session-42", roleTemplate, roles, QString()});
    }

    explicit UserCtlHarness(const QStringList &roles = allRoles(), bool place = true)
    {
        Settings::useFile(settingsDir.filePath(QStringLiteral("studio.ini")));
        logIn(roles);
        screen = new UserCtl;
        const QList<CommandType> types = screen->init(&server, QStringLiteral("userctl"));
        server.registerPlugin(screen, types);
        if (place)
            screen->insertedToInterface();
    }
    ~UserCtlHarness()
    {
        delete screen;
        AuthData::clear();
    }
    UserCtlHarness(const UserCtlHarness &) = delete;
    UserCtlHarness &operator=(const UserCtlHarness &) = delete;

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

    template<class Widget>
    Widget *child(const char *name) const
    {
        return screen->findChild<Widget *>(QLatin1String(name));
    }

    QTemporaryDir settingsDir; // each screen starts from settings of its own
    ScriptedServer server;
    QPointer<UserCtl> screen;
};
