#include "sqlreader.h"

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <host/core/zrdatastream.h>
#include <server/engine/ops/postgresclientsql.h>
#include <server/engine/serverlogging.h>
#include <server/engine/storage/sqlfunctions.h>

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <sqlite3.h>

namespace zeral::server {

namespace {
QAtomicInt readerCounter;

sqlite3 *handleOf(const QSqlDatabase &db)
{
    const QVariant v = db.driver()->handle();
    if (!v.isValid() || qstrcmp(v.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(v.constData());
}
} // namespace

SqlReader::SqlReader(const QString &databasePath, int timeLimitMs, const QAtomicInt *stop)
    : m_connectionName(
        QStringLiteral("zr-server-reader-%1").arg(readerCounter.fetchAndAddOrdered(1)))
    , m_path(databasePath)
    , m_address(databasePath)
    , m_timeLimitMs(timeLimitMs)
    , m_stop(stop)
{}

SqlReader::~SqlReader()
{
    m_postgres.reset();
    if (!m_db.isValid())
        return;
    if (m_db.isOpen())
        SqlFunctions::remove(handleOf(m_db));
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
}

bool SqlReader::open()
{
    if (m_db.isOpen())
        return true;
    if (!m_db.isValid()) {
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
        m_db.setDatabaseName(m_path);
        // A reader of a WAL database waits for nobody but a checkpoint's short lock.
        m_db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=1000"));
    }
    if (!m_db.open()) {
        qCWarning(lcServerDb) << "could not open a reader of" << m_path << "-"
                              << m_db.lastError().text();
        return false;
    }
    if (!SqlFunctions::install(handleOf(m_db))) {
        qCWarning(lcServerDb) << "could not install the SQL functions on a reader of" << m_path;
        m_db.close();
        return false;
    }
    return true;
}

Reply SqlReader::run(const DbQuery &query)
{
    const int limit = query.maxRows > 0 ? qMin(query.maxRows, MaxRows) : MaxRows;
    if (m_address.isPostgres()) {
        if (!m_postgres)
            m_postgres = std::make_unique<PostgresClientSql>(m_address.libpqConnInfo());
        QByteArray packed;
        for (const QString &text : qAsConst(query.statements)) {
            const Reply failed = runOnPostgres(text, limit, &packed);
            if (!failed.isOk())
                return failed;
        }
        return Reply::ok(packed);
    }
    if (!open())
        return Reply::fail(
            proto::StatusInternal,
            QT_TRANSLATE_NOOP("ZRServer",
                              "Сервер не смог открыть базу данных для запроса SQL. Повторите "
                              "позже."));
    QByteArray packed;
    for (const QString &text : qAsConst(query.statements)) {
        const Reply failed = runOne(text, limit, &packed);
        if (!failed.isOk())
            return failed;
    }
    return Reply::ok(packed);
}

Reply SqlReader::runOne(const QString &text, int rowLimit, QByteArray *packed)
{
    DbResult result;
    QSqlQuery sql(m_db);
    sql.setForwardOnly(true);
    // The authorizer judges the statement while it is prepared, and only then.
    ReadOnlyScope readOnly(handleOf(m_db), m_timeLimitMs, m_stop);
    const bool ran = sql.exec(text);
    if (!ran && !readOnly.refused().isEmpty())
        return refusal(readOnly.refused());
    if (!ran && !readOnly.timedOut() && !readOnly.stopped())
        return badStatement(sql.lastError().text());
    const QSqlRecord record = sql.record();
    result.columnCount = record.count();
    for (int c = 0; c < record.count(); ++c)
        result.columnNames.append(record.fieldName(c));
    qint64 bytes = 0;
    while (ran && result.rowCount < rowLimit && bytes <= MaxAnswerBytes && sql.next()) {
        for (int c = 0; c < result.columnCount; ++c) {
            const QVariant value = sql.value(c);
            bytes += 16
                     + (value.userType() == QMetaType::QString ? 2 * value.toString().size()
                                                               : value.toByteArray().size());
            result.values.append(value);
        }
        ++result.rowCount;
    }
    if (readOnly.stopped())
        return stopping();
    if (readOnly.timedOut())
        return timedOut();
    if (bytes > MaxAnswerBytes)
        return tooLarge();
    if (sql.lastError().isValid())
        return badStatement(sql.lastError().text());
    *packed = ZRDataStream::pack(result);
    return Reply::ok();
}

Reply SqlReader::runOnPostgres(const QString &text, int rowLimit, QByteArray *packed)
{
    using Outcome = PostgresClientSql::Outcome;
    const Outcome outcome = m_postgres->run(text, rowLimit, MaxAnswerBytes, m_timeLimitMs, m_stop);
    switch (outcome.kind) {
    case Outcome::Rows:
        *packed = ZRDataStream::pack(outcome.result);
        return Reply::ok();
    case Outcome::Refused:
        return refusal(outcome.detail);
    case Outcome::TimedOut:
        return timedOut();
    case Outcome::Stopped:
        return stopping();
    case Outcome::TooLarge:
        return tooLarge();
    case Outcome::Unreachable:
        return Reply::fail(proto::StatusInternal,
                           QT_TRANSLATE_NOOP("ZRServer", "Сервер не смог открыть базу данных для "
                                                         "запроса SQL. Повторите позже."));
    case Outcome::Failed:
        break;
    }
    return badStatement(outcome.detail);
}

Reply SqlReader::refusal(const QString &what)
{
    qCWarning(lcServer) << "refused client SQL touching" << what;
    return Reply::fail(
        proto::StatusForbidden,
        ServerText(QT_TRANSLATE_NOOP(
                       "ZRServer", "Запросы SQL с клиента могут только читать данные; отказано: %1."))
            .arg(what));
}

Reply SqlReader::badStatement(const QString &error)
{
    return Reply::fail(proto::StatusMalformed,
                       ServerText(QT_TRANSLATE_NOOP("ZRServer", "Ошибка в запросе SQL: %1"))
                           .arg(error));
}

Reply SqlReader::timedOut() const
{
    return Reply::fail(
        proto::StatusMalformed,
        ServerText(QT_TRANSLATE_NOOP(
                       "ZRServer", "Запрос SQL выполнялся дольше %1 мс и был прерван. Сузьте запрос."))
            .arg(m_timeLimitMs));
}

Reply SqlReader::stopping()
{
    return Reply::fail(proto::StatusInternal,
                       QT_TRANSLATE_NOOP("ZRServer", "Сервер останавливается; запрос SQL прерван."));
}

Reply SqlReader::tooLarge()
{
    return Reply::fail(
        proto::StatusMalformed,
        ServerText(QT_TRANSLATE_NOOP("ZRServer", "Ответ на запрос SQL больше %1 МиБ. Запросите "
                                                 "меньше строк или столбцов."))
            .arg(MaxAnswerBytes / (1024 * 1024)));
}

} // namespace zeral::server
