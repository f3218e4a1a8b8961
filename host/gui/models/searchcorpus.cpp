#include "searchcorpus.h"

#include <QStringMatcher>

#include <algorithm>

namespace {
constexpr QChar separator(0x1F);
}

void SearchCorpus::set(zeral::TYPE_ID uid, const QString &text)
{
    if (m_current.contains(uid))
        ++m_stale;
    append(uid, text);
    if (m_stale > 1024 && m_stale > m_uids.size() / 2)
        compact();
}

void SearchCorpus::remove(zeral::TYPE_ID uid)
{
    if (m_current.remove(uid))
        ++m_stale;
}

void SearchCorpus::clear()
{
    m_text.clear();
    m_starts.clear();
    m_uids.clear();
    m_current.clear();
    m_stale = 0;
}

void SearchCorpus::append(zeral::TYPE_ID uid, const QString &text)
{
    m_current.insert(uid, m_uids.size());
    m_starts.append(m_text.size());
    m_uids.append(uid);
    m_text += text;
    m_text += separator;
}

void SearchCorpus::compact()
{
    const QString text = std::exchange(m_text, {});
    const QVector<int> starts = std::exchange(m_starts, {});
    const QVector<zeral::TYPE_ID> uids = std::exchange(m_uids, {});
    const QHash<zeral::TYPE_ID, int> current = std::exchange(m_current, {});
    m_stale = 0;
    for (int entry = 0; entry < uids.size(); ++entry) {
        if (current.value(uids.at(entry), -1) != entry)
            continue;
        const int end = entry + 1 < starts.size() ? starts.at(entry + 1) : text.size();
        append(uids.at(entry), text.mid(starts.at(entry), end - starts.at(entry) - 1));
    }
}

QVector<zeral::TYPE_ID> SearchCorpus::find(const QString &word) const
{
    QVector<zeral::TYPE_ID> found;
    const auto collect = [&](int entry) {
        const zeral::TYPE_ID uid = m_uids.at(entry);
        if (m_current.value(uid, -1) == entry)
            found.append(uid);
    };
    if (word.isEmpty()) {
        for (int entry = 0; entry < m_uids.size(); ++entry)
            collect(entry);
        return found;
    }
    const QStringMatcher matcher(word);
    for (int at = matcher.indexIn(m_text, 0); at >= 0;) {
        // The entry holding the match; the search goes on after it, so each uid comes once.
        const auto next = std::upper_bound(m_starts.cbegin(), m_starts.cend(), at);
        collect(int(next - m_starts.cbegin()) - 1);
        if (next == m_starts.cend())
            break;
        at = matcher.indexIn(m_text, *next);
    }
    return found;
}
