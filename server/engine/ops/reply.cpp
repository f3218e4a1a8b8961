#include "reply.h"

#include <QtGlobal>

namespace zeral::server {

Reply Reply::ok(QByteArray data)
{
    Reply reply;
    reply.data = std::move(data);
    return reply;
}

Reply Reply::later()
{
    Reply reply;
    reply.answeredLater = true;
    return reply;
}

Reply Reply::changed(TYPE_ID object, QString detail, QByteArray data)
{
    Reply reply = ok(std::move(data));
    reply.object = object;
    reply.detail = std::move(detail);
    reply.change = true;
    return reply;
}

Reply Reply::fail(qint32 status, const ServerText &reason, TYPE_ID object)
{
    Reply reply;
    reply.status = status;
    reply.reason = reason;
    reply.object = object;
    reply.detail = reason.toString();
    return reply;
}

Reply Reply::internalError()
{
    return fail(proto::StatusInternal,
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Сервер не смог выполнить запрос; ничего не изменено. "
                                  "Повторите позже или сообщите администратору."));
}

} // namespace zeral::server
