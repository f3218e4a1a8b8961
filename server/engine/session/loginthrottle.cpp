#include "loginthrottle.h"

namespace zeral::server {

LoginThrottle::LoginThrottle(Clock clock, Policy policy)
    : m_clock(std::move(clock))
    , m_policy(policy)
{}

QString LoginThrottle::key(const QString &login)
{
    // "Root" and "root" are one target for someone guessing.
    return login.toCaseFolded();
}

qint64 LoginThrottle::lockedFor(const QString &login) const
{
    const auto it = m_states.constFind(key(login));
    if (it == m_states.cend() || !it->lockedUntil.isValid())
        return 0;
    return qMax<qint64>(0, m_clock().secsTo(it->lockedUntil));
}

int LoginThrottle::recordFailure(const QString &login)
{
    State &state = m_states[key(login)];
    if (state.lockedUntil.isValid() && m_clock() >= state.lockedUntil) {
        // The lock has run out: the count starts again, one failure from a new lock.
        state.lockedUntil = QDateTime();
        state.failures = m_policy.lockAfter - 1;
    }
    ++state.failures;
    if (state.failures >= m_policy.lockAfter)
        state.lockedUntil = m_clock().addSecs(m_policy.lockSeconds);
    const int beyond = state.failures - m_policy.freeFailures;
    return beyond > 0 ? qMin(m_policy.maxDelayMs, beyond * m_policy.delayStepMs) : 0;
}

void LoginThrottle::recordSuccess(const QString &login)
{
    m_states.remove(key(login));
}

} // namespace zeral::server
