#pragma once

#include <server/engine/mail/renderedmail.h>

#include <QDateTime>
#include <QList>

class QSqlDatabase;

namespace zeral::server {

// The table "mail_outbox" and every statement on it. The engine creates the table in its
// migrations and enqueues within the transaction of the request; the sender reads due mails
// and records each attempt through its own connection.
class MailOutbox
{
public:
    // Missing: no mail of that id.
    enum class State { Pending, Sent, Failed, Held, Missing };
    struct Entry
    {
        qint64 id = 0;
        QString operatorLogin; // who queued it: he is told the outcome
        RenderedMail mail;
        int attempts = 0;
    };

    // Creates the table and its index if they are missing; false with the error logged.
    static bool createSchema(QSqlDatabase &db);
    // Adds one mail; Held when no relay is configured, Pending otherwise. Returns the id or -1.
    static qint64 enqueue(QSqlDatabase &db, const RenderedMail &mail, const QString &operatorLogin,
                          bool relayConfigured);
    // Pending mails whose next attempt is due at `now`, oldest first.
    static QList<Entry> due(QSqlDatabase &db, const QDateTime &now, int limit);
    // Records the outcome of one attempt; a failure is retried after `retryAt` until the
    // attempts reach `maxAttempts`, then the mail is Failed for good. A mail Sent or Failed
    // loses its body and message, which carry the password of a token mail: only recipient,
    // subject, times, attempts and state stay for the record.
    static bool recordAttempt(QSqlDatabase &db, qint64 id, bool delivered, const QString &error,
                              const QDateTime &now, const QDateTime &retryAt, int maxAttempts);
    static State state(QSqlDatabase &db, qint64 id);
    static QString stateName(State state);
    // When the earliest pending mail is due; invalid when none is pending.
    static QDateTime nextDue(QSqlDatabase &db);
    // Makes the held mails pending, due at `now`, once a relay is there. Returns how many,
    // or -1 with the error logged.
    static int releaseHeld(QSqlDatabase &db, const QDateTime &now);
};

} // namespace zeral::server
