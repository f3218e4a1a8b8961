#include "mailoutbox.h"

#include <server/engine/mail/maillog.h>
#include <server/engine/storage/sqldialect.h>

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace zeral::server {

namespace {

// Moments are stored as UTC text of one fixed width, so that text order is time order and
// a person reading the table sees a date.
const QString timeFormat = QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzzZ");

QString storedTime(const QDateTime &moment)
{
    return moment.toUTC().toString(timeFormat);
}

QDateTime readTime(const QVariant &value)
{
    QDateTime moment = QDateTime::fromString(value.toString(), timeFormat);
    moment.setTimeSpec(Qt::UTC);
    return moment;
}

} // namespace

QString MailOutbox::stateName(State state)
{
    switch (state) {
    case MailOutbox::State::Pending:
        return QStringLiteral("pending");
    case MailOutbox::State::Sent:
        return QStringLiteral("sent");
    case MailOutbox::State::Failed:
        return QStringLiteral("failed");
    case MailOutbox::State::Held:
        return QStringLiteral("held");
    case MailOutbox::State::Missing:
        break;
    }
    return QString();
}

namespace {

bool run(QSqlQuery &query, const char *what)
{
    if (query.exec())
        return true;
    qCWarning(lcMail) << "outbox statement failed:" << what << query.lastError().text();
    return false;
}

} // namespace

bool MailOutbox::createSchema(QSqlDatabase &db)
{
    const SqlDialect dialect = SqlDialect::of(db);
    const QString statements[] = {
        "CREATE TABLE IF NOT EXISTS mail_outbox ("
        " id "
            + dialect.autoKey()
            + ","
              " created TEXT NOT NULL,"
              " operator TEXT NOT NULL DEFAULT '',"
              " recipient TEXT NOT NULL,"
              " subject TEXT NOT NULL DEFAULT '',"
              " body TEXT NOT NULL DEFAULT '',"
              " message "
            + dialect.blobType()
            + " NOT NULL,"
              " state TEXT NOT NULL CHECK (state IN ('pending', 'sent', 'failed', 'held')),"
              " attempts INTEGER NOT NULL DEFAULT 0,"
              " last_error TEXT NOT NULL DEFAULT '',"
              " last_attempt TEXT,"
              " next_attempt TEXT,"
              " sent TEXT)",
        "CREATE INDEX IF NOT EXISTS mail_outbox_due ON mail_outbox (state, next_attempt)",
    };
    // Run as they are: PostgreSQL prepares no DDL.
    for (const QString &statement : statements) {
        QSqlQuery query(db);
        if (!query.exec(statement)) {
            qCWarning(lcMail) << "outbox statement failed: create schema"
                              << query.lastError().text();
            return false;
        }
    }
    return true;
}

qint64 MailOutbox::enqueue(QSqlDatabase &db, const RenderedMail &mail, const QString &operatorLogin,
                           bool relayConfigured)
{
    const QString now = storedTime(QDateTime::currentDateTimeUtc());
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "INSERT INTO mail_outbox (created, operator, recipient, subject, body, message, state,"
        " next_attempt) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
    query.addBindValue(now);
    query.addBindValue(operatorLogin);
    query.addBindValue(mail.recipient);
    query.addBindValue(mail.subject);
    query.addBindValue(mail.body);
    query.addBindValue(mail.message);
    query.addBindValue(stateName(relayConfigured ? State::Pending : State::Held));
    query.addBindValue(relayConfigured ? QVariant(now) : QVariant(QVariant::String));
    if (!run(query, "enqueue"))
        return -1;
    const qint64 id = query.lastInsertId().toLongLong();
    qCInfo(lcMail) << "mail queued id:" << id << "operator:" << operatorLogin
                   << (relayConfigured ? "pending" : "held, no relay configured");
    return id;
}

QList<MailOutbox::Entry> MailOutbox::due(QSqlDatabase &db, const QDateTime &now, int limit)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral(
        "SELECT id, recipient, subject, body, message, attempts, operator FROM mail_outbox"
        " WHERE state = 'pending' AND next_attempt <= ? ORDER BY next_attempt, id LIMIT ?"));
    query.addBindValue(storedTime(now));
    query.addBindValue(limit);
    QList<Entry> entries;
    if (!run(query, "due"))
        return entries;
    while (query.next()) {
        Entry entry;
        entry.id = query.value(0).toLongLong();
        entry.mail.recipient = query.value(1).toString();
        entry.mail.subject = query.value(2).toString();
        entry.mail.body = query.value(3).toString();
        entry.mail.message = query.value(4).toByteArray();
        entry.attempts = query.value(5).toInt();
        entry.operatorLogin = query.value(6).toString();
        entries.append(entry);
    }
    return entries;
}

bool MailOutbox::recordAttempt(QSqlDatabase &db, qint64 id, bool delivered, const QString &error,
                               const QDateTime &now, const QDateTime &retryAt, int maxAttempts)
{
    // SQLite evaluates every expression of SET on the row as it was, so "attempts + 1" is
    // the count including this attempt throughout. A mail that leaves the queue keeps no
    // text: the connections run with secure_delete, so the old bytes are overwritten too.
    QSqlQuery query(db);
    query.prepare(
        QLatin1String(
            "UPDATE mail_outbox SET attempts = attempts + 1, last_attempt = ?, last_error = "
            "COALESCE(?, ''),"
            " state = CASE WHEN ? THEN 'sent' WHEN attempts + 1 >= ? THEN 'failed' ELSE 'pending' "
            "END,"
            " next_attempt = CASE WHEN ? OR attempts + 1 >= ? THEN NULL ELSE ? END,"
            " body = CASE WHEN ? OR attempts + 1 >= ? THEN '' ELSE body END,"
            " message = CASE WHEN ? OR attempts + 1 >= ? THEN ")
        + SqlDialect::of(db).emptyBlob()
        + QLatin1String(" ELSE message END, sent = CASE WHEN ? THEN ? ELSE NULL END"
                        " WHERE id = ? AND state = 'pending'"));
    const QString at = storedTime(now);
    query.addBindValue(at);
    query.addBindValue(delivered ? QString() : error);
    query.addBindValue(delivered);
    query.addBindValue(maxAttempts);
    query.addBindValue(delivered);
    query.addBindValue(maxAttempts);
    query.addBindValue(storedTime(retryAt));
    for (int i = 0; i < 2; ++i) {
        query.addBindValue(delivered);
        query.addBindValue(maxAttempts);
    }
    query.addBindValue(delivered);
    query.addBindValue(at);
    query.addBindValue(id);
    if (!run(query, "record attempt"))
        return false;
    if (query.numRowsAffected() != 1) {
        qCWarning(lcMail) << "no pending mail to record an attempt on, id:" << id;
        return false;
    }
    return true;
}

MailOutbox::State MailOutbox::state(QSqlDatabase &db, qint64 id)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT state FROM mail_outbox WHERE id = ?"));
    query.addBindValue(id);
    if (!run(query, "state") || !query.next())
        return State::Missing;
    const QString name = query.value(0).toString();
    for (const State candidate : {State::Pending, State::Sent, State::Failed, State::Held}) {
        if (stateName(candidate) == name)
            return candidate;
    }
    return State::Missing;
}

QDateTime MailOutbox::nextDue(QSqlDatabase &db)
{
    QSqlQuery query(db);
    query.prepare(
        QStringLiteral("SELECT MIN(next_attempt) FROM mail_outbox WHERE state = 'pending'"));
    if (!run(query, "next due") || !query.next() || query.value(0).isNull())
        return QDateTime();
    return readTime(query.value(0));
}

int MailOutbox::releaseHeld(QSqlDatabase &db, const QDateTime &now)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral(
        "UPDATE mail_outbox SET state = 'pending', next_attempt = ? WHERE state = 'held'"));
    query.addBindValue(storedTime(now));
    if (!run(query, "release held"))
        return -1;
    return query.numRowsAffected();
}

} // namespace zeral::server
