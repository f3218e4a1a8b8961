#pragma once

#include <server/engine/ops/request.h>
#include <shared/objectinfo.h>

#include <QHash>

namespace zeral::server {

struct ServerState;
class Rights;

// The objects: snapshots, the role catalogue, and adding, changing and removing objects.
class ObjectOps
{

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

    // What a request asks of a user's password, split off its parameters.
    struct PasswordRequest
    {
        QString clientHash; // to store; empty: the password stays
        bool reset = false; // "PT_CLEAR_PASSWORD": the installation's default password
        bool set = false;   // "PT_SET_PASSWORD": a password the client chose
        bool changes() const { return reset || !clientHash.isEmpty(); }
    };
    // Splits the write-only requests off the parameters.
    static PasswordRequest takePassword(QHash<QString, QString> *parameters);
    // Checks the request and fills in what a reset or a set implies: the default password's
    // hash, and the obligation to change it, or its end. `explicitChanges` are the parameters
    // the request itself carries, which win. `self`: the user sets his own password.
    Reply preparePassword(PasswordRequest *password, const ObjectInfo &stored, bool self,
                          const QHash<QString, QString> &explicitParameters,
                          QHash<QString, QString> *toSet, QStringList *toRemove);
    // Stores the password's slow hash; false if hashing or the store failed.
    bool storePassword(TYPE_ID uid, const QString &clientHash);

    ServerState &m_state;
};

} // namespace zeral::server
