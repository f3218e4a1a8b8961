#include "scriptedserver.h"

#include <host/core/protocol.h>

ScriptedServer::ScriptedServer(QObject *parent)
    : ZRServerInterface(parent)
{}

Command ScriptedServer::lastSent(const QString &name) const
{
    for (auto it = m_sent.crbegin(); it != m_sent.crend(); ++it) {
        if (it->name == name)
            return *it;
    }
    return Command();
}

void ScriptedServer::script(const QString &name, Script script)
{
    m_scripts.insert(name, std::move(script));
}

void ScriptedServer::unscript(const QString &name)
{
    m_scripts.remove(name);
}

void ScriptedServer::answer(const Command &request, qint32 status, const QByteArray &data)
{
    Command reply = Command::answer(request, status, data);
    receive(reply);
}

void ScriptedServer::answerOk(const Command &request, const QByteArray &data)
{
    answer(request, zeral::proto::StatusOk, data);
}

void ScriptedServer::answerFailure(const Command &request, qint32 status, const QString &text)
{
    Command reply = Command::failure(request, status, text);
    receive(reply);
}

void ScriptedServer::push(const QString &name, const QByteArray &data)
{
    Command pushed;
    pushed.type = zeral::proto::NamedCommand;
    pushed.name = name;
    pushed.status = zeral::proto::StatusOk;
    pushed.data = data;
    receive(pushed);
}

void ScriptedServer::dropConnection()
{
    m_online = false;
    failRemoteRequests(QStringLiteral("connection dropped by the test"));
}

void ScriptedServer::transmit(const Command &command)
{
    m_sent.append(command);
    emit commandSent(command);
    const auto script = m_scripts.constFind(command.name);
    if (script == m_scripts.constEnd())
        return;
    const Script run = script.value();
    QMetaObject::invokeMethod(
        this,
        [this, run, command] {
            Command reply = run(command);
            reply.id = command.id;
            receive(reply);
        },
        Qt::QueuedConnection);
}
