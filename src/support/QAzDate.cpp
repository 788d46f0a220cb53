#include "support/QAzDate.h"

#include <cmath>

namespace {

long long floorDiv(long long a, long long b)
{
    long long q = a / b;
    return a % b != 0 && (a < 0) != (b < 0) ? q - 1 : q;
}

long long floorMod(long long a, long long b)
{
    return a - floorDiv(a, b) * b;
}

} // namespace

long QAzDate::julianDayNumber() const
{
    long long a = 12LL * year() + month() + 57597;
    return long(floorDiv(365 * a + 2 * floorMod(a, 12) + 7, 12) + day() + floorDiv(a, 48) - 32083 + 38 +
                floorDiv(a, 4800) - floorDiv(a, 1200));
}

QAzDate QAzDate::gregorianDate(double jd)
{
    // Beyond these no date class holds the year, and the arithmetic below would leave 64 bits.
    if (!(std::fabs(jd) < 1e12))
        return QAzDate();
    long long l = static_cast<long long>(std::floor(jd)) + 68569;
    long long n = floorDiv(4 * l, 146097);
    l -= floorDiv(146097 * n + 3, 4);
    long long i = floorDiv(4000 * (l + 1), 1461001);
    l = l - floorDiv(1461 * i, 4) + 31;
    long long j = floorDiv(80 * l, 2447);
    long long day = l - floorDiv(2447 * j, 80);
    long long k = floorDiv(j, 11);
    long long month = j + 2 - 12 * k;
    long long year = 100 * (n - 49) + i + k;
    return QAzDate(int(year), int(month), int(day));
}
