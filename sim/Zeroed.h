// Large arrays of zero bytes, from calloc, so that what no program touches costs no memory.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

namespace maxq30 {

struct FreeMemory {
    void operator()(void* p) const { std::free(p); }
};
template <class T> using Zeroed = std::unique_ptr<T[], FreeMemory>;

template <class T> Zeroed<T> zeroed(size_t count)
{
    void* memory = std::calloc(count, sizeof(T));
    if (!memory)
        throw std::bad_alloc();
    return Zeroed<T>(static_cast<T*>(memory));
}

} // namespace maxq30
