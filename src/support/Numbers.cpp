#include "support/Numbers.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

unsigned digitValue(char c)
{
    if (c >= '0' && c <= '9')
        return unsigned(c - '0');
    if (c >= 'a' && c <= 'z')
        return unsigned(c - 'a') + 10;
    return unsigned(uint8_t(c)) - 55;
}

constexpr int DigitsSize = 66; // sign, 64 binary digits, the closing zero

char* digitsBackwards(char* end, uint64_t value, int radix)
{
    unsigned base = radix >= 2 && radix <= 36 ? unsigned(radix) : 10;
    char* at = end;
    *at = 0;
    do {
        *--at = "0123456789abcdefghijklmnopqrstuvwxyz"[value % base];
        value /= base;
    } while (value);
    return at;
}

} // namespace

uint64_t fromStringTouint64(const char* text)
{
    while (isSpace(*text))
        ++text;
    bool negative = *text == '-';
    if (*text == '-' || *text == '+')
        ++text;
    unsigned radix = 10;
    if (*text == '0') {
        radix = 8;
        ++text;
        if (*text == 'x' || *text == 'b')
            radix = *text++ == 'x' ? 16 : 2;
    }
    uint64_t value = 0;
    for (; *text; ++text)
        value = value * radix + uint64_t(int64_t(int(digitValue(*text))));
    return negative ? 0 - value : value;
}

int64_t fromStringToint64(const char* text)
{
    return int64_t(fromStringTouint64(text));
}

double fromStringToDouble(const char* text)
{
    return strtod(text, nullptr);
}

const char* toStringFromuint64(uint64_t value, int radix)
{
    static char buffer[DigitsSize];
    return digitsBackwards(buffer + DigitsSize - 1, value, radix);
}

const char* toStringFromint64(int64_t value, int radix)
{
    static char buffer[DigitsSize];
    char* at =
        digitsBackwards(buffer + DigitsSize - 1, value < 0 ? 0 - uint64_t(value) : uint64_t(value), radix);
    if (value < 0)
        *--at = '-';
    return at;
}

const char* toStringFromDouble(double value, const char* format)
{
    static char buffer[1024];
    if (std::isnan(value))
        strcpy(buffer, "NaN");
    else if (std::isinf(value))
        strcpy(buffer, "Inf");
    else {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the format is the caller's setting
        snprintf(buffer, sizeof buffer, format, value);
#pragma GCC diagnostic pop
    }
    return buffer;
}

QString toHexString(int value, int maximum)
{
    unsigned limit = unsigned(maximum);
    int digits = 1;
    while (digits < 8 && limit >> (4 * digits))
        ++digits;
    return QString::asprintf("0x%0*x", digits, unsigned(value));
}
