#include "support/Bracket.h"
#include "support/Failure.h"
#include "support/HException.h"

#include <gtest/gtest.h>

namespace {

[[noreturn]] void failingEnd(int& ends)
{
    ++ends;
    throw HException("end");
}

} // namespace

TEST(Bracket, EndsOnceOnEveryWayAndTellsTheFirstFailure)
{
    int ends = 0;
    EXPECT_EQ(failureOf([&] {
                  Bracket bracket([&] { failingEnd(ends); });
                  throw HException("body");
              }),
              "body");
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(failureOf([&] {
                  Bracket bracket([&] { failingEnd(ends); });
                  bracket.end();
              }),
              "end");
    EXPECT_EQ(ends, 2) << "the destructor ended it again";
    {
        Bracket bracket([&] { failingEnd(ends); });
        bracket.dismiss();
    }
    EXPECT_EQ(ends, 2);
}
