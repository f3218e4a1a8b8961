#pragma once

#include <host/core/command.h>
#include <host/core/commandtype.h>
#include <host/core/subcommandsinfo.h>

#include <QHash>
#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QtPlugin>

#include <functional>

class QObject;
class QWidget;
class ZRServerInterface;

// What a plugin of the studio is, and its way to the server. A plugin derives from its
// QObject (usually a widget) and from this interface.
class ZRPluginInterface
{
public:
    using Callback = std::function<void(Command &)>;

    ZRPluginInterface() = default;
    virtual ~ZRPluginInterface();
    ZRPluginInterface(const ZRPluginInterface &) = delete;
    ZRPluginInterface &operator=(const ZRPluginInterface &) = delete;

    // Stores the connection and returns the command types this plugin handles; an override
    // calls the base first and appends its own.
    virtual QList<CommandType> init(ZRServerInterface *server, const QString &name);
    virtual void uninit();
    virtual void initOnExchangeReady();
    virtual QString pluginName() const = 0;
    virtual int pluginVersion() const = 0;
    virtual QString pluginBuild() const = 0;
    // The plugin's widget, or null if its object isn't a widget.
    virtual QWidget *widget();
    virtual QObject *object() = 0;
    // Names of the studio's services the plugin needs; none by default.
    virtual QStringList requireList() const;

    // An empty command of the named kind, ready to be filled and sent.
    Command newCommand() const;
    // Sends the command; the callback gets the answer once, later, on the GUI thread.
    void sendQuery(const Command &command, Callback callback);
    // Sends several commands as one request: `callback` runs once after every part has
    // been answered, with the data of all parts one after the other, or with the first
    // failed part's status and data. No parts at all is a success with no data.
    void sendSplitQuery(const QList<Command> &parts, Callback callback);
    // Makes `handler` the receiver of every command of that type that reaches the plugin.
    void registerCommandHandler(const CommandType &type, Callback handler);

    // Called by the router with a command of a type this plugin registered.
    void handleCommand(Command &command);

    ZRServerInterface *server() const;
    QString instanceName() const { return m_name; }

private:
    using Finisher = void (ZRPluginInterface::*)(unsigned int key, Command &answer);
    // Sends through the router, or fails later when there is none.
    void dispatch(unsigned int key, const Command &command, Finisher finish);
    void finishQuery(unsigned int key, Command &answer);
    void finishSubCommand(unsigned int key, Command &answer);
    void failLater(unsigned int key, const Command &request);
    void answerLater(unsigned int key, const Command &answer);

    QHash<unsigned int, Callback> m_callbacks;
    QHash<CommandType, Callback> m_handlers;
    QHash<unsigned int, unsigned long long> m_subCommands; // callback key -> split request
    QHash<unsigned long long, SubCommandsInfo> m_subCommandsInfo;
    QPointer<ZRServerInterface> m_server; // the studio may tear its router down first
    QString m_name;
    unsigned int m_lastCallbackKey = 0;
    unsigned long long m_lastSplitId = 0;
};

#define ZRPluginInterface_iid "zeral.zrservice.ZRPluginInterface/1.0"
Q_DECLARE_INTERFACE(ZRPluginInterface, ZRPluginInterface_iid)
