#include "support/QAzDate.h"

#include <gtest/gtest.h>

TEST(QAzDate, DayNumbersThereAndBack)
{
    EXPECT_EQ(QAzDate(2000, 1, 1).julianDayNumber(), 2451545);
    for (long day : {2451545L, 2451604L, 2440588L, 2299161L, 2816788L, 1721426L}) {
        QAzDate date = QAzDate::gregorianDate(double(day));
        EXPECT_EQ(date.julianDayNumber(), day);
        EXPECT_EQ(date.toJulianDay(), day); // the date class agrees
    }
    EXPECT_FALSE(QAzDate::gregorianDate(1e300).isValid());
}
