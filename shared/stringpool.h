#pragma once

#include <QString>

#include <vector>

namespace zeral {

// One shared copy of each distinct text read from the wire. The store holds hundreds of
// thousands of objects whose parameter names, types and many values (first names, role
// templates, flags) repeat: pooled, each of them costs one allocation instead of one per
// object, and reading it costs a comparison instead of an allocation.
class StringPool
{
public:
    // A full pool hands out fresh strings and keeps what it has.
    explicit StringPool(int maxEntries = 1 << 18);

    // The text of `units` UTF-16 code units stored big-endian at `data`, pooled. `added`, if
    // given, tells whether the text was new to the pool.
    QString fromUtf16BigEndian(const uchar *data, int units, bool *added = nullptr);

    int size() const { return m_used; }
    bool isFull() const { return m_used >= m_maxEntries; }
    void clear();

private:
    struct Slot
    {
        uint hash = 0;
        QString text; // null: a free slot
    };

    void grow();

    std::vector<Slot> m_slots; // open addressing, a power of two long
    int m_used = 0;
    int m_maxEntries;
};

} // namespace zeral
