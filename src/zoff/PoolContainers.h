// Containers whose storage lies in a Pool, for objects that live and die with one. Nothing is ever
// given back before the pool goes.
#pragma once

#include "support/Pool.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <set>
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
