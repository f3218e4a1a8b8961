#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include <functional>

namespace zeral::server {

// How failed logins are slowed down and locked.
struct LoginThrottlePolicy
{
    int freeFailures = 3;  // failures of a login answered at once, whatever the address
    int delayStepMs = 500; // each further failure waits this much longer
    int maxDelayMs = 3000;
    int lockAfter = 5;        // consecutive failures from one address that lock the login there
    int lockSeconds = 5 * 60; // how long the lock holds
    // Failures older than this, with no lock holding, are forgotten: the count starts again.
    int failureWindowSeconds = 15 * 60;
    // At most this many login-and-address entries, and as many logins, are remembered. A
    // guesser who fills the table pushes out the entries with the oldest failures first.
    int maxEntries = 20000;
};

// A login locked at one address.
struct LoginLock
{
    QString login; // as it was last typed
    QString address;
    int failures = 0;
    QDateTime lockedUntil;
};

// Failed logins per login name and peer address. After a few failures of a login from
// anywhere its failed answers come slower (never more than the policy's maximum), and after a
// few more from one address the login is locked at that address for a while, whatever
// password comes from there. The owner of the account, at another address, still logs in.
// A success forgets the failures of its address. The clock is injected so that tests can move
// time instead of waiting.
class LoginThrottle
{
public:
    using Clock = std::function<QDateTime()>;

    using Policy = LoginThrottlePolicy;

    // What a failure led to.
    struct Failure
    {
        int delayMs = 0;       // how long its answer should be held back
        QDateTime lockedUntil; // valid when this failure locked the login at its address
        int failures = 0;      // consecutive failures of the login from that address
    };

    explicit LoginThrottle(Clock clock, Policy policy = Policy());

    // Seconds until the login may try again from that address; 0 when it isn't locked there.
    qint64 lockedFor(const QString &login, const QString &address) const;
    Failure recordFailure(const QString &login, const QString &address);
    void recordSuccess(const QString &login, const QString &address);

    // The locks holding now, by login and then address.
    QList<LoginLock> locks() const;
    // Lifts the lock of the login at that address, or at every address when `address` is
    // empty, and forgets the failures that made it. Returns the locks lifted.
    QList<LoginLock> unlock(const QString &login, const QString &address);

    // Drops the entries whose lock and failure window are over, so that a guesser trying
    // many names or addresses doesn't make the table grow for ever. Cheap to call often: it
    // looks at the table at most once a minute.
    void forgetStale();
    // Entries remembered: login-and-address pairs plus logins.
    int size() const { return m_pairs.size() + m_logins.size(); }

    // Told of every failure and success recorded here, for the other servers of the database,
    // which count them too (ClusterLink); what they tell comes in through recordRemote().
    using Observer
        = std::function<void(const QString &login, const QString &address, bool success)>;
    void setObserver(Observer observer) { m_observer = std::move(observer); }
    void recordRemote(const QString &login, const QString &address, bool success);

private:
    using Key = QPair<QString, QString>; // case-folded login, address
    struct State
    {
        QString login; // as last typed
        int failures = 0;
        QDateTime lockedUntil;
        QDateTime lastFailure;
    };
    struct LoginState
    {
        int failures = 0; // recent failures of the login from every address
        QDateTime lastFailure;
    };
    static QString fold(const QString &login);
    bool isLocked(const State &state, const QDateTime &now) const;
    bool isStale(const State &state, const QDateTime &now) const;
    bool isStale(const LoginState &state, const QDateTime &now) const;
    void sweep(const QDateTime &now);
    void makeRoomForPair(const QDateTime &now);
    void makeRoomForLogin(const QDateTime &now);
    // Takes the failures of a forgotten pair off its login's count.
    void discount(const Key &key, int failures);

    Clock m_clock;
    Policy m_policy;
    Observer m_observer;
    QHash<Key, State> m_pairs;
    QHash<QString, LoginState> m_logins;
    QDateTime m_nextSweep;
};

} // namespace zeral::server
