#pragma once

#include <host/core/protocol.h>
#include <server/engine/ops/servertext.h>
#include <shared/types.h>

#include <QByteArray>
#include <QString>

namespace zeral::server {

// The outcome of a handler: the answer's status and payload, and what the audit log keeps.
// A refusal keeps its reason as a ServerText: the dispatcher puts it into the payload in the
// language of the session it answers, while the audit log keeps it in Russian.
struct Reply
{
    qint32 status = proto::StatusOk;
    QByteArray data; // of a success; a refusal's payload is its reason, made when answered
    ServerText reason;
    TYPE_ID object = 0;
    QString detail;
    QString objectName;         // for the audit log, if the store can't tell it (removed)
    bool change = false;        // an applied change, logged in the audit log
    int delayMs = 0;            // the answer is held back (slowed logins)
    bool answeredLater = false; // the handler answers later, through Request::answerLater

    bool isOk() const { return status == proto::StatusOk; }
    static Reply ok(QByteArray data = {});
    // The answer follows once work beside the event loop is done.
    static Reply later();
    static Reply changed(TYPE_ID object, QString detail, QByteArray data = {});
    static Reply fail(qint32 status, const ServerText &reason, TYPE_ID object = 0);
    // The storage failed under a request; the transaction was rolled back.
    static Reply internalError();
};

} // namespace zeral::server
