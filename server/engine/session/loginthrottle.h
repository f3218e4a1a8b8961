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

private:
    struct State
    {
        int failures = 0;
        QDateTime lockedUntil;
    };
    static QString key(const QString &login);

    Clock m_clock;
    Policy m_policy;
    QHash<QString, State> m_states;
};

} // namespace zeral::server
