// Logins locked by login and peer address, over real TCP from several loopback addresses:
// the attacker's address is locked, the owner's isn't; operators who may change users list
// the locks and lift them, and both the lock and the unlock are in the audit log.

#include "serverharness.h"

#include <shared/loginlockinfo.h>

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace harness;
using zeral::LoginLockInfo;
namespace proto = zeral::proto;

namespace {

const QHostAddress attacker(QStringLiteral("127.0.0.2"));
const QHostAddress elsewhere(QStringLiteral("127.0.0.3"));

} // namespace

class TestServerLoginLocks : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { ZR_SKIP_WITHOUT_TEST_DATABASE(); }
    void init()
    {
        m_server = std::make_unique<Server>();
        QCOMPARE(m_server->start(), QString());
        m_root = m_server->rootClient();
        QVERIFY(!m_root->session.isEmpty());
        for (const char *t : {"RT_ADMINISTRATOR", "RT_HR", "RT_SECURITY", "RT_OPERATOR"})
            QVERIFY(addUser(*m_root, QString::fromLatin1(t).toLower(), QLatin1String(t)));
    }
    void cleanup()
    {
        m_root.reset();
        m_server.reset();
        QSqlDatabase::removeDatabase(QStringLiteral("audit"));
    }

    void theOwnerLogsInWhileTheAttackerIsLocked()
    {
        auto bad = m_server->client(attacker);
        lockOut(*bad, QStringLiteral("root"));
        QCOMPARE(bad->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusLoginLocked));
        auto owner = m_server->client();
        QCOMPARE(owner->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusOk));
        // A new connection from the attacker's address is still locked.
        auto again = m_server->client(attacker);
        QCOMPARE(again->login(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                 qint32(proto::StatusLoginLocked));
        // The refusal that locked it says so in the audit log, once.
        QCOMPARE(audit("SELECT count(*) FROM audit_log WHERE command = 'session.login'"
                       " AND status = 9 AND operator = 'root'"
                       " AND detail LIKE 'login locked at 127.0.0.2 until %'"),
                 QVariant(1));
    }

    void onlyOperatorsWhoChangeUsersSeeAndLift_data()
    {
        QTest::addColumn<QString>("operatorLogin");
        QTest::addColumn<int>("status");
        QTest::addRow("supervisor") << "root" << int(proto::StatusOk);
        QTest::addRow("administrator") << "rt_administrator" << int(proto::StatusOk);
        QTest::addRow("HR") << "rt_hr" << int(proto::StatusOk);
        QTest::addRow("security") << "rt_security" << int(proto::StatusForbidden);
        QTest::addRow("operator") << "rt_operator" << int(proto::StatusForbidden);
    }
    void onlyOperatorsWhoChangeUsersSeeAndLift()
    {
        QFETCH(QString, operatorLogin);
        QFETCH(int, status);
        auto bad = m_server->client(attacker);
        lockOut(*bad, QStringLiteral("rt_operator"));
        auto op = m_server->client();
        logIn(*op, operatorLogin);

        const Command list = op->request(cmd::LoginLocks);
        QCOMPARE(list.status, qint32(status));
        const Command unlock = op->request(
            cmd::UnlockLogin, ZRDataStream::pack(QStringLiteral("rt_operator"), QString()));
        QCOMPARE(unlock.status, qint32(status));
        if (status != proto::StatusOk) {
            QVERIFY(errorText(list).contains(QStringLiteral("Недостаточно прав")));
            QVERIFY(errorText(unlock).contains(QStringLiteral("Недостаточно прав")));
        }
        // A refused unlock leaves the lock where it was.
        QCOMPARE(locks(*m_root).size(), status == proto::StatusOk ? 0 : 1);
    }

    void listShowsTheLockAndUnlockLetsTheAddressIn()
    {
        auto bad = m_server->client(attacker);
        lockOut(*bad, QStringLiteral("Rt_Operator"));
        auto other = m_server->client(elsewhere);
        lockOut(*other, QStringLiteral("rt_operator"));

        QDateTime serverClock;
        QList<LoginLockInfo> found = locks(*m_root, &serverClock);
        QCOMPARE(serverClock, m_server->now.toUTC());
        QCOMPARE(found.size(), 2);
        QCOMPARE(found[0].login, QStringLiteral("Rt_Operator"));
        QCOMPARE(found[0].address, attacker.toString());
        QCOMPARE(found[0].failures, 5);
        QCOMPARE(found[0].lockedUntil, m_server->now.addSecs(300).toUTC());
        QCOMPARE(found[0].lockedUntil.timeSpec(), Qt::UTC);
        QCOMPARE(found[1].address, elsewhere.toString());

        const Command unlock
            = m_root->request(cmd::UnlockLogin, ZRDataStream::pack(QStringLiteral("rt_operator"),
                                                                   attacker.toString()));
        QCOMPARE(unlock.status, qint32(proto::StatusOk));
        qint32 lifted = 0;
        ZRDataStream(unlock.data) >> lifted;
        QCOMPARE(lifted, 1);
        found = locks(*m_root);
        QCOMPARE(found.size(), 1);
        QCOMPARE(found[0].address, elsewhere.toString());

        QCOMPARE(bad->login(QStringLiteral("rt_operator"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
        QCOMPARE(other->login(QStringLiteral("rt_operator"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusLoginLocked));
        QCOMPARE(audit("SELECT operator || ' ' || status || ' ' || detail FROM audit_log"
                       " WHERE command = 'admin.unlock_login'"),
                 QVariant(QStringLiteral("root 1 login unlocked: Rt_Operator at 127.0.0.2 "
                                         "(5 failures, locked until %1)")
                              .arg(m_server->now.addSecs(300).toUTC().toString(Qt::ISODate))));

        // Without an address every lock of the login goes.
        QCOMPARE(m_root
                     ->request(cmd::UnlockLogin,
                               ZRDataStream::pack(QStringLiteral("RT_OPERATOR"), QString()))
                     .status,
                 qint32(proto::StatusOk));
        QVERIFY(locks(*m_root).isEmpty());
        QCOMPARE(other->login(QStringLiteral("rt_operator"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
    }

    void unlockRefusals_data()
    {
        QTest::addColumn<QString>("operatorLogin");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<int>("status");
        QTest::addRow("no lock at that address")
            << "root" << ZRDataStream::pack(QStringLiteral("root"), elsewhere.toString())
            << int(proto::StatusNotFound);
        QTest::addRow("login without a lock")
            << "root" << ZRDataStream::pack(QStringLiteral("nobody"), QString())
            << int(proto::StatusNotFound);
        QTest::addRow("empty login")
            << "root" << ZRDataStream::pack(QString(), QString()) << int(proto::StatusMalformed);
        QTest::addRow("no address")
            << "root" << ZRDataStream::pack(QStringLiteral("root")) << int(proto::StatusMalformed);
        // HR may change users, but not the supervisor: he doesn't let root's attacker in.
        QTest::addRow("a user he may not manage")
            << "rt_hr" << ZRDataStream::pack(QStringLiteral("root"), attacker.toString())
            << int(proto::StatusForbidden);
    }
    void unlockRefusals()
    {
        QFETCH(QString, operatorLogin);
        QFETCH(QByteArray, payload);
        QFETCH(int, status);
        auto bad = m_server->client(attacker);
        lockOut(*bad, QStringLiteral("root"));
        auto op = m_server->client();
        logIn(*op, operatorLogin);
        const Command answer = op->request(cmd::UnlockLogin, payload);
        QCOMPARE(answer.status, qint32(status));
        QVERIFY(!errorText(answer).isEmpty());
        QCOMPARE(locks(*op).size(), 1);
    }

private:
    void logIn(WireClient &client, const QString &login)
    {
        const QString password = login == QLatin1String("root") ? QStringLiteral("RootPass1")
                                                                : QStringLiteral("Passw0rd");
        QCOMPARE(client.login(login, password).status, qint32(proto::StatusOk));
    }
    // Five wrong passwords from the client's address.
    void lockOut(WireClient &client, const QString &login)
    {
        for (int i = 0; i < 5; ++i)
            QCOMPARE(client.login(login, QStringLiteral("wrong")).status,
                     qint32(proto::StatusLoginFailed));
    }
    QList<LoginLockInfo> locks(WireClient &client, QDateTime *serverClock = nullptr)
    {
        const Command answer = client.request(cmd::LoginLocks);
        QList<LoginLockInfo> result;
        if (answer.status != proto::StatusOk)
            return result;
        ZRDataStream in(answer.data);
        QDateTime clock;
        zeral::wire::readList(in, result);
        in >> clock;
        if (serverClock)
            *serverClock = clock;
        return in.status() == QDataStream::Ok && in.atEnd() ? result : QList<LoginLockInfo>();
    }
    QVariant audit(const char *sql)
    {
        QSqlDatabase db = QSqlDatabase::contains(QStringLiteral("audit"))
                              ? QSqlDatabase::database(QStringLiteral("audit"))
                              : sideDatabase(m_server->databasePath, QStringLiteral("audit"));
        QVariant value;
        {
            QSqlQuery query(db.open() ? db : QSqlDatabase());
            if (query.exec(QLatin1String(sql)) && query.next())
                value = query.value(0);
        }
        db.close();
        return value;
    }

    std::unique_ptr<Server> m_server;
    std::unique_ptr<WireClient> m_root;
};

QTEST_GUILESS_MAIN(TestServerLoginLocks)
#include "tst_serverloginlocks.moc"
