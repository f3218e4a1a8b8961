#pragma once

#include <QHash>

namespace zeral {

// The container of the local store: a QHash that can hand out a reference to a value
// without copying, also for a key it doesn't hold.
template<class K, class V>
class ZRHash : public QHash<K, V>
{
public:
    using QHash<K, V>::QHash;
    ZRHash() = default;
    ZRHash(const QHash<K, V> &other)
        : QHash<K, V>(other)
    {}
    ZRHash(QHash<K, V> &&other)
        : QHash<K, V>(std::move(other))
    {}

    // A miss yields one default-constructed value shared by all misses, so callers can
    // always read the result.
    const V &constValue(const K &key) const
    {
        const auto it = this->constFind(key);
        if (it != this->constEnd())
            return it.value();
        static const V missing{};
        return missing;
    }
};

} // namespace zeral
