#pragma once

#include <server/engine/cluster/clusterlink.h>
#include <server/engine/ops/serverlanguages.h>
#include <server/engine/session/loginthrottle.h>
#include <server/engine/session/sessionregistry.h>
#include <server/engine/storage/database.h>
#include <server/engine/storage/objectstore.h>

#include <QList>

#include <QDateTime>
#include <QPointer>

#include <functional>
#include <memory>

namespace zeral::server {

class ClusterLink;
class MailSender;
class MailRenderer;

// What the handlers of requests share: the database, the sessions, the clock, the mail and
// the catalogues of the texts.
// It lives in the engine's thread and is touched from nowhere else.
struct ServerState
{
    std::function<QDateTime()> clock;
    Database database;
    std::unique_ptr<ObjectStore> store;
    // The other servers of a PostgreSQL database; null on SQLite. Goes before the database.
    std::unique_ptr<ClusterLink> cluster;
    SessionRegistry sessions;
    ServerLanguages languages; // the catalogues of the texts for operators
    std::unique_ptr<LoginThrottle> throttle;
    std::unique_ptr<MailRenderer> mailRenderer;
    QPointer<MailSender> mailSender; // null without a relay: mail stays in the outbox
    TYPE_ID rootUid = 0;
    int resumeWindowSeconds = 600;    // how long a session waits for its client to come back
    int clientSqlTimeLimitMs = 10000; // how long one statement of data.exec_sql may run
    int clientSqlWorkers = 4;         // data.exec_sql statements in flight, in all
    int clientSqlPerSession = 2;      // ... and of one session
};

} // namespace zeral::server
