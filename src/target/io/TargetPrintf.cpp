// The printf half of the format engine.

#include "target/io/TargetFormat.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <string_view>

namespace {

// A double has no more digits than these; what a larger precision asks for are zeros.
constexpr int MaxFractionDigits = 1100;
constexpr int MaxSignificantDigits = 800;

enum class Length { None, Char, Short, Long, LongLong, LongDouble };

struct Conversion {
    bool space = false;
    bool alternate = false;
    bool group = false;
    bool plus = false;
    bool left = false;
    bool zero = false;
    int width = 0;
    int precision = -1; // none given
    Length length = Length::None;
    char type = 0;
};

void put(__printf_tag* tag, std::string_view text)
{
    for (char c : text)
        __putc(tag, uint8_t(c));
}

// Padding can be a billion characters wide: what nobody takes is only counted.
void pad(__printf_tag* tag, char c, int64_t count)
{
    while (count > 0 && tag->count < tag->limit && (tag->buffer || tag->output)) {
        __putc(tag, c);
        --count;
    }
    if (count > 0)
        tag->count = int(std::min<int64_t>(INT_MAX, int64_t(tag->count) + count));
}

// A field: blanks, prefix (sign or base), zeros, the body, zeros behind it, a tail, blanks.
struct Field {
    std::string_view prefix = {};
    int64_t leadingZeros = 0;
    std::string_view body = {};
    int64_t trailingZeros = 0;
    std::string_view tail = {};

    void print(__printf_tag* tag, const Conversion& c, bool zeroPads) const
    {
        int64_t length = int64_t(prefix.size() + body.size() + tail.size()) + leadingZeros + trailingZeros;
        int64_t missing = std::max<int64_t>(0, c.width - length);
        bool zeros = zeroPads && c.zero && !c.left;
        if (!c.left && !zeros)
            pad(tag, ' ', missing);
        put(tag, prefix);
        pad(tag, '0', leadingZeros + (zeros ? missing : 0));
        put(tag, body);
        pad(tag, '0', trailingZeros);
        put(tag, tail);
        if (c.left)
            pad(tag, ' ', missing);
    }
};

int parseNumber(const char*& at)
{
    int64_t value = 0;
    for (; *at >= '0' && *at <= '9'; ++at)
        value = std::min<int64_t>(value * 10 + (*at - '0'), INT_MAX);
    return int(value);
}

Length parseLength(const char*& at)
{
    Length length = Length::None;
    switch (*at) {
    case 'h': length = at[1] == 'h' ? Length::Char : Length::Short; break;
    case 'l': length = at[1] == 'l' ? Length::LongLong : Length::Long; break;
    case 'L': length = Length::LongDouble; break;
    default: return length;
    }
    at += length == Length::Char || length == Length::LongLong ? 2 : 1;
    return length;
}

// Reads what stands behind a '%' and returns the place behind its type.
const char* parseConversion(const char* at, Conversion& c, const va_listfns& functions, void* data)
{
    for (bool flags = true; flags;) {
        switch (*at) {
        case ' ': c.space = true; break;
        case '#': c.alternate = true; break;
        case '\'': c.group = true; break;
        case '+': c.plus = true; break;
        case '-': c.left = true; break;
        case '0': c.zero = true; break;
        default: flags = false; continue;
        }
        ++at;
    }
    if (*at == '*') {
        int64_t width = functions.getIntArg(data);
        c.left = c.left || width < 0;
        c.width = int(std::min<int64_t>(width < 0 ? -width : width, INT_MAX));
        ++at;
    } else {
        c.width = parseNumber(at);
    }
    if (*at == '.') {
        ++at;
        if (*at == '*') {
            c.precision = int(std::clamp<int64_t>(functions.getIntArg(data), -1, INT_MAX));
            ++at;
        } else {
            c.precision = parseNumber(at);
        }
    }
    c.length = parseLength(at);
    c.type = *at;
    return c.type ? at + 1 : at;
}

// The next integer argument, cut to the width that its length names.
int64_t integerArgument(const Conversion& c, bool isSigned, const va_listfns& functions, void* data)
{
    int64_t value;
    unsigned size;
    switch (c.length) {
    case Length::LongLong:
    case Length::LongDouble: return functions.getLongLongArg(data);
    case Length::Long:
        value = functions.getLongArg(data);
        size = 4;
        break;
    default:
        value = functions.getIntArg(data);
        size = c.length == Length::Char ? 1 : c.length == Length::Short ? 2 : functions.intSize;
        break;
    }
    unsigned shift = 64 - 8 * std::min(size, 8u);
    uint64_t bits = uint64_t(value) << shift;
    return isSigned ? int64_t(bits) >> shift : int64_t(bits >> shift);
}

const char* signOf(bool negative, const Conversion& c)
{
    return negative ? "-" : c.plus ? "+" : c.space ? " " : "";
}

// Commas between groups of three, counted from the end.
std::string grouped(std::string_view digits)
{
    std::string text(digits);
    for (size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, 1, ',');
    }
    return text;
}

void printInteger(__printf_tag* tag, const Conversion& c, const va_listfns& functions, void* data)
{
    bool isSigned = c.type == 'd' || c.type == 'i';
    int64_t value = integerArgument(c, isSigned, functions, data);
    bool negative = isSigned && value < 0;
    uint64_t magnitude = negative ? 0 - uint64_t(value) : uint64_t(value);
    int radix = c.type == 'o' ? 8 : c.type == 'x' || c.type == 'X' ? 16 : 10;

    char buffer[24];
    size_t length = size_t(std::to_chars(buffer, buffer + sizeof buffer, magnitude, radix).ptr - buffer);
    if (magnitude == 0 && c.precision == 0)
        length = 0;
    if (c.type == 'X')
        std::transform(buffer, buffer + length, buffer, [](char d) { return d >= 'a' ? char(d - 32) : d; });
    std::string digits(buffer, length);
    if (c.group && radix == 10)
        digits = grouped(digits);

    Field field;
    field.prefix = isSigned ? signOf(negative, c) : "";
    if (c.alternate && radix == 16 && magnitude != 0)
        field.prefix = c.type == 'X' ? "0X" : "0x";
    field.leadingZeros = std::max<int64_t>(0, int64_t(c.precision) - int64_t(length));
    if (c.alternate && radix == 8 && field.leadingZeros == 0 && (length == 0 || digits[0] != '0'))
        field.leadingZeros = 1;
    field.body = digits;
    field.print(tag, c, c.precision < 0);
}

// Splits "1.5e+05" in front of the exponent, so that zeros can go between.
void printDouble(__printf_tag* tag, const Conversion& c, double value)
{
    bool upper = c.type == 'E' || c.type == 'F' || c.type == 'G';
    char type = char(c.type | 0x20);
    Field field;
    field.prefix = signOf(std::signbit(value), c);
    double magnitude = std::fabs(value);
    if (!std::isfinite(value)) {
        field.body = std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
        field.print(tag, c, false);
        return;
    }

    int precision = c.precision < 0 ? 6 : c.precision;
    if (type == 'g')
        precision = std::max(precision, 1);
    int exact = std::min(precision, type == 'f' ? MaxFractionDigits : MaxSignificantDigits);
    char buffer[MaxFractionDigits + 400];
    auto format = type == 'f'   ? std::chars_format::fixed
                  : type == 'e' ? std::chars_format::scientific
                                : std::chars_format::general;
    char* end = std::to_chars(buffer, buffer + sizeof buffer, magnitude, format, exact).ptr;
    std::string text(buffer, end);
    if (upper)
        std::transform(text.begin(), text.end(), text.begin(), [](char d) { return d == 'e' ? 'E' : d; });

    size_t exponent = text.find(upper ? 'E' : 'e');
    std::string body = text.substr(0, exponent);
    std::string tail = exponent == std::string::npos ? "" : text.substr(exponent);
    field.trailingZeros = precision - exact;
    if (type == 'g') {
        // to_chars leaves trailing zeros away, as %g does; with '#' they stay.
        field.trailingZeros = 0;
        if (c.alternate) {
            size_t digits = 0;
            bool leading = true;
            for (char d : body)
                if (d != '.' && !(leading && d == '0')) {
                    leading = false;
                    ++digits;
                }
            digits = std::max<size_t>(digits, leading ? 1 : 0);
            field.trailingZeros = std::max<int64_t>(0, precision - int64_t(digits));
        }
    }
    if (c.alternate && body.find('.') == std::string::npos)
        body += '.';
    if (c.group && type != 'e') {
        size_t point = std::min(body.find('.'), body.size());
        body = grouped(body.substr(0, point)) + body.substr(point);
    }
    field.body = body;
    field.tail = tail;
    field.print(tag, c, true);
}

void storeCount(const __printf_tag* tag, const Conversion& c, const va_listfns& functions, void* data)
{
    uint32_t address = functions.getPtrArg(data);
    switch (c.length) {
    case Length::Char: functions.writePtrArgChar(data, address, tag->count); break;
    case Length::Short: functions.writePtrArgShort(data, address, tag->count); break;
    case Length::Long: functions.writePtrArgLong(data, address, tag->count); break;
    case Length::LongLong:
    case Length::LongDouble: functions.writePtrArgLongLong(data, address, tag->count); break;
    case Length::None: functions.writePtrArgInt(data, address, tag->count); break;
    }
}

} // namespace

void __putc(__printf_tag* tag, int character)
{
    if (tag->count < tag->limit) {
        if (tag->buffer)
            tag->buffer[tag->count] = tag->count == tag->limit - 1 ? '\0' : char(character);
        if (tag->output)
            tag->output(character, tag);
    }
    if (tag->count < INT_MAX)
        ++tag->count;
}

void __vfprintf(__printf_tag* tag, const char* format, const va_listfns& functions, void* data)
{
    for (const char* at = format; *at;) {
        if (*at != '%') {
            __putc(tag, uint8_t(*at++));
            continue;
        }
        const char* start = at;
        Conversion c;
        at = parseConversion(at + 1, c, functions, data);
        switch (c.type) {
        case 'd':
        case 'i':
        case 'u':
        case 'o':
        case 'x':
        case 'X': printInteger(tag, c, functions, data); break;
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G': printDouble(tag, c, functions.getDoubleArg(data)); break;
        case 'c': {
            char character = char(functions.getIntArg(data));
            Field field;
            field.body = std::string_view(&character, 1);
            field.print(tag, c, false);
            break;
        }
        case 's': {
            std::string text = functions.getStringArg(data);
            Field field;
            field.body =
                std::string_view(text).substr(0, c.precision < 0 ? text.size() : size_t(c.precision));
            field.print(tag, c, false);
            break;
        }
        case 'p': {
            char buffer[16];
            snprintf(buffer, sizeof buffer, "0x%x", functions.getPtrArg(data));
            Field field;
            field.body = buffer;
            field.print(tag, c, false);
            break;
        }
        case 'n': storeCount(tag, c, functions, data); break;
        case '%': __putc(tag, '%'); break;
        // What is no conversion is printed as it stands.
        default: put(tag, std::string_view(start, size_t(at - start))); break;
        }
    }
}
