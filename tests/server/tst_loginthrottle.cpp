// Failed logins by login and peer address: locks hold only at the address that failed, failures
// from everywhere only slow the login down, and the table forgets what no longer matters.

#include <server/engine/session/loginthrottle.h>

#include <QStringList>
#include <QTest>

using zeral::server::LoginLock;
using zeral::server::LoginThrottle;

namespace {

// "login@address" entries, as the rows write the attempts.
QPair<QString, QString> split(const QString &attempt)
{
    const int at = attempt.lastIndexOf(QLatin1Char('@'));
    return {attempt.left(at), attempt.mid(at + 1)};
}

QStringList repeated(const QString &attempt, int times)
{
    QStringList result;
    for (int i = 0; i < times; ++i)
        result.append(attempt);
    return result;
}

} // namespace

class TestLoginThrottle : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_now = QDateTime(QDate(2024, 3, 1), QTime(10, 0), Qt::UTC); }

    void lockHoldsOnlyWhereTheFailuresCameFrom_data()
    {
        QTest::addColumn<QStringList>("failures");
        QTest::addColumn<QString>("probe");
        QTest::addColumn<bool>("locked");
        const QString rootA = QStringLiteral("root@10.0.0.1");
        QTest::addRow("five from one address") << repeated(rootA, 5) << rootA << true;
        QTest::addRow("four are not enough") << repeated(rootA, 4) << rootA << false;
        QTest::addRow("the owner's address stays open")
            << repeated(rootA, 5) << "root@10.0.0.2" << false;
        QTest::addRow("another login at that address")
            << repeated(rootA, 5) << "alice@10.0.0.1" << false;
        QTest::addRow("login case folded")
            << (repeated(QStringLiteral("Root@10.0.0.1"), 3) + repeated(rootA, 2))
            << "ROOT@10.0.0.1" << true;
        QStringList spread;
        for (int i = 0; i < 4; ++i)
            spread << QStringLiteral("root@10.0.0.1") << QStringLiteral("root@10.0.0.2")
                   << QStringLiteral("root@10.0.0.3");
        QTest::addRow("spread over addresses never locks") << spread << rootA << false;
    }
    void lockHoldsOnlyWhereTheFailuresCameFrom()
    {
        QFETCH(QStringList, failures);
        QFETCH(QString, probe);
        QFETCH(bool, locked);
        LoginThrottle throttle = make();
        for (const QString &attempt : failures)
            throttle.recordFailure(split(attempt).first, split(attempt).second);
        const auto [login, address] = split(probe);
        QCOMPARE(throttle.lockedFor(login, address) > 0, locked);
    }

    void failuresSlowTheLoginDown_data()
    {
        QTest::addColumn<QStringList>("failures");
        QTest::addColumn<int>("lastDelayMs");
        const QString rootA = QStringLiteral("root@10.0.0.1");
        QTest::addRow("three are free") << repeated(rootA, 3) << 0;
        QTest::addRow("the fourth waits a step") << repeated(rootA, 4) << 500;
        QTest::addRow("the fourth from a fourth address too")
            << QStringList{QStringLiteral("root@10.0.0.1"), QStringLiteral("root@10.0.0.2"),
                           QStringLiteral("root@10.0.0.3"), QStringLiteral("Root@10.0.0.4")}
            << 500;
        QStringList many;
        for (int i = 0; i < 40; ++i)
            many << QStringLiteral("root@10.0.1.%1").arg(i);
        QTest::addRow("bounded") << many << 3000;
        QTest::addRow("other logins don't count")
            << (repeated(QStringLiteral("alice@10.0.0.1"), 6) << rootA) << 0;
    }
    void failuresSlowTheLoginDown()
    {
        QFETCH(QStringList, failures);
        QFETCH(int, lastDelayMs);
        LoginThrottle throttle = make();
        int delay = -1;
        for (const QString &attempt : failures)
            delay = throttle.recordFailure(split(attempt).first, split(attempt).second).delayMs;
        QCOMPARE(delay, lastDelayMs);
    }

    void lockRunsOut()
    {
        LoginThrottle throttle = make();
        lock(throttle, QStringLiteral("root"), QStringLiteral("a"));
        m_now = m_now.addSecs(299);
        QCOMPARE(throttle.lockedFor(QStringLiteral("root"), QStringLiteral("a")), qint64(1));
        m_now = m_now.addSecs(1);
        QCOMPARE(throttle.lockedFor(QStringLiteral("root"), QStringLiteral("a")), qint64(0));
        QVERIFY(throttle.locks().isEmpty());
        // Right after a lock one more failure locks again.
        throttle.recordFailure(QStringLiteral("root"), QStringLiteral("a"));
        QVERIFY(throttle.lockedFor(QStringLiteral("root"), QStringLiteral("a")) > 0);
    }

    void successForgetsOnlyItsAddress()
    {
        LoginThrottle throttle = make();
        for (int i = 0; i < 4; ++i) {
            throttle.recordFailure(QStringLiteral("root"), QStringLiteral("a"));
            throttle.recordFailure(QStringLiteral("root"), QStringLiteral("b"));
        }
        throttle.recordSuccess(QStringLiteral("Root"), QStringLiteral("a"));
        // "a" starts again; the four of "b" still count towards its lock and the slow-down.
        QCOMPARE(throttle.recordFailure(QStringLiteral("root"), QStringLiteral("a")).delayMs, 1000);
        for (int i = 1; i < 4; ++i)
            throttle.recordFailure(QStringLiteral("root"), QStringLiteral("a"));
        QCOMPARE(throttle.lockedFor(QStringLiteral("root"), QStringLiteral("a")), qint64(0));
        QCOMPARE(throttle.recordFailure(QStringLiteral("root"), QStringLiteral("b")).delayMs, 3000);
        QVERIFY(throttle.lockedFor(QStringLiteral("root"), QStringLiteral("b")) > 0);
    }

    void unlockLiftsWhatItNames_data()
    {
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QStringList>("lifted"); // addresses
        QTest::addColumn<int>("left");
        QTest::addRow("one address") << "root"
                                     << "a" << QStringList{"a"} << 2;
        QTest::addRow("login case folded") << "ROOT"
                                           << "b" << QStringList{"b"} << 2;
        QTest::addRow("every address of the login")
            << "root" << QString() << QStringList{"a", "b"} << 1;
        QTest::addRow("an address without a lock") << "root"
                                                   << "c" << QStringList() << 3;
        QTest::addRow("a login without a lock") << "bob" << QString() << QStringList() << 3;
    }
    void unlockLiftsWhatItNames()
    {
        QFETCH(QString, login);
        QFETCH(QString, address);
        QFETCH(QStringList, lifted);
        QFETCH(int, left);
        LoginThrottle throttle = make();
        lock(throttle, QStringLiteral("root"), QStringLiteral("a"));
        lock(throttle, QStringLiteral("root"), QStringLiteral("b"));
        lock(throttle, QStringLiteral("alice"), QStringLiteral("a"));
        throttle.recordFailure(QStringLiteral("root"), QStringLiteral("c"));

        QStringList addresses;
        for (const LoginLock &lock : throttle.unlock(login, address)) {
            QCOMPARE(lock.failures, 5);
            addresses.append(lock.address);
        }
        QCOMPARE(addresses, lifted);
        QCOMPARE(throttle.locks().size(), left);
        // An address set free tries again from a fresh count: four failures don't lock it.
        for (const QString &freed : qAsConst(lifted)) {
            QCOMPARE(throttle.lockedFor(QStringLiteral("root"), freed), qint64(0));
            for (int i = 0; i < 4; ++i)
                throttle.recordFailure(QStringLiteral("root"), freed);
            QCOMPARE(throttle.lockedFor(QStringLiteral("root"), freed), qint64(0));
        }
    }

    void forgetsWhenLockAndWindowAreOver()
    {
        LoginThrottle::Policy policy;
        LoginThrottle throttle = make(policy);
        throttle.recordFailure(QStringLiteral("once"), QStringLiteral("a"));
        lock(throttle, QStringLiteral("locked"), QStringLiteral("a"));
        throttle.forgetStale();
        QCOMPARE(throttle.size(), 4); // two pairs, two logins

        // The lock is over but the failures are still recent: all are kept.
        m_now = m_now.addSecs(policy.lockSeconds + 60);
        throttle.forgetStale();
        QCOMPARE(throttle.size(), 4);

        m_now = m_now.addSecs(policy.failureWindowSeconds);
        throttle.forgetStale();
        QCOMPARE(throttle.size(), 0);
        // Forgotten means a fresh count.
        QCOMPARE(throttle.recordFailure(QStringLiteral("locked"), QStringLiteral("a")).failures, 1);
    }

    void guesserCannotGrowTheTableOrPushOutALock_data()
    {
        QTest::addColumn<bool>("manyAddresses"); // else many names from one address
        QTest::addRow("many names") << false;
        QTest::addRow("many addresses") << true;
    }
    void guesserCannotGrowTheTableOrPushOutALock()
    {
        QFETCH(bool, manyAddresses);
        LoginThrottle::Policy policy;
        policy.maxEntries = 50;
        LoginThrottle throttle = make(policy);
        lock(throttle, QStringLiteral("root"), QStringLiteral("x"));
        for (int i = 0; i < 1000; ++i) {
            m_now = m_now.addMSecs(10);
            const QString number = QString::number(i);
            if (manyAddresses)
                throttle.recordFailure(QStringLiteral("root"), QStringLiteral("10.1.") + number);
            else
                throttle.recordFailure(QStringLiteral("name") + number, QStringLiteral("x"));
            QVERIFY(throttle.size() <= 2 * policy.maxEntries);
        }
        QVERIFY(throttle.lockedFor(QStringLiteral("root"), QStringLiteral("x")) > 0);
    }

private:
    LoginThrottle make(LoginThrottle::Policy policy = {})
    {
        return LoginThrottle([this] { return m_now; }, policy);
    }
    void lock(LoginThrottle &throttle, const QString &login, const QString &address)
    {
        for (int i = 0; i < 5; ++i)
            throttle.recordFailure(login, address);
        QVERIFY(throttle.lockedFor(login, address) > 0);
    }

    QDateTime m_now;
};

QTEST_GUILESS_MAIN(TestLoginThrottle)
#include "tst_loginthrottle.moc"
