#include "support/AddressRanges.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

TEST(AddressRanges, MergesNeighboursOfOneTypeOnly)
{
    AddressRanges merged;
    merged.add(0x10, 0x1F, true);
    merged.add(0x20, 0x2F, true);
    EXPECT_EQ(merged.count(), 1u);
    merged.add(0x30, 0x3F, AddressRange::ReadOnly, true);
    EXPECT_EQ(merged.count(), 2u);
    merged.add(0xFFFFFFF0, 0xFFFFFFFF, true);
    merged.add(0, 1, true);
    EXPECT_EQ(merged.count(), 4u);
    merged.add(2, 0xFFFFFFEF, true); // joins everything of its type
    EXPECT_EQ(merged.count(), 2u);
    EXPECT_EQ(merged.find(0x35, 0x36)->type, AddressRange::ReadWrite);

    AddressRanges apart;
    apart.add(0x1F, 0x10, false); // the wrong order is put right
    apart.add(0x20, 0x2F, false);
    EXPECT_EQ(apart.count(), 2u);
    EXPECT_EQ(apart.find(0x1F, 0x20), nullptr);
    EXPECT_TRUE(apart.isSubsetOf(merged));
    EXPECT_FALSE(merged.isSubsetOf(apart));
}

// The fast searches against a plain walk over the list.
TEST(AddressRanges, SearchesAgreeWithAWalk)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        AddressRanges set;
        std::vector<bool> covered(300);
        bool merge = round & 1;
        for (int i = 0; i < 12; ++i) {
            uint32_t low = random() % 250;
            uint32_t high = low + random() % 40;
            set.add(low, high, merge);
            std::fill(covered.begin() + low, covered.begin() + high + 1, true);
        }
        if (merge) {
            int64_t last = -2;
            for (const AddressRange& range : set) {
                ASSERT_GT(int64_t(range.low), last + 1); // apart from each other
                last = range.high;
            }
        }
        for (uint32_t a = 0; a < 300; ++a) {
            ASSERT_EQ(set.find(a) != nullptr, bool(covered[a]));
            uint32_t b = a + random() % 20;
            bool whole = std::any_of(set.begin(), set.end(), [&](const auto& r) { return r.contains(a, b); });
            ASSERT_EQ(set.find(a, b) != nullptr, whole);
            bool touched = false;
            for (uint32_t i = a; i <= b && i < 300; ++i)
                touched |= covered[i];
            ASSERT_EQ(set.isOccludedBy(a, b), touched);
        }
    }
}
