#include "pgcluster.h"

#include <QAtomicInt>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QAtomicInt connectionCounter;

// Hands `path` to the user the cluster runs as.
bool giveTo(const QString &path, const passwd *user)
{
    return ::chown(QFile::encodeName(path).constData(), user->pw_uid, user->pw_gid) == 0;
}

} // namespace

PgCluster::PgCluster()
    : m_dir(QDir::tempPath() + QStringLiteral("/zr-pg-XXXXXX"))
{}

PgCluster::~PgCluster()
{
    if (m_running)
        stop(true);
}

QString PgCluster::binaryDir()
{
    const QString given = qEnvironmentVariable("ZR_PG_BIN");
    if (!given.isEmpty())
        return QFile::exists(given + QStringLiteral("/initdb")) ? given : QString();
    QDir versions(QStringLiteral("/usr/lib/postgresql"));
    QStringList found = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(found.begin(), found.end(),
              [](const QString &a, const QString &b) { return a.toInt() > b.toInt(); });
    for (const QString &version : qAsConst(found)) {
        const QString bin = versions.filePath(version) + QStringLiteral("/bin");
        if (QFile::exists(bin + QStringLiteral("/initdb"))
            && QFile::exists(bin + QStringLiteral("/pg_ctl")))
            return bin;
    }
    return {};
}

QString PgCluster::socketDir() const
{
    return m_dir.filePath(QStringLiteral("socket"));
}

bool PgCluster::runTool(const QString &tool, const QStringList &arguments, QString *why)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    const QString program = binaryDir() + QLatin1Char('/') + tool;
    if (m_asPostgresUser)
        process.start(QStringLiteral("runuser"),
                      QStringList{QStringLiteral("-u"), QStringLiteral("postgres"),
                                  QStringLiteral("--"), program}
                          + arguments);
    else
        process.start(program, arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        *why = QStringLiteral("%1 failed: %2").arg(tool, QString::fromLocal8Bit(process.readAll()));
        return false;
    }
    return true;
}

bool PgCluster::start(QString *why)
{
    if (m_running)
        return true;
    if (binaryDir().isEmpty()) {
        *why = QStringLiteral("PostgreSQL's initdb and pg_ctl are not installed (Debian package "
                              "postgresql, see scripts/packages.txt)");
        return false;
    }
    if (!m_dir.isValid()) {
        *why = QStringLiteral("no temporary folder for the cluster");
        return false;
    }
    const QString data = m_dir.filePath(QStringLiteral("data"));
    if (!m_made) {
        QDir().mkpath(socketDir());
        if (::geteuid() == 0) {
            const passwd *postgres = ::getpwnam("postgres");
            if (!postgres) {
                *why = QStringLiteral("running as root, and there is no user \"postgres\" to run "
                                      "the cluster as");
                return false;
            }
            m_asPostgresUser = true;
            QDir().mkpath(data);
            ::chmod(QFile::encodeName(m_dir.path()).constData(), 0755);
            if (!giveTo(data, postgres) || !giveTo(socketDir(), postgres)) {
                *why = QStringLiteral("can't hand the cluster's folder to \"postgres\"");
                return false;
            }
        }
        // No syncs unless asked: the cluster lives for one test run, and a test that kills
        // the server kills the process, not the machine.
        QStringList initdb{QStringLiteral("-D"),        data,
                           QStringLiteral("-A"),        QStringLiteral("trust"),
                           QStringLiteral("-U"),        QStringLiteral("zr"),
                           QStringLiteral("-E"),        QStringLiteral("UTF8"),
                           QStringLiteral("--locale=C")};
        if (!m_syncs)
            initdb << QStringLiteral("--no-sync");
        if (!runTool(QStringLiteral("initdb"), initdb, why))
            return false;
        m_made = true;
    }
    const QString options
        = QStringLiteral("-k %1 -c listen_addresses='' -c fsync=%2 "
                         "-c shared_buffers=16MB -c max_connections=60")
              .arg(socketDir(), m_syncs ? QStringLiteral("on") : QStringLiteral("off"));
    if (!runTool(QStringLiteral("pg_ctl"),
                 {QStringLiteral("-D"), data, QStringLiteral("-l"),
                  m_dir.filePath(QStringLiteral("socket/server.log")), QStringLiteral("-w"),
                  QStringLiteral("-o"), options, QStringLiteral("start")},
                 why))
        return false;
    m_running = true;
    return true;
}

bool PgCluster::stop(bool immediately)
{
    QString why;
    const bool stopped = runTool(
        QStringLiteral("pg_ctl"),
        {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")), QStringLiteral("-m"),
         immediately ? QStringLiteral("immediate") : QStringLiteral("fast"), QStringLiteral("-w"),
         QStringLiteral("stop")},
        &why);
    if (stopped)
        m_running = false;
    else
        qWarning("%s", qPrintable(why));
    return stopped;
}

QString PgCluster::urlOf(const QString &database) const
{
    return QStringLiteral("postgresql://zr@/%1?host=%2").arg(database, socketDir());
}

QString PgCluster::createDatabase(QString *why)
{
    if (!start(why))
        return {};
    const QString name = QStringLiteral("zr_test_%1").arg(++m_databases);
    const QString connection
        = QStringLiteral("pgcluster-%1").arg(connectionCounter.fetchAndAddOrdered(1));
    bool created = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connection);
        db.setHostName(socketDir());
        db.setUserName(QStringLiteral("zr"));
        db.setDatabaseName(QStringLiteral("postgres"));
        if (!db.open()) {
            *why = db.lastError().text();
        } else {
            QSqlQuery query(db);
            created = query.exec(QStringLiteral("CREATE DATABASE %1").arg(name));
            if (!created)
                *why = query.lastError().text();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return created ? urlOf(name) : QString();
}
