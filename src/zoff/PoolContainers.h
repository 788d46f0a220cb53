// Containers whose storage lies in a Pool, for objects that live and die with one. Nothing is ever
// given back before the pool goes.
#pragma once

#include "support/Pool.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <type_traits>

// A growing array of small values, 16 bytes while empty. Storage comes from the pool that is current
// when the list grows: grow it only while its owner's pool is the current one.
template <class T> class PoolList {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    using iterator = T*;
    using const_iterator = const T*;

    void push_back(T value)
    {
        if (m_size == m_capacity)
            grow();
        m_data[m_size++] = value;
    }
    void clear() { m_size = 0; }
    void truncate(uint32_t size) { m_size = size; } // at most the present size

    bool empty() const { return m_size == 0; }
    uint32_t size() const { return m_size; }
    T& operator[](uint32_t i) { return m_data[i]; }
    const T& operator[](uint32_t i) const { return m_data[i]; }
    T& back() { return m_data[m_size - 1]; }
    const T& back() const { return m_data[m_size - 1]; }
    iterator begin() { return m_data; }
    iterator end() { return m_data + m_size; }
    const_iterator begin() const { return m_data; }
    const_iterator end() const { return m_data + m_size; }

private:
    void grow()
    {
        uint32_t capacity = m_capacity ? 2 * m_capacity : 2;
        auto* grown = static_cast<T*>(Pool::currentPool()->allocate(capacity * sizeof(T)));
        if (m_size)
            memcpy(grown, m_data, m_size * sizeof(T));
        m_data = grown;
        m_capacity = capacity;
    }

    T* m_data = nullptr;
    uint32_t m_size = 0;
    uint32_t m_capacity = 0;
};

// A map of few bytes, for one that is filled first and then asked: a list that is put in order when it is
// asked for something. Grow it only as a PoolList.
template <class K, class V, class Less> class PoolTable {
public:
    struct Entry {
        K first;
        V second;
    };
    using const_iterator = const Entry*;

    // In place of an entry of that key.
    void set(K key, V value)
    {
        m_ordered = m_ordered && (m_entries.empty() || Less()(m_entries.back().first, key));
        m_entries.push_back({key, value});
    }
    const_iterator find(K key) const
    {
        auto found = std::lower_bound(
            begin(), end(), key, [](const Entry& entry, K wanted) { return Less()(entry.first, wanted); });
        return found != end() && !Less()(key, found->first) ? found : end();
    }
    // Throws std::out_of_range where there is none.
    V at(K key) const
    {
        const_iterator found = find(key);
        if (found == end())
            throw std::out_of_range("PoolTable::at");
        return found->second;
    }
    void erase(const_iterator entry)
    {
        std::copy(entry + 1, end(), m_entries.begin() + (entry - begin()));
        m_entries.truncate(m_entries.size() - 1);
    }
    bool empty() const { return m_entries.empty(); }
    uint32_t size() const { return ordered().size(); }
    const_iterator begin() const { return ordered().begin(); }
    const_iterator end() const { return ordered().end(); }

private:
    const PoolList<Entry>& ordered() const
    {
        if (!m_ordered) {
            std::stable_sort(m_entries.begin(), m_entries.end(),
                             [](const Entry& a, const Entry& b) { return Less()(a.first, b.first); });
            // The last one of each key counts.
            uint32_t kept = 0;
            for (uint32_t i = 0; i < m_entries.size(); ++i)
                if (i + 1 == m_entries.size() || Less()(m_entries[i].first, m_entries[i + 1].first))
                    m_entries[kept++] = m_entries[i];
            m_entries.truncate(kept);
            m_ordered = true;
        }
        return m_entries;
    }

    mutable PoolList<Entry> m_entries;
    mutable bool m_ordered = true;
};

// Takes from the pool that was current when the container was made, whichever is current later.
template <class T> struct PoolAllocator {
    using value_type = T;
    PoolAllocator() : pool(Pool::currentPool()) {}
    template <class U> PoolAllocator(const PoolAllocator<U>& other) : pool(other.pool) {}
    T* allocate(size_t count) { return static_cast<T*>(pool->allocate(count * sizeof(T))); }
    void deallocate(T*, size_t) {}
    template <class U> bool operator==(const PoolAllocator<U>& other) const { return pool == other.pool; }

    Pool* pool;
};

template <class K, class V, class Less = std::less<K>>
using PoolMap = std::map<K, V, Less, PoolAllocator<std::pair<const K, V>>>;
template <class K, class Less = std::less<K>> using PoolSet = std::set<K, Less, PoolAllocator<K>>;
