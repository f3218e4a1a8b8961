#pragma once

#include <host/core/command.h>
#include <host/core/dbquery.h>
#include <shared/inheritdata.h>
#include <shared/objectinfo.h>
#include <shared/objectpermission.h>
#include <shared/types.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>

class ZRPluginInterface;

namespace zr5sdk {

// The data access object of a plugin: one named request per operation, sent through the
// plugin's connection; the callback gets the answer (docs/protocol.md tells each payload).
class Data
{
public:
    using Callback = std::function<void(Command &)>;

    Data(ZRPluginInterface *plugin, const QByteArray &sessionId);

    // Answer: qint32, the new object's uid.
    void addObject(const zeral::ObjectInfo &object, const QList<zeral::_INHERIT_DATA> &links,
                   Callback callback);
    // Changes only the parameters the object carries.
    void updateObject(const zeral::ObjectInfo &object, Callback callback);
    void removeObject(const zeral::ObjectInfo &object, Callback callback);
    void roleTemplatePrescribeUser(zeral::TYPE_ID uid, const QString &roleTemplateId,
                                   Callback callback);
    void addPermissions(const QList<zeral::OBJECT_PERMISSION> &permissions, Callback callback);
    // Replaces the whole set of the user's permissions.
    void updatePermissions(zeral::TYPE_ID uid, const QList<zeral::OBJECT_PERMISSION> &permissions,
                           Callback callback);
    // Answer: QList<OBJECT_PERMISSION>.
    void getPermissions(const QList<zeral::TYPE_ID> &uids, Callback callback);
    // Answer: QHash<QString, _ROLETEMPLATE_INFO>, QList<QString>, bool.
    void roleTemplateInherit(const QString &roleTemplateId, Callback callback);
    // Answer: QHash<unsigned int, unsigned int>, uid to the number of stored templates.
    void getUserFingersExists(const QList<zeral::TYPE_ID> &uids, Callback callback);
    // Answer: DbResult.
    void execSql(const DbQuery &query, Callback callback);
    // Answer: QHash<QByteArray, ConnectedUserInfo>, then the server's QDateTime.
    void getSessionsInfo(Callback callback);

    QByteArray sessionId() const { return m_sessionId; }

private:
    void send(const char *name, const QByteArray &payload, Callback callback);

    ZRPluginInterface *m_plugin;
    QByteArray m_sessionId;
};

} // namespace zr5sdk
