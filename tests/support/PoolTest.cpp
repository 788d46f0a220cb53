#include "support/Pool.h"

#include <gtest/gtest.h>
#include <limits>

TEST(Pool, ReusesReleasedChunksAndCopesWithLargeRequests)
{
    Pool pool;
    char* a = static_cast<char*>(pool.allocate(3));
    char* b = static_cast<char*>(pool.allocate(8));
    EXPECT_EQ(b - a, 8);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(pool.allocate(1)) % 8, 0u);
    char* large = static_cast<char*>(pool.allocate(100000));
    large[99999] = 1;
    size_t held = pool.capacity();
    pool.clear();
    EXPECT_EQ(uint8_t(large[99999]), 0xFE);
    EXPECT_EQ(pool.allocate(100000), large); // first released chunk that fits
    EXPECT_LT(pool.capacity(), held);
    EXPECT_THROW(pool.allocate(std::numeric_limits<size_t>::max()), std::bad_alloc);
}
