#include "database.h"

#include <server/engine/mail/mailoutbox.h>
#include <server/engine/serverlogging.h>
#include <server/engine/storage/schema.h>
#include <server/engine/storage/sqlfunctions.h>

#include <QAtomicInt>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

#include <sqlite3.h>

namespace zeral::server {

namespace {
QAtomicInt connectionCounter;
}

Database::Database()
    : m_connectionName(QStringLiteral("zr-server-%1").arg(connectionCounter.fetchAndAddOrdered(1)))
{}

Database::~Database()
{
    close();
}

QString Database::open(const QString &path)
{
    m_path = path;
    m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    m_db.setDatabaseName(path);
    m_db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
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

    QString error = Schema::migrate(m_db);
    if (error.isEmpty() && !MailOutbox::createSchema(m_db))
        error = QObject::tr("Не удалось создать таблицу почты");
    if (!error.isEmpty())
        return QObject::tr("Не удалось подготовить базу данных %1: %2").arg(path, error);
    if (!SqlFunctions::install(handle()))
        return QObject::tr("Не удалось подключить функции SQL к базе данных %1").arg(path);
    qCInfo(lcServerDb) << "database open:" << path;
    return {};
}

void Database::close()
{
    if (!m_db.isValid())
        return;
    if (m_db.isOpen())
        SqlFunctions::remove(handle());
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
}

sqlite3 *Database::handle() const
{
    const QVariant v = m_db.driver()->handle();
    if (!v.isValid() || qstrcmp(v.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(v.constData());
}

bool Database::begin()
{
    QSqlQuery query(m_db);
    // IMMEDIATE: the write lock is taken at once, not half-way through a request.
    if (!query.exec(QStringLiteral("BEGIN IMMEDIATE"))) {
        qCWarning(lcServerDb) << "begin failed:" << query.lastError().text();
        return false;
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
