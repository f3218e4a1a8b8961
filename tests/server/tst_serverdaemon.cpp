// The zr-server program: start, stop on SIGTERM, clear failures, durability under kill -9,
// and no password or client hash in its files or logs.

#include "serverharness.h"

#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTcpServer>

#include <csignal>

using namespace harness;
namespace proto = zeral::proto;

namespace {

const QString Program = QStringLiteral(ZR_BINARY_DIR "/server/daemon/zr-server");
const QString BurstPassword = QStringLiteral("BurstPass1");

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

} // namespace

class TestServerDaemon : public QObject
{
    Q_OBJECT
private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void failsClearly_data()
    {
        QTest::addColumn<QString>("db");
        QTest::addColumn<bool>("portTaken");
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<QString>("message");
        QTest::addRow("database can't be opened")
            << "/nonexistent/dir/x.db" << false << QStringList()
            << "Не удалось открыть базу данных";
        QTest::addRow("PostgreSQL not running")
            << "postgresql://zr@/zeral?host=/nonexistent/socket" << false << QStringList()
            << "Не удалось подключиться к базе данных PostgreSQL "
               "postgresql://zr@/zeral?host=/nonexistent/socket: connection to server on socket";
        QTest::addRow("PostgreSQL URL without a database")
            << "postgresql://zr@localhost" << false << QStringList() << "the URL names no database";
        QTest::addRow("port taken")
            << "taken.db" << true << QStringList() << "Не удалось открыть порт";
        QTest::addRow("TLS certificate missing")
            << "tls.db" << false
            << QStringList{"--tls-cert", "/nonexistent/cert.pem", "--tls-key",
                           "/nonexistent/key.pem"}
            << "Не удалось прочитать сертификат /nonexistent/cert.pem";
        QTest::addRow("demo users not a number")
            << "users.db" << false << QStringList{"--demo", "--demo-users", "many"}
            << "--demo-users wants a number of accounts";
        QTest::addRow("demo users negative")
            << "users.db" << false << QStringList{"--demo", "--demo-users", "-5"}
            << "--demo-users wants a number of accounts";
    }
    void failsClearly()
    {
        QFETCH(QString, db);
        QFETCH(bool, portTaken);
        QFETCH(QStringList, extra);
        QFETCH(QString, message);
        QTcpServer holder;
        QVERIFY(holder.listen(QHostAddress::LocalHost, 0));
        const quint16 port = portTaken ? holder.serverPort() : freePort();
        QProcess server;
        const bool asItIs = db.startsWith('/') || db.startsWith(QLatin1String("postgresql:"));
        server.start(Program, QStringList{"--db", asItIs ? db : m_dir.filePath(db), "--listen",
                                          QStringLiteral("127.0.0.1:%1").arg(port)}
                                  + extra);
        QVERIFY(server.waitForFinished(20000));
        QVERIFY(server.exitCode() != 0);
        QVERIFY2(QString::fromUtf8(server.readAllStandardError()).contains(message),
                 qPrintable(message));
    }

    void killedMidBurstKeepsEveryAnsweredChange()
    {
        const QString db = m_dir.filePath(QStringLiteral("burst.db"));
        QVERIFY(initRoot(db));
        QProcess server;
        const quint16 port = start(server, db);
        WireClient client;
        QVERIFY(client.connectTo(port));
        QCOMPARE(client.login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusOk));
        client.pushes.clear();
        // Pipelined: the server works through the requests while we wait for the first answers.
        for (int i = 0; i < 400; ++i) {
            zeral::ObjectInfo user;
            user.type = QStringLiteral("OT_USER");
            user.parameters = {{"PT_LOGIN", QStringLiteral("burst%1").arg(i)},
                               {"PT_PASSHASH", clientHash(BurstPassword)}};
            Command request = Command::named(QLatin1String(cmd::AddObject), client.session);
            request.type = proto::NamedCommand;
            request.id = quint64(1000 + i);
            request.data = ZRDataStream::pack(user, QList<zeral::_INHERIT_DATA>());
            client.socket.write(FrameCodec::encode(request));
        }
        QTRY_VERIFY_WITH_TIMEOUT(client.answers.size() >= 20, 20000);
        server.kill(); // SIGKILL, in the middle of the burst
        QVERIFY(server.waitForFinished(5000));
        QTest::qWait(50); // answers already in the socket buffer count as answered too
        const QList<Command> answered = client.answers.values();
        QVERIFY(answered.size() < 400);

        QSqlDatabase file
            = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("after"));
        file.setDatabaseName(db);
        QVERIFY(file.open());
        {
            QSqlQuery query(file);
            QVERIFY(query.exec(QStringLiteral("PRAGMA integrity_check")) && query.next());
            QCOMPARE(query.value(0).toString(), QStringLiteral("ok"));
            for (const Command &answer : answered) {
                QCOMPARE(answer.status, qint32(proto::StatusOk));
                qint32 uid = 0;
                ZRDataStream(answer.data) >> uid;
                QVERIFY(query.exec(QStringLiteral("SELECT value FROM object_params WHERE uid = %1 "
                                                  "AND key = 'PT_LOGIN'")
                                       .arg(uid)));
                QVERIFY2(query.next(), qPrintable(QString::number(uid)));
                QCOMPARE(query.value(0).toString(),
                         QStringLiteral("burst%1").arg(answer.id - 1000));
            }
        }
        file.close();
        file = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("after"));

        // Restarted on the same file, the server serves it.
        QProcess again;
        WireClient later;
        QVERIFY(later.connectTo(start(again, db)));
        QCOMPARE(later.login(QStringLiteral("burst0"), BurstPassword).status,
                 qint32(proto::StatusOk));

        // Neither the password nor the client hash is anywhere in the files or the logs.
        ::kill(pid_t(again.processId()), SIGTERM);
        QVERIFY(again.waitForFinished(10000));
        QCOMPARE(again.exitStatus(), QProcess::NormalExit);
        QCOMPARE(again.exitCode(), 0);
        QByteArray everything = m_log + again.readAllStandardError();
        for (const QString &suffix : {QString(), QStringLiteral("-wal")}) {
            QFile part(db + suffix);
            if (part.open(QIODevice::ReadOnly))
                everything += part.readAll();
        }
        QVERIFY(everything.size() > 100000);
        for (const QString &secret :
             {BurstPassword, clientHash(BurstPassword), QStringLiteral("RootPass1"),
              clientHash(QStringLiteral("RootPass1"))}) {
            QVERIFY2(!everything.contains(secret.toUtf8()), qPrintable(secret));
            QVERIFY(!everything.contains(secret.toUtf8().toUpper()));
        }
    }

    void signalDuringDemoSeedStopsCleanly()
    {
        const QString db = m_dir.filePath(QStringLiteral("seeding.db"));
        QProcess server;
        server.start(Program,
                     {"--db", db, "--listen", QStringLiteral("127.0.0.1:%1").arg(freePort()),
                      "--demo", "--demo-size", "100000"});
        QByteArray log;
        QDeadlineTimer deadline(20000);
        while (!log.contains("database open") && !deadline.hasExpired()
               && server.state() != QProcess::NotRunning) {
            server.waitForReadyRead(100);
            log += server.readAllStandardError();
        }
        QVERIFY2(log.contains("database open"), log.constData());
        QVERIFY(!log.contains("demo organisation stored")); // the signal comes mid-seed
        ::kill(pid_t(server.processId()), SIGTERM);
        QVERIFY(server.waitForFinished(120000));
        log += server.readAllStandardError();
        QCOMPARE(server.exitStatus(), QProcess::NormalExit);
        QCOMPARE(server.exitCode(), 0);
        QVERIFY2(log.contains("stopping on a signal"), log.constData());

        QSqlDatabase file
            = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("seeded"));
        file.setDatabaseName(db);
        QVERIFY(file.open());
        {
            QSqlQuery query(file);
            QVERIFY(query.exec(QStringLiteral("PRAGMA integrity_check")) && query.next());
            QCOMPARE(query.value(0).toString(), QStringLiteral("ok"));
            // The seed either committed whole or not at all.
            QVERIFY(query.exec(QStringLiteral("SELECT COUNT(*) FROM objects")) && query.next());
            const int objects = query.value(0).toInt();
            QVERIFY2(objects > 100000 || objects < 100, qPrintable(QString::number(objects)));
        }
        file.close();
        file = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("seeded"));
    }

private:
    bool initRoot(const QString &db)
    {
        QProcess init;
        init.start(Program, {"--db", db, "--init-root-password"});
        init.write("RootPass1\n");
        init.closeWriteChannel();
        const bool done = init.waitForFinished(20000) && init.exitCode() == 0;
        m_log += init.readAllStandardError();
        return done;
    }
    quint16 start(QProcess &server, const QString &db)
    {
        const quint16 port = freePort();
        server.start(Program, {"--db", db, "--listen", QStringLiteral("127.0.0.1:%1").arg(port)});
        QByteArray log;
        QDeadlineTimer deadline(20000);
        while (!log.contains("listening") && !deadline.hasExpired()
               && server.state() != QProcess::NotRunning) {
            server.waitForReadyRead(100);
            log += server.readAllStandardError();
        }
        m_log += log;
        return log.contains("listening") ? port : 0;
    }

    QTemporaryDir m_dir;
    QByteArray m_log;
};

QTEST_GUILESS_MAIN(TestServerDaemon)
#include "tst_serverdaemon.moc"
