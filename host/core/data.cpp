#include "data.h"

#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrplugininterface.h>

namespace zr5sdk {

namespace command = zeral::proto::command;

Data::Data(ZRPluginInterface *plugin, const QByteArray &sessionId)
    : m_plugin(plugin)
    , m_sessionId(sessionId)
{}

void Data::addObject(const zeral::ObjectInfo &object, const QList<zeral::_INHERIT_DATA> &links,
                     Callback callback)
{
    send(command::AddObject, ZRDataStream::pack(object, links), std::move(callback));
}

void Data::updateObject(const zeral::ObjectInfo &object, Callback callback)
{
    send(command::UpdateObject,
         ZRDataStream::pack(object.uid, object.type, object.parent, object.parameters),
         std::move(callback));
}

void Data::removeObject(const zeral::ObjectInfo &object, Callback callback)
{
    send(command::RemoveObject, ZRDataStream::pack(object.uid, object.type), std::move(callback));
}

void Data::roleTemplatePrescribeUser(zeral::TYPE_ID uid, const QString &roleTemplateId,
                                     Callback callback)
{
    send(command::PrescribeRoleTemplate, ZRDataStream::pack(uid, roleTemplateId),
         std::move(callback));
}

void Data::addPermissions(const QList<zeral::OBJECT_PERMISSION> &permissions, Callback callback)
{
    send(command::AddPermissions, ZRDataStream::pack(permissions), std::move(callback));
}

void Data::updatePermissions(zeral::TYPE_ID uid, const QList<zeral::OBJECT_PERMISSION> &permissions,
                             Callback callback)
{
    send(command::UpdatePermissions, ZRDataStream::pack(uid, permissions), std::move(callback));
}

void Data::getPermissions(const QList<zeral::TYPE_ID> &uids, Callback callback)
{
    send(command::GetPermissions, ZRDataStream::pack(uids), std::move(callback));
}

void Data::roleTemplateInherit(const QString &roleTemplateId, Callback callback)
{
    send(command::RoleTemplateInherit, ZRDataStream::pack(roleTemplateId), std::move(callback));
}

void Data::getUserFingersExists(const QList<zeral::TYPE_ID> &uids, Callback callback)
{
    send(command::GetUserFingersExists, ZRDataStream::pack(uids), std::move(callback));
}

void Data::execSql(const DbQuery &query, Callback callback)
{
    send(command::ExecSql, ZRDataStream::pack(query), std::move(callback));
}

void Data::getSessionsInfo(Callback callback)
{
    send(command::GetSessionsInfo, QByteArray(), std::move(callback));
}

void Data::send(const char *name, const QByteArray &payload, Callback callback)
{
    Command request = m_plugin->newCommand();
    request.name = QLatin1String(name);
    request.sessionId = m_sessionId;
    request.data = payload;
    m_plugin->sendQuery(request, std::move(callback));
}

} // namespace zr5sdk
