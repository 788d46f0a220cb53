// Conversions between numbers and text, with C strings in and out, as the object format and the
// debugger use them. Functions that return a `const char*` write into one static buffer each, which
// the next call overwrites; they serve the main thread.
#pragma once

#include <QString>
#include <cstdint>

// White space, an optional sign, then "0x" hexadecimal, "0b" binary, a leading "0" octal, else
// decimal. Digits are not checked against the radix (a lower-case letter counts from 10, any other
// character is its code minus 55), overflow wraps, and there is no error.
int64_t fromStringToint64(const char* text);
uint64_t fromStringTouint64(const char* text);
double fromStringToDouble(const char* text);

// Digits "0" to "9", "a" to "z"; radix 2 to 36, any other counts as 10.
const char* toStringFromuint64(uint64_t value, int radix);
const char* toStringFromint64(int64_t value, int radix);
// "NaN", "Inf", or the value through a printf format that takes one double; a text longer than the
// buffer of 1,024 bytes is cut.
const char* toStringFromDouble(double value, const char* format);

// "0x" and as many lower-case digits as `maximum` needs, 1 to 8; as the value itself needs.
QString toHexString(int value, int maximum);
inline QString toHexString(uint32_t value)
{
    return toHexString(int(value), int(value));
}
