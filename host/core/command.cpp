#include "command.h"

#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>

bool Command::isOk() const
{
    return status == zeral::proto::StatusOk;
}

QString Command::errorText() const
{
    ZRDataStream in(data);
    QString text;
    in >> text;
    return in.status() == QDataStream::Ok ? text : QString();
}

Command Command::named(const QString &name, const QByteArray &sessionId)
{
    Command request;
    request.type = zeral::proto::NamedCommand;
    request.name = name;
    request.sessionId = sessionId;
    return request;
}

Command Command::answer(const Command &request, qint32 status, const QByteArray &data)
{
    Command reply;
    reply.id = request.id;
    reply.type = request.type;
    reply.name = request.name;
    reply.status = status;
    reply.sessionId = request.sessionId;
    reply.data = data;
    return reply;
}

Command Command::failure(const Command &request, qint32 status, const QString &text)
{
    return answer(request, status, ZRDataStream::pack(text));
}

QDataStream &operator<<(QDataStream &out, const Command &command)
{
    return out << command.id << command.type << command.name << command.status << command.sessionId
               << command.data;
}

QDataStream &operator>>(QDataStream &in, Command &command)
{
    return in >> command.id >> command.type >> command.name >> command.status >> command.sessionId
           >> command.data;
}

// Commands travel through queued signals (pushes, state changes) in the studio.
static void registerCommandMetaType()
{
    qRegisterMetaType<Command>("Command");
}
Q_CONSTRUCTOR_FUNCTION(registerCommandMetaType)
