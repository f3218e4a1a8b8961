#include "searchcorpus.h"

#include <algorithm>
#include <cstring>

#if defined(__GNUC__) && defined(__x86_64__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {
constexpr QChar separator(0x1F);
}

int SearchCorpus::set(zeral::TYPE_ID uid, QStringView text)
{
    if (m_current.contains(uid))
        ++m_stale;
    const int start = m_text.size();
    append(uid, text);
    if (m_stale > 1024 && m_stale > m_uids.size() / 2) {
        compact();
        return startOf(uid);
    }
    return start;
}

int SearchCorpus::startOf(zeral::TYPE_ID uid) const
{
    const int entry = m_current.value(uid, -1);
    return entry < 0 ? -1 : m_starts.at(entry);
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
    ++m_layout;
}

void SearchCorpus::append(zeral::TYPE_ID uid, QStringView text)
{
    m_current.insert(uid, m_uids.size());
    m_starts.append(m_text.size());
    m_uids.append(uid);
    m_text.append(text.data(), int(text.size()));
    m_text += separator;
}

void SearchCorpus::compact()
{
    const QString text = std::exchange(m_text, {});
    const QVector<int> starts = std::exchange(m_starts, {});
    const QVector<zeral::TYPE_ID> uids = std::exchange(m_uids, {});
    const QHash<zeral::TYPE_ID, int> current = std::exchange(m_current, {});
    m_stale = 0;
    ++m_layout;
    for (int entry = 0; entry < uids.size(); ++entry) {
        if (current.value(uids.at(entry), -1) != entry)
            continue;
        const int end = entry + 1 < starts.size() ? starts.at(entry + 1) : text.size();
        append(uids.at(entry), QStringView(text).mid(starts.at(entry), end - starts.at(entry) - 1));
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

namespace {

// The SIMD scans below look for the places where the word's first character stands and its
// last one stands m - 1 further on, a block of places at a time: two characters that far
// apart coincide by chance far more rarely than the first two of a word, which are often a
// common pair of letters. Each place found is then compared in full. A scan returns the
// first match, or -1 with `at` at the first place it didn't look at.

// The first place of a block's candidates (two bits of `mask` a character, from `at` on)
// where the whole word stands, or -1.
inline int confirm(unsigned mask, int at, const char16_t *hay, const char16_t *needle, size_t bytes)
{
    for (; mask; mask &= mask - 1, mask &= mask - 1) {
        const int candidate = at + __builtin_ctz(mask) / 2;
        if (std::memcmp(hay + candidate, needle, bytes) == 0)
            return candidate;
    }
    return -1;
}

#if defined(__GNUC__) && defined(__x86_64__)
#define SEARCHCORPUS_AVX2
__attribute__((target("avx2"))) int scanAvx2(const char16_t *hay, int n, const char16_t *needle,
                                             int m, int *at)
{
    const __m256i first = _mm256_set1_epi16(short(needle[0]));
    const __m256i last = _mm256_set1_epi16(short(needle[m - 1]));
    const size_t bytes = size_t(m) * sizeof(char16_t);
    for (; *at + m + 15 <= n; *at += 16) {
        const auto *block = reinterpret_cast<const __m256i *>(hay + *at);
        const auto *blockEnd = reinterpret_cast<const __m256i *>(hay + *at + m - 1);
        unsigned mask = unsigned(_mm256_movemask_epi8(
            _mm256_and_si256(_mm256_cmpeq_epi16(_mm256_loadu_si256(block), first),
                             _mm256_cmpeq_epi16(_mm256_loadu_si256(blockEnd), last))));
        const int found = confirm(mask, *at, hay, needle, bytes);
        if (found >= 0)
            return found;
    }
    return -1;
}
#endif

#ifdef __SSE2__
int scanSse2(const char16_t *hay, int n, const char16_t *needle, int m, int *at)
{
    const __m128i first = _mm_set1_epi16(short(needle[0]));
    const __m128i last = _mm_set1_epi16(short(needle[m - 1]));
    const size_t bytes = size_t(m) * sizeof(char16_t);
    for (; *at + m + 7 <= n; *at += 8) {
        const auto *block = reinterpret_cast<const __m128i *>(hay + *at);
        const auto *blockEnd = reinterpret_cast<const __m128i *>(hay + *at + m - 1);
        unsigned mask = unsigned(
            _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi16(_mm_loadu_si128(block), first),
                                            _mm_cmpeq_epi16(_mm_loadu_si128(blockEnd), last))));
        const int found = confirm(mask, *at, hay, needle, bytes);
        if (found >= 0)
            return found;
    }
    return -1;
}
#endif

} // namespace

int SearchCorpus::indexOf(QStringView text, QStringView word, int from)
{
    const auto *hay = reinterpret_cast<const char16_t *>(text.data());
    const auto *needle = reinterpret_cast<const char16_t *>(word.data());
    const int n = int(text.size());
    const int m = int(word.size());
    if (m == 0)
        return from <= n ? from : -1;
    int at = qMax(from, 0);
#ifdef SEARCHCORPUS_AVX2
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (avx2) {
        const int found = scanAvx2(hay, n, needle, m, &at);
        if (found >= 0)
            return found;
    }
#endif
#ifdef __SSE2__
    const int found = scanSse2(hay, n, needle, m, &at);
    if (found >= 0)
        return found;
#endif
    for (const int last = n - m; at <= last; ++at) {
        if (hay[at] == needle[0]
            && std::memcmp(hay + at, needle, size_t(m) * sizeof(char16_t)) == 0)
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
