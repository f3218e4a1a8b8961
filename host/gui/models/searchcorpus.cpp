#include "searchcorpus.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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
    for (int at = indexOf(m_text, word, 0); at >= 0;) {
        // The entry holding the match; the search goes on after it, so each uid comes once.
        const auto next = std::upper_bound(m_starts.cbegin(), m_starts.cend(), at);
        collect(int(next - m_starts.cbegin()) - 1);
        if (next == m_starts.cend())
            break;
        at = indexOf(m_text, word, *next);
    }
    return found;
}

int SearchCorpus::indexOf(QStringView text, QStringView word, int from)
{
    const auto *hay = reinterpret_cast<const char16_t *>(text.data());
    const auto *needle = reinterpret_cast<const char16_t *>(word.data());
    const int n = int(text.size());
    const int m = int(word.size());
    if (m == 0)
        return from <= n ? from : -1;
    const int last = n - m; // the last place a match can start
    const auto matchesAt = [&](int at) {
        return std::memcmp(hay + at, needle, size_t(m) * sizeof(char16_t)) == 0;
    };
    int at = qMax(from, 0);
#ifdef __SSE2__
    // The places where the word's first two characters stand side by side, eight at a time:
    // few enough that checking each costs little, where QStringMatcher's skips are short for
    // the few letters typed into a search.
    if (m >= 2) {
        const __m128i first = _mm_set1_epi16(short(needle[0]));
        const __m128i second = _mm_set1_epi16(short(needle[1]));
        for (; at <= last && at + 9 <= n; at += 8) {
            const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i *>(hay + at));
            const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i *>(hay + at + 1));
            unsigned mask = unsigned(_mm_movemask_epi8(
                _mm_and_si128(_mm_cmpeq_epi16(here, first), _mm_cmpeq_epi16(next, second))));
            while (mask) {
                const int candidate = at + __builtin_ctz(mask) / 2;
                if (candidate <= last && matchesAt(candidate))
                    return candidate;
                mask &= mask - 1; // each character sets two bits of the mask
                mask &= mask - 1;
            }
        }
    }
#endif
    for (; at <= last; ++at) {
        if (hay[at] == needle[0] && matchesAt(at))
            return at;
    }
    return -1;
}

QString SearchCorpus::fold(QString text)
{
    QChar *chars = text.data();
    const int size = text.size();
    for (int i = 0; i < size; ++i) {
        const char16_t c = chars[i].unicode();
        if (c < 0x80) {
            if (c >= u'A' && c <= u'Z')
                chars[i] = QChar(c + 0x20);
        } else if (c >= 0x400 && c <= 0x42F) {
            // Cyrillic capitals: the Russian alphabet, then Ё and the others below it.
            chars[i] = QChar(c < 0x410 ? c + 0x50 : c + 0x20);
        } else if (QChar::isSurrogate(c)) {
            // Letters beyond the first plane fold by their pair.
            return std::move(text).toCaseFolded();
        } else if (!(c >= 0x430 && c <= 0x45F)) {
            chars[i] = QChar(QChar::toCaseFolded(uint(c)));
        }
    }
    return text;
}
