#include "database.h"

#include <server/engine/mail/mailoutbox.h>
#include <server/engine/serverlogging.h>
#include <server/engine/storage/schema.h>
#include <server/engine/storage/sqldialect.h>
#include <server/engine/storage/sqlfunctions.h>

#include <QAtomicInt>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

#include <libpq-fe.h>
#include <sqlite3.h>

namespace zeral::server {

namespace {
QAtomicInt connectionCounter;

PGconn *postgresHandle(const QSqlDatabase &db)
{
    const QVariant v = db.driver() ? db.driver()->handle() : QVariant();
    if (!v.isValid() || qstrcmp(v.typeName(), "PGconn*") != 0)
        return nullptr;
    return *static_cast<PGconn *const *>(v.constData());
}
} // namespace

Database::Database()
    : m_connectionName(QStringLiteral("zr-server-%1").arg(connectionCounter.fetchAndAddOrdered(1)))
{}

Database::~Database()
{
    close();
}

QString Database::open(const QString &path)
{
    m_address = DatabaseAddress(path);
    if (!m_address.problem().isEmpty())
        return QObject::tr("Не удалось открыть базу данных %1: %2.")
            .arg(m_address.displayText(), m_address.problem());
    QString error = m_address.isPostgres() ? openPostgres() : openSqlite();
    if (!error.isEmpty())
        return error;
    error = Schema::migrate(m_db);
    if (error.isEmpty() && !MailOutbox::createSchema(m_db))
        error = QObject::tr("Не удалось создать таблицу почты");
    if (!error.isEmpty())
        return QObject::tr("Не удалось подготовить базу данных %1: %2")
            .arg(m_address.displayText(), error);
    if (!m_address.isPostgres() && !SqlFunctions::install(handle()))
        return QObject::tr("Не удалось подключить функции SQL к базе данных %1").arg(path);
    qCInfo(lcServerDb) << "database open:" << m_address.displayText();
    return {};
}

QString Database::openSqlite()
{
    const QString path = m_address.text();
    m_db = m_address.addConnection(m_connectionName, QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!m_db.open())
        return QObject::tr("Не удалось открыть базу данных %1: %2. Проверьте путь и права на файл.")
            .arg(path, m_db.lastError().text());

    QSqlQuery pragma(m_db);
    // WAL with full syncs: a request is answered only after its commit has reached the disk,
    // so an answered change survives a crash of the process and of the machine. Secure delete
    // overwrites what a statement removes (a mail's text with its password once delivered),
    // instead of leaving it in free space of the file.
    const char *const pragmas[] = {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL",
                                   "PRAGMA foreign_keys=ON", "PRAGMA secure_delete=ON"};
    for (const char *statement : pragmas) {
        if (!pragma.exec(QLatin1String(statement)))
            return QObject::tr("База данных %1 недоступна: %2. Проверьте, что это файл SQLite.")
                .arg(path, pragma.lastError().text());
    }
    pragma.exec(QStringLiteral("PRAGMA journal_mode"));
    if (!pragma.next()
        || pragma.value(0).toString().compare(QLatin1String("wal"), Qt::CaseInsensitive) != 0)
        qCWarning(lcServerDb) << "the database does not run in WAL mode:" << path;
    pragma.finish();
    return {};
}

QString Database::openPostgres()
{
    m_db = m_address.addConnection(m_connectionName, QString());
    if (!m_db.open())
        return QObject::tr("Не удалось подключиться к базе данных PostgreSQL %1: %2. Проверьте "
                           "адрес, имя базы, пользователя и что сервер PostgreSQL запущен.")
            .arg(m_address.displayText(),
                 // libpq's first line says what failed; the rest is advice of its own.
                 m_db.lastError().databaseText().section(QLatin1Char('\n'), 0, 0).trimmed());
    return {};
}

void Database::close()
{
    if (!m_db.isValid())
        return;
    if (m_db.isOpen() && !m_address.isPostgres())
        SqlFunctions::remove(handle());
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
}

void Database::checkpoint()
{
    if (m_address.isPostgres() || !m_db.isOpen())
        return;
    const int status
        = sqlite3_wal_checkpoint_v2(handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    if (status != SQLITE_OK)
        qCInfo(lcServerDb) << "checkpoint left part of the log:" << sqlite3_errstr(status);
}

sqlite3 *Database::handle() const
{
    const QVariant v = m_db.driver()->handle();
    if (!v.isValid() || qstrcmp(v.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(v.constData());
}

bool Database::connectionLost() const
{
    if (!m_address.isPostgres())
        return false;
    // QtSql's driver may have closed it already on a failed statement.
    PGconn *connection = m_db.isOpen() ? postgresHandle(m_db) : nullptr;
    return !connection || PQstatus(connection) != CONNECTION_OK;
}

bool Database::ensureConnected()
{
    if (!m_address.isPostgres() || !m_db.isValid())
        return true;
    if (!connectionLost())
        return true;
    if (m_beforeReconnect)
        m_beforeReconnect();
    m_db.close();
    if (!m_db.open()) {
        qCWarning(lcServerDb) << "the database is still unreachable:"
                              << m_db.lastError().text().trimmed();
        return false;
    }
    qCInfo(lcServerDb) << "connected to the database again:" << m_address.displayText();
    return true;
}

bool Database::begin()
{
    if (!ensureConnected())
        return false;
    QSqlQuery query(m_db);
    for (const QString &statement : SqlDialect::of(m_db).beginWrite()) {
        if (!query.exec(statement)) {
            qCWarning(lcServerDb) << "begin failed:" << query.lastError().text();
            if (m_address.isPostgres())
                rollback();
            return false;
        }
    }
    return true;
}

bool Database::commit()
{
    QSqlQuery query(m_db);
    if (!query.exec(QStringLiteral("COMMIT"))) {
        qCWarning(lcServerDb) << "commit failed:" << query.lastError().text();
        rollback();
        return false;
    }
    return true;
}

void Database::rollback()
{
    QSqlQuery query(m_db);
    if (!query.exec(QStringLiteral("ROLLBACK")))
        qCDebug(lcServerDb) << "rollback:" << query.lastError().text();
}

} // namespace zeral::server
