#include "postgresclientsql.h"

#include <server/engine/serverlogging.h>

#include <QRegularExpression>
#include <QVariant>

#include <libpq-fe.h>
#include <poll.h>

namespace zeral::server {

namespace {

// Type oids of PostgreSQL's catalogue (pg_type), for values as SQLite's driver gives them.
enum : Oid {
    BoolOid = 16,
    ByteaOid = 17,
    Int8Oid = 20,
    Int2Oid = 21,
    Int4Oid = 23,
    OidOid = 26,
    Float4Oid = 700,
    Float8Oid = 701,
    NumericOid = 1700,
};

QVariant valueOf(const PGresult *result, int row, int column)
{
    if (PQgetisnull(result, row, column))
        return QVariant(QVariant::String); // a NULL, as SQLite's driver answers it
    const char *text = PQgetvalue(result, row, column);
    const int size = PQgetlength(result, row, column);
    switch (PQftype(result, column)) {
    case BoolOid:
        return QVariant(text[0] == 't');
    case Int2Oid:
    case Int4Oid:
    case Int8Oid:
    case OidOid:
        return QVariant(QByteArray::fromRawData(text, size).toLongLong());
    case Float4Oid:
    case Float8Oid:
    case NumericOid:
        return QVariant(QByteArray::fromRawData(text, size).toDouble());
    case ByteaOid: {
        size_t length = 0;
        unsigned char *bytes
            = PQunescapeBytea(reinterpret_cast<const unsigned char *>(text), &length);
        QByteArray value(reinterpret_cast<const char *>(bytes), int(length));
        PQfreemem(bytes);
        return QVariant(value);
    }
    default:
        return QVariant(QString::fromUtf8(text, size));
    }
}

// "permission denied for table passwords" names what was refused; other refusals are named
// by the statement's first word.
QString refusedPart(const QString &message, const QString &statement)
{
    static const QRegularExpression object(
        QStringLiteral("permission denied for (?:table|view|function|schema|relation|sequence|"
                       "language) ([^\\s]+)"));
    const QRegularExpressionMatch match = object.match(message);
    if (match.hasMatch())
        return match.captured(1);
    return statement.trimmed().section(QLatin1Char(' '), 0, 0).toUpper();
}

} // namespace

PostgresClientSql::PostgresClientSql(QByteArray connInfo)
    : m_connInfo(connInfo + " client_encoding=UTF8 application_name=zr-server-client-sql")
{}

PostgresClientSql::~PostgresClientSql()
{
    if (m_connection)
        PQfinish(m_connection);
}

bool PostgresClientSql::connected()
{
    if (m_connection && PQstatus(m_connection) == CONNECTION_OK)
        return true;
    if (m_connection)
        PQreset(m_connection);
    else
        m_connection = PQconnectdb(m_connInfo.constData());
    if (PQstatus(m_connection) == CONNECTION_OK) {
        // Notices of a client's statement ("no transaction in progress") are nobody's output.
        PQsetNoticeProcessor(
            m_connection, [](void *, const char *) {}, nullptr);
        return true;
    }
    qCWarning(lcServerDb) << "client SQL can't reach the database:"
                          << QString::fromUtf8(PQerrorMessage(m_connection)).trimmed();
    return false;
}

bool PostgresClientSql::exec(const char *sql)
{
    PGresult *result = PQexec(m_connection, sql);
    const bool ok = PQresultStatus(result) == PGRES_COMMAND_OK;
    if (!ok)
        qCWarning(lcServerDb) << "client SQL:" << sql << PQresultErrorMessage(result);
    PQclear(result);
    return ok;
}

void PostgresClientSql::cancel()
{
    PGcancel *request = PQgetCancel(m_connection);
    char error[256];
    if (request && !PQcancel(request, error, sizeof error))
        qCDebug(lcServerDb) << "client SQL cancel:" << error;
    PQfreeCancel(request);
}

PostgresClientSql::Outcome PostgresClientSql::run(const QString &statement, int rowLimit,
                                                  qint64 maxBytes, int timeLimitMs,
                                                  const QAtomicInt *stop)
{
    Outcome outcome;
    if (!connected()) {
        outcome.kind = Outcome::Unreachable;
        return outcome;
    }
    const QByteArray limits = "SET LOCAL statement_timeout = " + QByteArray::number(timeLimitMs);
    const auto begin = [&] {
        return exec("BEGIN READ ONLY") && exec(limits.constData())
               && exec("SET LOCAL ROLE zr_client_sql");
    };
    // A connection that the database dropped while idle shows only now (libpq may still call
    // it good): made anew once.
    if (!begin()) {
        PQreset(m_connection);
        if (PQstatus(m_connection) != CONNECTION_OK || !begin()) {
            const bool reachable = PQstatus(m_connection) == CONNECTION_OK;
            if (reachable)
                exec("ROLLBACK");
            outcome.kind = reachable ? Outcome::Failed : Outcome::Unreachable;
            return outcome;
        }
        PQsetNoticeProcessor(
            m_connection, [](void *, const char *) {}, nullptr);
    }
    const QByteArray text = statement.toUtf8();
    if (!PQsendQueryParams(m_connection, text.constData(), 0, nullptr, nullptr, nullptr, nullptr, 0)
        || !PQsetSingleRowMode(m_connection)) {
        outcome.detail = QString::fromUtf8(PQerrorMessage(m_connection)).trimmed();
        exec("ROLLBACK");
        return outcome;
    }

    bool cancelled = false; // by us: a limit reached, or the server stopping
    bool stopped = false;
    bool tooLarge = false;
    bool refused = false;
    QString error;
    QString errorState;
    qint64 bytes = 0;
    DbResult &rows = outcome.result;
    const auto describe = [&rows](const PGresult *result) {
        if (rows.columnCount > 0 || !rows.columnNames.isEmpty())
            return;
        rows.columnCount = PQnfields(result);
        for (int c = 0; c < rows.columnCount; ++c)
            rows.columnNames.append(QString::fromUtf8(PQfname(result, c)));
    };
    for (;;) {
        // Waits for the database in short steps, to see a stop of the server meanwhile.
        while (PQisBusy(m_connection)) {
            if (!cancelled && stop && stop->loadRelaxed() != 0) {
                stopped = cancelled = true;
                cancel();
            }
            pollfd socket{PQsocket(m_connection), POLLIN, 0};
            if (poll(&socket, 1, 50) < 0 || !PQconsumeInput(m_connection))
                break;
        }
        PGresult *result = PQgetResult(m_connection);
        if (!result)
            break;
        switch (PQresultStatus(result)) {
        case PGRES_SINGLE_TUPLE:
            describe(result);
            if (cancelled)
                break;
            for (int c = 0; c < rows.columnCount; ++c) {
                const QVariant value = valueOf(result, 0, c);
                bytes += 16
                         + (value.userType() == QMetaType::QString ? 2 * value.toString().size()
                                                                   : value.toByteArray().size());
                rows.values.append(value);
            }
            ++rows.rowCount;
            tooLarge = bytes > maxBytes;
            if (rows.rowCount >= rowLimit || tooLarge) {
                cancelled = true;
                cancel();
            }
            break;
        case PGRES_TUPLES_OK:
            describe(result);
            break;
        case PGRES_COMMAND_OK:
            refused = true;
            error = QString::fromUtf8(PQcmdStatus(result));
            break;
        case PGRES_COPY_OUT:
        case PGRES_COPY_IN:
        case PGRES_COPY_BOTH:
            // No rows of ours; the connection is dropped rather than led out of the copy.
            refused = true;
            error = QStringLiteral("COPY");
            PQclear(result);
            PQfinish(m_connection);
            m_connection = nullptr;
            break;
        default:
            errorState = QString::fromLatin1(PQresultErrorField(result, PG_DIAG_SQLSTATE));
            error = QString::fromUtf8(PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY));
            break;
        }
        if (!m_connection)
            break;
        PQclear(result);
    }
    if (!m_connection) {
        outcome.kind = Outcome::Refused;
        outcome.detail = error;
        return outcome;
    }
    const bool reachable = PQstatus(m_connection) == CONNECTION_OK;
    if (reachable)
        exec("ROLLBACK");

    if (stopped) {
        outcome.kind = Outcome::Stopped;
    } else if (tooLarge) {
        outcome.kind = Outcome::TooLarge;
    } else if (!reachable) {
        outcome.kind = Outcome::Unreachable;
    } else if (refused) {
        outcome.kind = Outcome::Refused;
        outcome.detail = refusedPart(error, statement);
    } else if (errorState == QLatin1String("42501") || errorState == QLatin1String("25006")) {
        // Insufficient privilege; a write in a read-only transaction.
        outcome.kind = Outcome::Refused;
        outcome.detail = refusedPart(error, statement);
    } else if (errorState == QLatin1String("57014") && !cancelled) {
        outcome.kind = Outcome::TimedOut;
    } else if (!errorState.isEmpty() && !(cancelled && errorState == QLatin1String("57014"))) {
        outcome.kind = Outcome::Failed;
        outcome.detail = error;
    } else {
        outcome.kind = Outcome::Rows;
    }
    return outcome;
}

} // namespace zeral::server
