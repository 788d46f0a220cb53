#include "support/Numbers.h"

#include <gtest/gtest.h>
#include <limits>

TEST(Numbers, TextToInteger)
{
    const std::pair<const char*, int64_t> cases[] = {
        {"-0x10", -16}, {"0b101", 5}, {"017", 15},
        {"0", 0},       {"", 0},      {"  +7", 7},
        {"0xFf", 255},  {"0x", 0},    {"-9223372036854775808", std::numeric_limits<int64_t>::min()},
    };
    for (auto [text, expected] : cases)
        EXPECT_EQ(fromStringToint64(text), expected) << text;
    EXPECT_EQ(fromStringTouint64("-1"), ~uint64_t(0));
    EXPECT_EQ(fromStringTouint64("0xffffffffffffffff1"), 0xfffffffffffffff1u); // wraps
}

TEST(Numbers, ToText)
{
    EXPECT_STREQ(toStringFromuint64(255, 16), "ff");
    EXPECT_STREQ(toStringFromuint64(~uint64_t(0), 2), std::string(64, '1').c_str());
    EXPECT_STREQ(toStringFromint64(std::numeric_limits<int64_t>::min(), 10), "-9223372036854775808");
    EXPECT_STREQ(toStringFromint64(-35, 36), "-z");
    EXPECT_STREQ(toStringFromuint64(7, 99), "7");
    EXPECT_STREQ(toStringFromDouble(0.5, "%g"), "0.5");
    EXPECT_STREQ(toStringFromDouble(NAN, "%g"), "NaN");
    EXPECT_STREQ(toStringFromDouble(-INFINITY, "%g"), "Inf");
    EXPECT_LT(strlen(toStringFromDouble(1e300, "%.5000f")), 1024u);
    EXPECT_EQ(toHexString(5, 0xF), QString("0x5"));
    EXPECT_EQ(toHexString(5, 0x10), QString("0x05"));
    EXPECT_EQ(toHexString(-1, -1), QString("0xffffffff"));
    EXPECT_EQ(toHexString(1, 0x10000000), QString("0x00000001"));
}
