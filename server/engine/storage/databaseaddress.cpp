#include "databaseaddress.h"

#include <QUrl>
#include <QUrlQuery>

namespace zeral::server {

namespace {

bool isPostgresUrl(const QString &text)
{
    return text.startsWith(QLatin1String("postgresql://"))
           || text.startsWith(QLatin1String("postgres://"));
}

// A server that stops answering is noticed by the next request, not after minutes; the
// database's notices ("already exists, skipping") stay out of the server's output.
constexpr char ConnectOptions[] = "connect_timeout=5 options='-c client_min_messages=warning'";

// A libpq connection value in single quotes, with quotes and backslashes escaped.
QByteArray quoted(const QString &value)
{
    QByteArray bytes = value.toUtf8();
    bytes.replace('\\', "\\\\");
    bytes.replace('\'', "\\'");
    return '\'' + bytes + '\'';
}

} // namespace

DatabaseAddress::DatabaseAddress(const QString &text)
    : m_text(text)
{
    if (!isPostgresUrl(text)) {
        if (text.isEmpty())
            m_problem = QStringLiteral("no database given");
        return;
    }
    m_backend = Backend::Postgres;
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid()) {
        m_problem = QStringLiteral("not a PostgreSQL URL: %1").arg(url.errorString());
        return;
    }
    m_host = url.host(QUrl::FullyDecoded);
    m_port = url.port(-1);
    m_user = url.userName(QUrl::FullyDecoded);
    m_password = url.password(QUrl::FullyDecoded);
    m_databaseName = url.path(QUrl::FullyDecoded).mid(1);
    const QUrlQuery query(url);
    if (query.hasQueryItem(QStringLiteral("host")))
        m_host = query.queryItemValue(QStringLiteral("host"), QUrl::FullyDecoded);
    if (query.hasQueryItem(QStringLiteral("port")))
        m_port = query.queryItemValue(QStringLiteral("port")).toInt();
    if (m_databaseName.isEmpty() || m_databaseName.contains(QLatin1Char('/')))
        m_problem
            = QStringLiteral("the URL names no database (postgresql://user@host:port/dbname)");
}

QString DatabaseAddress::displayText() const
{
    if (!isPostgres())
        return m_text;
    QUrl url(m_text);
    url.setPassword(QString());
    return url.toString();
}

QSqlDatabase DatabaseAddress::addConnection(const QString &name, const QString &sqliteOptions) const
{
    if (!isPostgres()) {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(m_text);
        db.setConnectOptions(sqliteOptions);
        return db;
    }
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
    db.setDatabaseName(m_databaseName);
    if (!m_host.isEmpty())
        db.setHostName(m_host);
    if (m_port > 0)
        db.setPort(m_port);
    if (!m_user.isEmpty())
        db.setUserName(m_user);
    if (!m_password.isEmpty())
        db.setPassword(m_password);
    db.setConnectOptions(QString::fromLatin1(ConnectOptions));
    return db;
}

QByteArray DatabaseAddress::libpqConnInfo() const
{
    QByteArray info = "dbname=" + quoted(m_databaseName) + ' ' + ConnectOptions;
    if (!m_host.isEmpty())
        info += " host=" + quoted(m_host);
    if (m_port > 0)
        info += " port=" + QByteArray::number(m_port);
    if (!m_user.isEmpty())
        info += " user=" + quoted(m_user);
    if (!m_password.isEmpty())
        info += " password=" + quoted(m_password);
    return info;
}

} // namespace zeral::server
