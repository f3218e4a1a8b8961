#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>

#include <functional>

namespace zeral::server {

// How failed logins are slowed down and locked.
struct LoginThrottlePolicy
{
    int freeFailures = 3;  // failures answered at once
    int delayStepMs = 500; // each further failure waits this much longer
    int maxDelayMs = 3000;
    int lockAfter = 5;        // consecutive failures that lock the login
    int lockSeconds = 5 * 60; // how long the lock holds
    // Failures older than this, with no lock holding, are forgotten: the count starts again.
    int failureWindowSeconds = 15 * 60;
};

// Failed logins per login name. After a few failures the answers come slower, and after a few
// more the login is locked for a while, whatever password comes. A success forgets the
// failures. The clock is injected so that tests can move time instead of waiting.
class LoginThrottle
{
public:
    using Clock = std::function<QDateTime()>;

    using Policy = LoginThrottlePolicy;

    explicit LoginThrottle(Clock clock, Policy policy = Policy());

    // Seconds until the login may try again; 0 when it isn't locked.
    qint64 lockedFor(const QString &login) const;
    // Records a failure and returns how long its answer should be held back, in ms.
    int recordFailure(const QString &login);
    void recordSuccess(const QString &login);
    // Drops the logins whose lock and failure window are over, so that a guesser trying
    // many names doesn't make the table grow for ever. Cheap to call often: it looks at the
    // table at most once a minute.
    void forgetStale();
    int size() const { return m_states.size(); }

private:
    struct State
    {
        int failures = 0;
        QDateTime lockedUntil;
        QDateTime lastFailure;
    };
    static QString key(const QString &login);
    bool isStale(const State &state, const QDateTime &now) const;

    Clock m_clock;
    Policy m_policy;
    QHash<QString, State> m_states;
    QDateTime m_nextSweep;
};

} // namespace zeral::server
