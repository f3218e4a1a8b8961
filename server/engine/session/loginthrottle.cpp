#include "loginthrottle.h"

#include <algorithm>
#include <utility>

namespace zeral::server {

LoginThrottle::LoginThrottle(Clock clock, Policy policy)
    : m_clock(std::move(clock))
    , m_policy(policy)
{}

QString LoginThrottle::fold(const QString &login)
{
    // "Root" and "root" are one target for someone guessing.
    return login.toCaseFolded();
}

bool LoginThrottle::isLocked(const State &state, const QDateTime &now) const
{
    return state.lockedUntil.isValid() && now < state.lockedUntil;
}

bool LoginThrottle::isStale(const State &state, const QDateTime &now) const
{
    return !isLocked(state, now) && now >= state.lastFailure.addSecs(m_policy.failureWindowSeconds);
}

bool LoginThrottle::isStale(const LoginState &state, const QDateTime &now) const
{
    return now >= state.lastFailure.addSecs(m_policy.failureWindowSeconds);
}

qint64 LoginThrottle::lockedFor(const QString &login, const QString &address) const
{
    const auto it = m_pairs.constFind({fold(login), address});
    if (it == m_pairs.cend() || !it->lockedUntil.isValid())
        return 0;
    return qMax<qint64>(0, m_clock().secsTo(it->lockedUntil));
}

void LoginThrottle::sweep(const QDateTime &now)
{
    for (auto it = m_pairs.begin(); it != m_pairs.end();)
        it = isStale(it.value(), now) ? m_pairs.erase(it) : std::next(it);
    for (auto it = m_logins.begin(); it != m_logins.end();)
        it = isStale(it.value(), now) ? m_logins.erase(it) : std::next(it);
}

void LoginThrottle::forgetStale()
{
    const QDateTime now = m_clock();
    if (m_nextSweep.isValid() && now < m_nextSweep)
        return;
    m_nextSweep = now.addSecs(60);
    sweep(now);
}

void LoginThrottle::makeRoomForPair(const QDateTime &now)
{
    if (m_pairs.size() < m_policy.maxEntries)
        return;
    sweep(now);
    if (m_pairs.size() < m_policy.maxEntries)
        return;
    // Still full of recent failures: the oldest of them goes, and only when every entry is a
    // lock the one that ends first.
    auto victim = m_pairs.end();
    for (auto it = m_pairs.begin(); it != m_pairs.end(); ++it) {
        if (victim == m_pairs.end()) {
            victim = it;
            continue;
        }
        const bool itLocked = isLocked(*it, now);
        const bool victimLocked = isLocked(*victim, now);
        if (itLocked != victimLocked) {
            if (victimLocked)
                victim = it;
        } else if (itLocked ? it->lockedUntil < victim->lockedUntil
                            : it->lastFailure < victim->lastFailure) {
            victim = it;
        }
    }
    discount(victim.key(), victim->failures);
    m_pairs.erase(victim);
}

void LoginThrottle::makeRoomForLogin(const QDateTime &now)
{
    if (m_logins.size() < m_policy.maxEntries)
        return;
    sweep(now);
    if (m_logins.size() < m_policy.maxEntries)
        return;
    const auto victim = std::min_element(
        m_logins.begin(), m_logins.end(),
        [](const LoginState &a, const LoginState &b) { return a.lastFailure < b.lastFailure; });
    m_logins.erase(victim);
}

void LoginThrottle::discount(const Key &key, int failures)
{
    const auto it = m_logins.find(key.first);
    if (it == m_logins.end())
        return;
    it->failures -= failures;
    if (it->failures <= 0)
        m_logins.erase(it);
}

void LoginThrottle::recordRemote(const QString &login, const QString &address, bool success)
{
    const Observer observer = std::exchange(m_observer, nullptr);
    if (success)
        recordSuccess(login, address);
    else
        recordFailure(login, address);
    m_observer = observer;
}

LoginThrottle::Failure LoginThrottle::recordFailure(const QString &login, const QString &address)
{
    if (m_observer)
        m_observer(login, address, false);
    const QDateTime now = m_clock();
    const Key key{fold(login), address};
    Failure failure;

    auto pair = m_pairs.find(key);
    if (pair == m_pairs.end()) {
        makeRoomForPair(now);
        pair = m_pairs.insert(key, State());
    }
    State &state = *pair;
    if (state.lastFailure.isValid() && isStale(state, now))
        state = State();
    state.login = login;
    state.lastFailure = now;
    if (state.lockedUntil.isValid() && now >= state.lockedUntil) {
        // The lock has run out: the count starts again, one failure from a new lock.
        state.lockedUntil = QDateTime();
        state.failures = m_policy.lockAfter - 1;
    }
    ++state.failures;
    failure.failures = state.failures;
    if (state.failures >= m_policy.lockAfter) {
        state.lockedUntil = now.addSecs(m_policy.lockSeconds);
        failure.lockedUntil = state.lockedUntil;
    }

    // Failures from everywhere only slow the login's answers down: a lock there would be one
    // that anybody could put on somebody else's account.
    auto all = m_logins.find(key.first);
    if (all == m_logins.end()) {
        makeRoomForLogin(now);
        all = m_logins.insert(key.first, LoginState());
    }
    if (all->lastFailure.isValid() && isStale(*all, now))
        *all = LoginState();
    all->lastFailure = now;
    ++all->failures;
    const int beyond = qMax(all->failures, state.failures) - m_policy.freeFailures;
    failure.delayMs = beyond > 0 ? qMin(m_policy.maxDelayMs, beyond * m_policy.delayStepMs) : 0;
    return failure;
}

void LoginThrottle::recordSuccess(const QString &login, const QString &address)
{
    if (m_observer)
        m_observer(login, address, true);
    const auto it = m_pairs.find({fold(login), address});
    if (it == m_pairs.end())
        return;
    discount(it.key(), it->failures);
    m_pairs.erase(it);
}

QList<LoginLock> LoginThrottle::locks() const
{
    const QDateTime now = m_clock();
    QList<QPair<Key, LoginLock>> found;
    for (auto it = m_pairs.cbegin(); it != m_pairs.cend(); ++it) {
        if (isLocked(*it, now))
            found.append({it.key(), {it->login, it.key().second, it->failures, it->lockedUntil}});
    }
    std::sort(found.begin(), found.end(),
              [](const auto &a, const auto &b) { return a.first < b.first; });
    QList<LoginLock> result;
    result.reserve(found.size());
    for (const auto &entry : qAsConst(found))
        result.append(entry.second);
    return result;
}

QList<LoginLock> LoginThrottle::unlock(const QString &login, const QString &address)
{
    const QDateTime now = m_clock();
    const QString folded = fold(login);
    QList<LoginLock> lifted;
    for (auto it = m_pairs.begin(); it != m_pairs.end();) {
        if (it.key().first == folded && (address.isEmpty() || it.key().second == address)
            && isLocked(*it, now)) {
            lifted.append({it->login, it.key().second, it->failures, it->lockedUntil});
            discount(it.key(), it->failures);
            it = m_pairs.erase(it);
        } else {
            ++it;
        }
    }
    std::sort(lifted.begin(), lifted.end(),
              [](const LoginLock &a, const LoginLock &b) { return a.address < b.address; });
    return lifted;
}

} // namespace zeral::server
