// The server on its two databases. First the round trip of a write (data.update_object,
// answered after its push) through the studio's router over loopback, on an SQLite file and
// on PostgreSQL, each engine in a thread of its own. Then a fleet of studios spread over two
// servers sharing one PostgreSQL database: each polls the sessions list (as the sessions tab
// does) and writes its own user's parameter, for a bounded time; every write also reaches
// the other server's studios as a push. Prints "name value" lines in milliseconds (counts
// for the errors); bench/run turns them into the table. A throwaway cluster is made in a
// temporary folder (tests/support/pgcluster.h), syncing its writes as an installation does.
// Each studio of the fleet writes and polls once every 2.2 s or so, alternately.
//
// Usage: bench_pgserver [--seconds N] [--studios N]   (20 s and 50 studios by default; the
// long run of five minutes is --seconds 300)
#include "benchreport.h"
#include "roundtrip.h"
#include "threadedengine.h"

#include <host/core/framecodec.h>
#include <host/core/passhash.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <shared/dbkeys.h>
#include <shared/objectinfo.h>
#include <tests/support/pgcluster.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

using zeral::server::ServerEngine;
namespace command = zeral::proto::command;
using bench::roundTrip;
using bench::waitFor;

namespace {

const QString rootPassword = QStringLiteral("RootPass1");

[[noreturn]] void fail(const QString &what)
{
    std::fprintf(stderr, "bench_pgserver: %s\n", qPrintable(what));
    std::exit(1);
}

// One studio: its own router, logged in as root.
struct Studio
{
    ZRServerInterface router;
    QByteArray session;
    zeral::TYPE_ID user = 0; // the user this studio writes
    int generation = 0;
    bool busy = false;

    void open(quint16 port)
    {
        bool connected = false;
        QObject::connect(&router, &ZRServerInterface::connected, [&] { connected = true; });
        router.connectToServer(QStringLiteral("127.0.0.1"), port);
        if (!waitFor([&] { return connected; }, 10000))
            fail(QStringLiteral("no connection to port %1").arg(port));
        Command login = Command::named(QLatin1String(command::Login));
        login.data = ZRDataStream::pack(QStringLiteral("root"),
                                        PassHash::encrypt(rootPassword, QCryptographicHash::Md5),
                                        QStringLiteral("bench"));
        Command answer;
        roundTrip(router, login, &answer);
        if (!answer.isOk())
            fail(QStringLiteral("login refused: %1").arg(answer.errorText()));
        ZRDataStream in(answer.data);
        in >> session;
    }
    Command nextWrite()
    {
        Command update = Command::named(QLatin1String(command::UpdateObject), session);
        update.data = ZRDataStream::pack(
            quint32(user), QStringLiteral("OT_USER"), quint32(0),
            QHash<QString, QString>{{QString::fromLatin1(db::user::PATRONYMIC),
                                     QStringLiteral("Отчество%1").arg(++generation)}});
        return update;
    }
    Command poll() const
    {
        return Command::named(QLatin1String(command::GetSessionsInfo), session);
    }
};

// A studio of the fleet as the server sees it: its connection, its requests and the pushes
// it is sent, read off the socket frame by frame. Fifty studios' routers in one thread of the
// benchmark would measure that thread (each router feeds the process-wide store); these cost
// the benchmark almost nothing, so the figures are the servers'.
struct WireStudio
{
    QTcpSocket socket;
    QByteArray session;
    zeral::TYPE_ID user = 0;
    int generation = 0;
    quint64 nextId = 0;
    quint64 waitingFor = 0; // the request in flight, 0 if none
    std::function<void(const Command &)> answered;

    void open(quint16 port)
    {
        QObject::connect(&socket, &QTcpSocket::readyRead, [this] {
            for (;;) {
                Command frame;
                QString error;
                if (FrameCodec::read(&socket, &frame, &error) != FrameCodec::ReadResult::Frame)
                    return;
                if (frame.id != 0 && frame.id == waitingFor) {
                    waitingFor = 0;
                    if (answered)
                        answered(frame);
                }
            }
        });
        socket.connectToHost(QHostAddress::LocalHost, port);
        if (!waitFor([this] { return socket.state() == QAbstractSocket::ConnectedState; }, 10000))
            fail(QStringLiteral("no connection to port %1").arg(port));
        socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        Command answer;
        answered = [&answer](const Command &frame) {
            answer = frame;
        };
        send(QLatin1String(command::Login),
             ZRDataStream::pack(QStringLiteral("root"),
                                PassHash::encrypt(rootPassword, QCryptographicHash::Md5),
                                QStringLiteral("bench")));
        if (!waitFor([this] { return waitingFor == 0; }, 10000) || !answer.isOk())
            fail(QStringLiteral("login refused"));
        ZRDataStream in(answer.data);
        in >> session;
        answered = nullptr;
    }
    void send(const QString &name, const QByteArray &data)
    {
        Command request = Command::named(name, session);
        request.type = zeral::proto::NamedCommand;
        request.id = ++nextId;
        request.data = data;
        waitingFor = request.id;
        socket.write(FrameCodec::encode(request));
    }
    void write()
    {
        send(QLatin1String(command::UpdateObject),
             ZRDataStream::pack(
                 quint32(user), QStringLiteral("OT_USER"), quint32(0),
                 QHash<QString, QString>{{QString::fromLatin1(db::user::PATRONYMIC),
                                          QStringLiteral("Отчество%1").arg(++generation)}}));
    }
    void poll() { send(QLatin1String(command::GetSessionsInfo), {}); }
};

zeral::TYPE_ID addUser(Studio &by, const QString &login)
{
    zeral::ObjectInfo user;
    user.type = QLatin1String(db::system::USER);
    user.parameters = {{QLatin1String(db::user::LOGIN), login}};
    Command add = Command::named(QLatin1String(command::AddObject), by.session);
    add.data = ZRDataStream::pack(user, QList<zeral::_INHERIT_DATA>());
    Command answer;
    roundTrip(by.router, add, &answer);
    qint32 uid = 0;
    ZRDataStream(answer.data) >> uid;
    if (!answer.isOk() || uid <= 0)
        fail(QStringLiteral("user %1 not made: %2").arg(login, answer.errorText()));
    return zeral::TYPE_ID(uid);
}

std::unique_ptr<bench::ThreadedEngine> startEngine(const QString &database)
{
    ServerEngine::Options options;
    options.databasePath = database;
    auto engine = std::make_unique<bench::ThreadedEngine>(options);
    const QString error = engine->start(rootPassword);
    if (!error.isEmpty())
        fail(error);
    return engine;
}

// Round trips of writes on one database, after a warm-up.
void measureWrites(const QString &database, const char *p50, const char *p99)
{
    auto engine = startEngine(database);
    Studio studio;
    studio.open(engine->port());
    studio.user = addUser(studio, QStringLiteral("writer"));
    QVector<double> times;
    for (int i = 0; i < 1100; ++i) {
        Command answer;
        const double ms = roundTrip(studio.router, studio.nextWrite(), &answer);
        if (!answer.isOk())
            fail(QStringLiteral("write refused: %1").arg(answer.errorText()));
        if (i >= 100)
            times.append(ms);
    }
    bench::report(p50, times);
    bench::reportPercentile(p99, times, 99);
}

// The fleet: `count` studios over two servers for `seconds`.
void measureFleet(const QString &database, int count, int seconds)
{
    auto first = startEngine(database);
    auto second = startEngine(database);
    Studio maker;
    maker.open(first->port());
    std::vector<std::unique_ptr<WireStudio>> studios;
    for (int i = 0; i < count; ++i) {
        studios.push_back(std::make_unique<WireStudio>());
        studios.back()->open(i % 2 == 0 ? first->port() : second->port());
        studios.back()->user = addUser(maker, QStringLiteral("fleet%1").arg(i));
    }

    QVector<double> writes;
    QVector<double> polls;
    int errors = 0;
    int requests = 0;
    // Each studio writes about once every 2.2 s and polls as often.
    QElapsedTimer run;
    run.start();
    std::vector<std::unique_ptr<QTimer>> timers;
    for (auto &studio : studios) {
        WireStudio *s = studio.get();
        auto timer = std::make_unique<QTimer>();
        timer->setInterval(500 + int(QRandomGenerator::global()->bounded(100)));
        int tick = 0;
        QObject::connect(timer.get(), &QTimer::timeout, [&, s, tick]() mutable {
            if (s->waitingFor != 0 || run.elapsed() >= seconds * 1000)
                return;
            ++tick;
            if (tick % 2 != 0)
                return;
            const bool polling = tick % 4 == 0;
            QVector<double> *times = polling ? &polls : &writes;
            QElapsedTimer clock;
            clock.start();
            s->answered = [&errors, times, clock](const Command &answer) {
                times->append(clock.nsecsElapsed() / 1e6);
                if (!answer.isOk())
                    ++errors;
            };
            ++requests;
            polling ? s->poll() : s->write();
        });
        // Each at its own phase too: studios that all ticked together would queue behind
        // one another as no real ones do.
        QTimer *started = timer.get();
        QTimer::singleShot(int(QRandomGenerator::global()->bounded(2200)), started,
                           [started] { started->start(); });
        timers.push_back(std::move(timer));
    }
    // Sleeping in the event loop (bench::waitFor spins, and would take a core from the
    // servers on a small machine).
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();
    timers.clear();
    // What is still in flight is waited for; an answer that never comes is an error.
    const auto idle = [&] {
        for (const auto &studio : studios)
            if (studio->waitingFor != 0)
                return false;
        return true;
    };
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, [&] {
        if (idle())
            loop.quit();
    });
    check.start(10);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    loop.exec();
    if (!idle()) {
        for (const auto &studio : studios)
            errors += studio->waitingFor != 0 ? 1 : 0;
    }
    bench::report("pg_fleet_write_p50", writes);
    bench::reportPercentile("pg_fleet_write_p99", writes, 99);
    bench::reportPercentile("pg_fleet_poll_p99", polls, 99);
    std::printf("pg_fleet_requests %d\npg_fleet_errors %d\n", requests, errors);
    std::fflush(stdout);
    studios.clear();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("zr.*=false\n*.debug=false"));
    QCommandLineParser parser;
    const QCommandLineOption secondsOption(QStringLiteral("seconds"),
                                           QStringLiteral("How long the fleet runs."),
                                           QStringLiteral("N"), QStringLiteral("20"));
    const QCommandLineOption studiosOption(QStringLiteral("studios"),
                                           QStringLiteral("Studios of the fleet."),
                                           QStringLiteral("N"), QStringLiteral("50"));
    parser.addOptions({secondsOption, studiosOption});
    parser.process(app);
    const int seconds = parser.value(secondsOption).toInt();
    const int count = parser.value(studiosOption).toInt();
    if (seconds <= 0 || count < 2)
        fail(QStringLiteral("--seconds wants a positive number, --studios at least 2"));

    QTemporaryDir dir;
    measureWrites(dir.filePath(QStringLiteral("bench.db")), "pg_sqlite_write_p50",
                  "pg_sqlite_write_p99");
    PgCluster cluster;
    cluster.keepSyncs(); // as SQLite's synchronous=FULL: an answered write is on the disk
    QString why;
    const QString writesDatabase = cluster.createDatabase(&why);
    if (writesDatabase.isEmpty())
        fail(why);
    measureWrites(writesDatabase, "pg_postgres_write_p50", "pg_postgres_write_p99");
    const QString fleetDatabase = cluster.createDatabase(&why);
    if (fleetDatabase.isEmpty())
        fail(why);
    measureFleet(fleetDatabase, count, seconds);
    return 0;
}
