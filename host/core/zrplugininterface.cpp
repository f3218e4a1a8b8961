#include "zrplugininterface.h"

#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrserverinterface.h>

#include <QCoreApplication>
#include <QTimer>

ZRPluginInterface::~ZRPluginInterface()
{
    if (m_server)
        m_server->unregisterPlugin(this);
}

QList<CommandType> ZRPluginInterface::init(ZRServerInterface *server, const QString &name)
{
    m_server = server;
    m_name = name;
    return {};
}

void ZRPluginInterface::uninit() {}

ZRServerInterface *ZRPluginInterface::server() const
{
    return m_server;
}

void ZRPluginInterface::initOnExchangeReady() {}

QWidget *ZRPluginInterface::widget()
{
    return nullptr;
}

QStringList ZRPluginInterface::requireList() const
{
    return {};
}

Command ZRPluginInterface::newCommand() const
{
    return Command::named(QString());
}

void ZRPluginInterface::sendQuery(const Command &command, Callback callback)
{
    const unsigned int key = ++m_lastCallbackKey;
    m_callbacks.insert(key, std::move(callback));
    dispatch(key, command, &ZRPluginInterface::finishQuery);
}

void ZRPluginInterface::sendSplitQuery(const QList<Command> &parts, Callback callback)
{
    if (parts.isEmpty()) {
        // Nothing to send, and nothing can fail: a success with no data, later as always.
        const unsigned int key = ++m_lastCallbackKey;
        m_callbacks.insert(key, std::move(callback));
        Command answer = newCommand();
        answer.status = zeral::proto::StatusOk;
        answerLater(key, answer);
        return;
    }
    const unsigned long long splitId = ++m_lastSplitId;
    SubCommandsInfo info;
    info.firstKey = m_lastCallbackKey + 1;
    info.outstanding = parts.size();
    info.answers.resize(parts.size());
    info.callback = std::move(callback);
    m_subCommandsInfo.insert(splitId, std::move(info));
    for (const Command &part : parts) {
        const unsigned int key = ++m_lastCallbackKey;
        m_subCommands.insert(key, splitId);
        dispatch(key, part, &ZRPluginInterface::finishSubCommand);
    }
}

void ZRPluginInterface::dispatch(unsigned int key, const Command &command, Finisher finish)
{
    if (!m_server) {
        failLater(key, command);
        return;
    }
    m_server->send(
        command, [this, key, finish](Command &answer) { (this->*finish)(key, answer); }, this);
}

void ZRPluginInterface::registerCommandHandler(const CommandType &type, Callback handler)
{
    m_handlers.insert(type, std::move(handler));
}

void ZRPluginInterface::handleCommand(Command &command)
{
    const auto handler = m_handlers.constFind({command.type, command.name});
    if (handler == m_handlers.constEnd()) {
        qCDebug(lcHost) << "no handler for" << command.name << "in" << pluginName();
        command.status = zeral::proto::StatusNotFound;
        return;
    }
    handler.value()(command);
}

void ZRPluginInterface::finishQuery(unsigned int key, Command &answer)
{
    const Callback callback = m_callbacks.take(key);
    if (callback)
        callback(answer);
}

void ZRPluginInterface::finishSubCommand(unsigned int key, Command &answer)
{
    const unsigned long long splitId = m_subCommands.take(key);
    const auto it = m_subCommandsInfo.find(splitId);
    if (it == m_subCommandsInfo.end())
        return;
    it->answers[int(key - it->firstKey)] = answer;
    if (--it->outstanding > 0)
        return;

    SubCommandsInfo info = std::move(it.value());
    m_subCommandsInfo.erase(it);
    Command combined = info.answers.constFirst();
    combined.data.clear();
    for (const Command &part : qAsConst(info.answers)) {
        if (!part.isOk()) {
            combined.status = part.status;
            combined.data = part.data;
            break;
        }
        combined.data.append(part.data);
    }
    if (info.callback)
        info.callback(combined);
}

void ZRPluginInterface::failLater(unsigned int key, const Command &request)
{
    answerLater(key, Command::failure(request, zeral::proto::StatusConnectionLost,
                                      QCoreApplication::translate("ZRPluginInterface",
                                                                  "Нет соединения с сервером")));
}

void ZRPluginInterface::answerLater(unsigned int key, const Command &answer)
{
    // The answer still comes from the event loop, never from inside the call.
    QObject *context = object() ? object() : QCoreApplication::instance();
    QTimer::singleShot(0, context, [this, key, answer] {
        Command delivered = answer;
        if (m_subCommands.contains(key))
            finishSubCommand(key, delivered);
        else
            finishQuery(key, delivered);
    });
}
