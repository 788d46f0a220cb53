#include "support/Installed.h"

#include <gtest/gtest.h>

TEST(InstalledDeathTest, WhatIsMissingIsNamed)
{
    Installed<int> place("the number of the house");
    EXPECT_DEATH(place.get(), "assertion failed: the number of the house is not installed");
    int seven = 7;
    place.install(seven);
    EXPECT_EQ(&place.get(), &seven);
}
