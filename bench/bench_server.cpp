// The server as the studio sees it: the real engine in a thread of its own on a temporary
// database, the studio's router ZRServerInterface over loopback TCP, after a real login.
// Times the round trip of a write (data.update_object of one user's parameter, answered after
// the push of the change) and of a read, then the login and the write of other operators
// while four sessions run a long client statement each. Prints "name value" lines in
// milliseconds; bench/run turns them into the table.
#include "benchreport.h"
#include "roundtrip.h"
#include "threadedengine.h"

#include <host/core/authdata.h>
#include <host/core/dbquery.h>
#include <host/core/loginclient.h>
#include <host/core/passhash.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <server/engine/serverengine.h>
#include <shared/dbkeys.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <memory>

using zeral::server::ServerEngine;
namespace command = zeral::proto::command;
using bench::roundTrip;
using bench::waitFor;

namespace {

constexpr int writeCount = 2000;
const QString rootPassword = QStringLiteral("RootPass1");

Command loginCommand()
{
    Command login = Command::named(QLatin1String(command::Login));
    login.data = ZRDataStream::pack(QStringLiteral("root"),
                                    PassHash::encrypt(rootPassword, QCryptographicHash::Md5),
                                    QStringLiteral("bench"));
    return login;
}

// A router of its own, connected and logged in as root without LoginClient (which fills the
// process-wide AuthData of the first operator).
struct Operator
{
    ZRServerInterface router;
    QByteArray session;

    bool open(quint16 port)
    {
        bool connected = false;
        QObject::connect(&router, &ZRServerInterface::connected, [&] { connected = true; });
        router.connectToServer(QStringLiteral("127.0.0.1"), port);
        if (!waitFor([&] { return connected; }, 10000))
            return false;
        Command answer;
        roundTrip(router, loginCommand(), &answer);
        ZRDataStream in(answer.data);
        in >> session;
        return answer.isOk();
    }
};

Command updateOf(zeral::TYPE_ID uid, const QByteArray &session, int generation)
{
    Command update = Command::named(QLatin1String(command::UpdateObject), session);
    update.data = ZRDataStream::pack(
        quint32(uid), QStringLiteral("OT_USER"), quint32(0),
        QHash<QString, QString>{{QString::fromLatin1(db::user::PATRONYMIC),
                                 QStringLiteral("Отчество%1").arg(generation)}});
    return update;
}

// The statement the users screen sends before a change that needs confirming.
const QString confirmationStatement = QStringLiteral(
    R"sql(SELECT fingers.user_object_id, templates.template_format, templates.template, role_is_accessed( fingers.user_object_id, 'RL_CONFIRM_USER_UPDATE' ),  get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  (SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name  FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, 'RL_CONFIRM_USER_UPDATE' ) AS "hasrole" FROM userid ) AS "src" WHERE hasrole = true ); )sql");

// Writes `count` users straight into the file, beside the running server (which only reads
// them): no command makes so many as quickly.
bool addUsers(const QString &path, int count)
{
    bool ok = true;
    {
        QSqlDatabase db
            = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench-users"));
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        ok = db.open() && db.transaction();
        QSqlQuery object(db), parameter(db), fingerprint(db), finger(db);
        ok = ok
             && object.prepare(QStringLiteral("INSERT INTO objects (uid, dataset, type, parent) "
                                              "VALUES (?, 'users', 'OT_USER', 0)"))
             && parameter.prepare(
                 QStringLiteral("INSERT INTO object_params (uid, key, value) VALUES (?, ?, ?)"))
             && fingerprint.prepare(
                 QStringLiteral("INSERT INTO templates (uid, template_format, template) "
                                "VALUES (?, 7, randomblob(256))"))
             && finger.prepare(QStringLiteral(
                 "INSERT INTO fingers (finger_id, user_object_id, finger) VALUES (?, ?, ?)"));
        const int firstUid = 10000000;
        int nextTemplate = 1;
        for (int i = 0; ok && i < count; ++i) {
            const int uid = firstUid + i;
            const bool guard = i % 100 == 0;
            object.addBindValue(uid);
            parameter.addBindValue(uid);
            parameter.addBindValue(QStringLiteral("PT_ROLETEMPLATE"));
            parameter.addBindValue(guard ? QStringLiteral("RT_SECURITY")
                                         : QStringLiteral("RT_OPERATOR"));
            ok = object.exec() && parameter.exec();
            for (int f = 0; ok && guard && f < 2; ++f, ++nextTemplate) {
                fingerprint.addBindValue(nextTemplate);
                finger.addBindValue(nextTemplate);
                finger.addBindValue(uid);
                finger.addBindValue(f);
                ok = fingerprint.exec() && finger.exec();
            }
        }
        ok = ok && db.commit();
        if (!ok)
            std::fprintf(stderr, "bench_server: %s\n", qPrintable(db.lastError().text()));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bench-users"));
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    // A line per request on stderr would be part of what is timed.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    QTemporaryDir dir;
    ServerEngine::Options options;
    options.databasePath = dir.filePath(QStringLiteral("bench.db"));
    options.loginPolicy.delayStepMs = 0;

    // As in the studio: the engine lives in a thread of its own.
    bench::ThreadedEngine engine(options);
    const QString error = engine.start(rootPassword);
    const quint16 port = engine.port();
    if (!error.isEmpty()) {
        std::fprintf(stderr, "bench_server: %s\n", qPrintable(error));
        return 1;
    }

    ZRServerInterface router;
    bool connected = false;
    QObject::connect(&router, &ZRServerInterface::connected, [&] { connected = true; });
    router.connectToServer(QStringLiteral("127.0.0.1"), port);
    LoginClient login(&router);
    bool loggedIn = false;
    QObject::connect(&login, &LoginClient::loggedIn, [&] { loggedIn = true; });
    if (!waitFor([&] { return connected; }, 10000)) {
        std::fprintf(stderr, "bench_server: no connection\n");
        return 1;
    }
    login.login(QStringLiteral("root"), rootPassword, QStringLiteral("bench"));
    if (!waitFor([&] { return loggedIn; }, 10000)) {
        std::fprintf(stderr, "bench_server: login failed\n");
        return 1;
    }
    const zeral::TYPE_ID root = AuthData::userId();

    // Every write is a real change, so every one is pushed before it is answered.
    QVector<double> writes;
    for (int i = 0; i < writeCount; ++i) {
        Command answer;
        writes.append(roundTrip(router, updateOf(root, AuthData::sessionId(), i), &answer));
        if (!answer.isOk()) {
            std::fprintf(stderr, "bench_server: write refused: %s\n",
                         qPrintable(answer.errorText()));
            return 1;
        }
    }
    bench::report("server_write_p50", writes);
    bench::reportPercentile("server_write_p99", writes, 99);

    QVector<double> reads;
    for (int i = 0; i < writeCount; ++i) {
        Command read
            = Command::named(QLatin1String(command::GetPermissions), AuthData::sessionId());
        read.data = ZRDataStream::pack(QList<quint32>{quint32(root)});
        reads.append(roundTrip(router, read));
    }
    bench::report("server_read_p50", reads);

    // Four operators each start a statement that runs until the server's time limit stops
    // it; meanwhile others log in (first round) or write (second round). The slowest of five
    // is the figure: a server that runs the statements in its event loop makes the first wait.
    std::vector<std::unique_ptr<Operator>> busy;
    for (int i = 0; i < 4; ++i) {
        busy.push_back(std::make_unique<Operator>());
        if (!busy.back()->open(port)) {
            std::fprintf(stderr, "bench_server: operator %d could not log in\n", i);
            return 1;
        }
    }
    for (const bool logins : {true, false}) {
        int longAnswers = 0;
        for (const auto &op : busy) {
            DbQuery query;
            query.statements = QStringList(
                QStringLiteral("WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c) "
                               "SELECT count(*) FROM c"));
            Command sql = Command::named(QLatin1String(command::ExecSql), op->session);
            sql.data = ZRDataStream::pack(query);
            op->router.send(sql, [&](Command &) { ++longAnswers; });
        }
        QVector<double> times;
        for (int i = 0; i < 5; ++i) {
            if (!logins) {
                times.append(roundTrip(router, updateOf(root, AuthData::sessionId(), i)));
                continue;
            }
            Operator other;
            QElapsedTimer clock;
            clock.start();
            if (!other.open(port)) {
                std::fprintf(stderr, "bench_server: login beside the long statements failed\n");
                return 1;
            }
            times.append(clock.nsecsElapsed() / 1e6);
        }
        bench::reportPercentile(logins ? "server_busy_login_max" : "server_busy_write_max", times,
                                100);
        waitFor([&] { return longAnswers == 4; }, 120000);
    }

    // The users screen's confirmation statement over 100,000 users, one in a hundred of them guards
    // with two fingers each: what the time limit of client statements must leave room for.
    if (!addUsers(options.databasePath, 100000)) {
        std::fprintf(stderr, "bench_server: could not add the users\n");
        return 1;
    }
    QVector<double> confirmations;
    for (int i = 0; i < 5; ++i) {
        DbQuery query;
        query.statements = QStringList(confirmationStatement);
        Command sql = Command::named(QLatin1String(command::ExecSql), AuthData::sessionId());
        sql.data = ZRDataStream::pack(query);
        Command answer;
        confirmations.append(roundTrip(router, sql, &answer));
        if (!answer.isOk()) {
            std::fprintf(stderr, "bench_server: confirmation statement failed: %s\n",
                         qPrintable(answer.errorText()));
            return 1;
        }
    }
    bench::report("server_confirm_sql", confirmations);

    return 0;
}
