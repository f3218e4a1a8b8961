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

bool LoginThrottle::isStale(const State &state, const QDateTime &now) const
{
    return (!state.lockedUntil.isValid() || now >= state.lockedUntil)
           && now >= state.lastFailure.addSecs(m_policy.failureWindowSeconds);
}

void LoginThrottle::forgetStale()
{
    const QDateTime now = m_clock();
    if (m_nextSweep.isValid() && now < m_nextSweep)
        return;
    m_nextSweep = now.addSecs(60);
    for (auto it = m_states.begin(); it != m_states.end();)
        it = isStale(it.value(), now) ? m_states.erase(it) : std::next(it);
}

int LoginThrottle::recordFailure(const QString &login)
{
    const QDateTime now = m_clock();
    State &state = m_states[key(login)];
    if (state.lastFailure.isValid() && isStale(state, now))
        state = State();
    state.lastFailure = now;
    if (state.lockedUntil.isValid() && now >= state.lockedUntil) {
        // The lock has run out: the count starts again, one failure from a new lock.
        state.lockedUntil = QDateTime();
        state.failures = m_policy.lockAfter - 1;
    }
    ++state.failures;
    if (state.failures >= m_policy.lockAfter)
        state.lockedUntil = now.addSecs(m_policy.lockSeconds);
    const int beyond = state.failures - m_policy.freeFailures;
    return beyond > 0 ? qMin(m_policy.maxDelayMs, beyond * m_policy.delayStepMs) : 0;
}

void LoginThrottle::recordSuccess(const QString &login)
{
    m_states.remove(key(login));
}

} // namespace zeral::server
