#include "support/HString.h"

#include <gtest/gtest.h>
#include <set>

TEST(HString, EqualFinalTextsAreOneObject)
{
    EXPECT_EQ(HString::intern("Abc", 1 | 16), HString::intern("abc", 2));
    EXPECT_EQ(HString::intern("a\\b", 0 | 16), HString::intern("A/B"));
    EXPECT_EQ(HString::intern("a/b", 3 | 32), HString::intern("a\\b"));
    EXPECT_EQ(HString::intern(-42L), HString::intern("-42"));
    EXPECT_NE(HString::intern(std::string("a\0b", 3)), HString::intern("a"));
    const HString* first = HString::intern("serial one");
    EXPECT_LT(first->serial(), HString::intern("serial two")->serial());
    // Blocks of text are abandoned, not moved: earlier entries stay where they are.
    const char* text = first->c_str();
    for (int i = 0; i < 20000; ++i)
        HString::intern(std::string(size_t(i % 700), 'x') + std::to_string(i));
    EXPECT_EQ(HString::intern("serial one")->c_str(), text);
}

TEST(HString, LongEndsInCommonLeaveHashesApart)
{
    std::set<unsigned> hashes;
    for (int i = 0; i < 1000; ++i)
        hashes.insert(HString::intern(std::to_string(i) + std::string(40, '_'))->hash());
    EXPECT_GT(hashes.size(), 990u);
}
