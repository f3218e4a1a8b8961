// Several servers on one PostgreSQL database: a change made through one reaches the clients
// of the other as a push, sessions are listed and disconnected across servers, failed logins
// count across them, and a server killed -9 loses no answered change while the other goes on.

#include "serverharness.h"

#include <shared/connecteduserinfo.h>
#include <shared/loginlockinfo.h>

#include <QElapsedTimer>
#include <QProcess>
#include <QTcpServer>

#include <csignal>

using namespace harness;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

namespace {

const QString Daemon = QStringLiteral(ZR_BINARY_DIR "/server/daemon/zr-server");

QHash<QByteArray, zeral::ConnectedUserInfo> sessionsSeenBy(WireClient &client)
{
    QHash<QByteArray, zeral::ConnectedUserInfo> sessions;
    QDateTime serverTime;
    ZRDataStream in(client.request(cmd::GetSessionsInfo).data);
    in >> sessions >> serverTime;
    return sessions;
}

} // namespace

class TestServerCluster : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        if (!onPostgres())
            QSKIP("several servers share a PostgreSQL database only");
        ZR_SKIP_WITHOUT_TEST_DATABASE();
    }

    void init()
    {
        m_a = std::make_unique<Server>();
        QCOMPARE(m_a->start(), QString());
        m_b = std::make_unique<Server>();
        m_b->databasePath = m_a->databasePath;
        QCOMPARE(m_b->start(), QString());
    }
    void cleanup()
    {
        m_b.reset();
        m_a.reset();
    }

    void blockThroughOneServerReachesTheOther()
    {
        auto rootA = m_a->rootClient();
        auto rootB = m_b->rootClient();
        const TYPE_ID bob = addUser(*rootB, QStringLiteral("bob"), QStringLiteral("RT_OPERATOR"));
        QVERIFY(bob);
        auto bobOnA = m_a->client();
        QCOMPARE(bobOnA->login(QStringLiteral("bob"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
        rootA->pushes.clear();

        QElapsedTimer sinceBlock;
        sinceBlock.start();
        QCOMPARE(updateUser(*rootB, bob, {{QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("b")}})
                     .status,
                 qint32(proto::StatusOk));
        // The studio on A gets the changed user, as if the change had been made on A, and the
        // blocked user's session on A ends with the reason.
        QTRY_VERIFY_WITH_TIMEOUT(!rootA->pushesNamed(cmd::DataChanged).isEmpty(), 1000);
        QVERIFY2(sinceBlock.elapsed() < 1000, qPrintable(QString::number(sinceBlock.elapsed())));
        QString dataset;
        QList<zeral::ObjectInfo> objects;
        ZRDataStream changed(rootA->pushesNamed(cmd::DataChanged).constLast().data);
        changed >> dataset >> objects;
        QCOMPARE(objects.value(0).uid, bob);
        QCOMPARE(objects.value(0).parameters.value(QStringLiteral("PT_OBJECTSTATE")),
                 QStringLiteral("b"));
        QTRY_VERIFY_WITH_TIMEOUT(bobOnA->isClosed(), 1000);
        QCOMPARE(bobOnA->pushesNamed(cmd::SessionClosed).size(), 1);
        QString reason;
        ZRDataStream closed(bobOnA->pushesNamed(cmd::SessionClosed).constFirst().data);
        closed >> reason;
        QVERIFY2(reason.contains(QStringLiteral("root")), qPrintable(reason));
    }

    void sessionsAreListedAndDisconnectedAcrossServers()
    {
        auto rootA = m_a->rootClient();
        auto rootB = m_b->rootClient();
        const TYPE_ID carol
            = addUser(*rootA, QStringLiteral("carol"), QStringLiteral("RT_OPERATOR"));
        QVERIFY(carol);
        auto carolOnB = m_b->client();
        QCOMPARE(carolOnB->login(QStringLiteral("carol"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
        // A lists the sessions of both servers.
        QTRY_VERIFY_WITH_TIMEOUT(sessionsSeenBy(*rootA).contains(carolOnB->session), 2000);
        const auto seen = sessionsSeenBy(*rootA);
        QCOMPARE(seen.value(carolOnB->session).user, QStringLiteral("carol"));
        QVERIFY(seen.contains(rootB->session));
        QVERIFY(seen.contains(rootA->session));

        const Command done = rootA->request(cmd::DisconnectUsers,
                                            ZRDataStream::pack(qint32(1), carolOnB->session));
        QCOMPARE(done.status, qint32(proto::StatusOk));
        QTRY_VERIFY_WITH_TIMEOUT(carolOnB->isClosed(), 1000);
        QCOMPARE(carolOnB->pushesNamed(cmd::SessionClosed).size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(!sessionsSeenBy(*rootA).contains(carolOnB->session), 2000);
        // The closed session can't come back on B.
        auto again = m_b->client();
        QVERIFY(
            again->request(QLatin1String(cmd::Resume), ZRDataStream::pack(carolOnB->session), {})
                .status
            != proto::StatusOk);
        // An unknown session is still refused as before.
        QCOMPARE(
            rootA->request(cmd::DisconnectUsers, ZRDataStream::pack(qint32(1), QByteArray(64, 'f')))
                .status,
            qint32(proto::StatusNotFound));
    }

    void failedLoginsCountAcrossServers()
    {
        auto guesser = m_a->client();
        for (int i = 0; i < 5; ++i)
            QCOMPARE(guesser->login(QStringLiteral("root"), QStringLiteral("wrong")).status,
                     qint32(proto::StatusLoginFailed));
        // B heard of every failure on A: the login is locked at that address there too, for
        // the right password as well.
        auto tryB = m_b->client();
        QTRY_COMPARE_WITH_TIMEOUT(
            tryB->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
            qint32(proto::StatusLoginLocked), 1000);
    }

    void killedServerLosesNoAnsweredChange()
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
        const quint16 port = probe.serverPort();
        probe.close();
        QProcess daemon;
        daemon.setProcessChannelMode(QProcess::ForwardedOutputChannel);
        daemon.start(Daemon, {QStringLiteral("--db"), m_a->databasePath, QStringLiteral("--listen"),
                              QStringLiteral("127.0.0.1:%1").arg(port)});
        QVERIFY(daemon.waitForStarted());
        WireClient onDaemon;
        QTRY_VERIFY_WITH_TIMEOUT(onDaemon.connectTo(port), 10000);
        QCOMPARE(onDaemon.login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusOk));
        auto rootA = m_a->rootClient();
        QTRY_VERIFY_WITH_TIMEOUT(sessionsSeenBy(*rootA).contains(onDaemon.session), 2000);

        // A burst of changes through the daemon, killed with requests still in flight.
        QList<quint64> posted;
        for (int i = 0; i < 40; ++i) {
            zeral::ObjectInfo user;
            user.type = QLatin1String(db::system::USER);
            user.parameters = {{QLatin1String(db::user::LOGIN), QStringLiteral("burst%1").arg(i)}};
            posted.append(onDaemon.post(cmd::AddObject,
                                        ZRDataStream::pack(user, QList<zeral::_INHERIT_DATA>())));
        }
        QTRY_VERIFY_WITH_TIMEOUT(onDaemon.answers.size() >= 10, 10000);
        ::kill(pid_t(daemon.processId()), SIGKILL);
        QVERIFY(daemon.waitForFinished(10000));
        QStringList answered;
        for (int i = 0; i < posted.size(); ++i) {
            if (onDaemon.answers.value(posted.at(i)).status == proto::StatusOk)
                answered << QStringLiteral("burst%1").arg(i);
        }
        QVERIFY(answered.size() >= 10);

        // A goes on serving; every answered change is in the database.
        const DbResult stored
            = select(*rootA, QStringLiteral("SELECT value FROM object_params WHERE key = 'PT_LOGIN'"
                                            " AND value LIKE 'burst%'"));
        QStringList logins;
        for (int row = 0; row < stored.rowCount; ++row)
            logins << stored.value(row, 0).toString();
        for (const QString &login : qAsConst(answered))
            QVERIFY2(logins.contains(login), qPrintable(login));
        QVERIFY(addUser(*rootA, QStringLiteral("afterkill"), QStringLiteral("RT_OPERATOR")));
        // The killed server's sessions leave the list once its heartbeat is missed.
        QTRY_VERIFY_WITH_TIMEOUT(!sessionsSeenBy(*rootA).contains(onDaemon.session), 10000);
    }

private:
    std::unique_ptr<Server> m_a;
    std::unique_ptr<Server> m_b;
};

QTEST_GUILESS_MAIN(TestServerCluster)
#include "tst_servercluster.moc"
