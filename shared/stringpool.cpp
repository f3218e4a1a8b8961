#include "stringpool.h"

#include <QHashFunctions>
#include <QtEndian>

namespace zeral {

namespace {

QString decode(const uchar *data, int units)
{
    QString text(units, Qt::Uninitialized);
    qFromBigEndian<ushort>(data, units, text.data());
    return text;
}

bool sameText(const QString &text, const uchar *data, int units)
{
    if (text.size() != units)
        return false;
    const QChar *chars = text.constData();
    for (int i = 0; i < units; ++i) {
        if (chars[i].unicode() != qFromBigEndian<ushort>(data + 2 * i))
            return false;
    }
    return true;
}

} // namespace

StringPool::StringPool(int maxEntries)
    : m_maxEntries(maxEntries)
{}

void StringPool::clear()
{
    m_slots = {};
    m_used = 0;
}

QString StringPool::fromUtf16BigEndian(const uchar *data, int units, bool *added)
{
    if (added)
        *added = false;
    if (units == 0)
        return QLatin1String("");
    if (m_slots.empty())
        m_slots.resize(1024);
    const uint hash = qHashBits(data, size_t(units) * 2);
    const size_t mask = m_slots.size() - 1;
    for (size_t index = hash & mask;; index = (index + 1) & mask) {
        Slot &slot = m_slots[index];
        if (slot.text.isNull()) {
            QString text = decode(data, units);
            if (m_used >= m_maxEntries)
                return text;
            slot.hash = hash;
            slot.text = text;
            ++m_used;
            if (added)
                *added = true;
            // Kept at most half full, so that a probe ends soon at a free slot.
            if (size_t(m_used) * 2 > m_slots.size())
                grow();
            return text;
        }
        if (slot.hash == hash && sameText(slot.text, data, units))
            return slot.text;
    }
}

void StringPool::grow()
{
    std::vector<Slot> old(m_slots.size() * 2);
    old.swap(m_slots);
    const size_t mask = m_slots.size() - 1;
    for (Slot &slot : old) {
        if (slot.text.isNull())
            continue;
        size_t index = slot.hash & mask;
        while (!m_slots[index].text.isNull())
            index = (index + 1) & mask;
        m_slots[index] = std::move(slot);
    }
}

} // namespace zeral
