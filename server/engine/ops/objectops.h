#pragma once

#include <QCoreApplication>
#include <server/engine/ops/request.h>
#include <shared/objectinfo.h>

#include <QHash>

namespace zeral::server {

struct ServerState;
class Rights;

// The objects: snapshots, the role catalogue, and adding, changing and removing objects.
class ObjectOps
{
    Q_DECLARE_TR_FUNCTIONS(ObjectOps)

public:
    explicit ObjectOps(ServerState &state);

    Reply snapshot(Request &request);
    Reply roleCatalogue(Request &request);
    Reply addObject(Request &request);
    Reply updateObject(Request &request);
    Reply removeObject(Request &request);

private:
    // Checks a change of a user's parameters against the operator's rights and the stored
    // data; `stored` is the user before the change (uid 0 for a new one).
    Reply checkUserChange(const Request &request, const Rights &rights, const ObjectInfo &stored,
                          const QHash<QString, QString> &changes, bool passwordChange);
    bool loginInUse(const QString &login, TYPE_ID except);
    // Splits the write-only requests off the parameters; returns the client hash to store.
    static QString takePassword(QHash<QString, QString> *parameters);

    ServerState &m_state;
};

} // namespace zeral::server
