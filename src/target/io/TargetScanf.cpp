// The scanf half of the format engine.

#include "target/io/TargetFormat.h"

#include <charconv>
#include <climits>
#include <cmath>

namespace {

constexpr size_t MaxNumberText = 512; // a longer number is cut
// What one scan may read: a device such as /dev/zero has no end.
constexpr int64_t MaxScan = 16 * 1024 * 1024;

enum class Length { None, Char, Short, Long, LongLong, LongDouble };

class Input {
public:
    explicit Input(__scanf_source* source) : m_source(source) {}

    int get()
    {
        int c;
        if (m_count >= MaxScan)
            c = -1;
        else if (m_source->isString)
            c = *m_source->string ? uint8_t(*m_source->string++) : -1;
        else
            c = m_source->getc(m_source);
        if (c >= 0)
            ++m_count;
        return c;
    }
    void unget(int c)
    {
        if (c < 0)
            return;
        --m_count;
        if (m_source->isString)
            --m_source->string;
        else
            m_source->ungetc(c, m_source);
    }
    int64_t count() const { return m_count; }

private:
    __scanf_source* m_source;
    int64_t m_count = 0;
};

bool isSpace(int c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

int digitValue(int c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'Z')
        return c - 'A' + 10;
    return INT_MAX;
}

struct Conversion {
    bool suppress = false;
    int width = 0; // 0: none
    Length length = Length::None;
    char type = 0;
};

const char* parseConversion(const char* at, Conversion& c)
{
    if (*at == '*') {
        c.suppress = true;
        ++at;
    }
    for (; *at >= '0' && *at <= '9'; ++at)
        c.width = c.width > (INT_MAX - 9) / 10 ? INT_MAX : c.width * 10 + (*at - '0');
    if (*at == 'h')
        c.length = at[1] == 'h' ? Length::Char : Length::Short;
    else if (*at == 'l')
        c.length = at[1] == 'l' ? Length::LongLong : Length::Long;
    else if (*at == 'L')
        c.length = Length::LongDouble;
    if (c.length != Length::None)
        at += c.length == Length::Char || c.length == Length::LongLong ? 2 : 1;
    c.type = *at;
    return c.type ? at + 1 : at;
}

// One scan; its state is the input and where the arguments come from.
class Scan {
public:
    Scan(__scanf_source* source, const va_listfns& functions, void* data)
        : m_input(source), m_functions(functions), m_data(data)
    {
    }
    int run(const char* format);

private:
    enum class Outcome { Stored, Skipped, Mismatch, End };

    int skipSpace();
    Outcome convert(const Conversion& c);
    Outcome scanInteger(const Conversion& c, int radix, bool isSigned);
    Outcome scanDouble(const Conversion& c);
    Outcome scanText(const Conversion& c);
    void store(const Conversion& c, bool isSigned, uint64_t value);

    Input m_input;
    const va_listfns& m_functions;
    void* m_data;
};

// Returns the first character that is no white space, pushed back, or -1.
int Scan::skipSpace()
{
    int c;
    do
        c = m_input.get();
    while (isSpace(c));
    m_input.unget(c);
    return c;
}

void Scan::store(const Conversion& c, bool isSigned, uint64_t value)
{
    uint32_t address = m_functions.getPtrArg(m_data);
    auto write = [&](auto signedWriter, auto unsignedWriter) {
        if (isSigned)
            signedWriter(m_data, address, int64_t(value));
        else
            unsignedWriter(m_data, address, value);
    };
    switch (c.length) {
    case Length::Char: write(m_functions.writePtrArgChar, m_functions.writePtrArgUnsignedChar); break;
    case Length::Short: write(m_functions.writePtrArgShort, m_functions.writePtrArgUnsignedShort); break;
    case Length::Long: write(m_functions.writePtrArgLong, m_functions.writePtrArgUnsignedLong); break;
    case Length::LongLong:
    case Length::LongDouble:
        write(m_functions.writePtrArgLongLong, m_functions.writePtrArgUnsignedLongLong);
        break;
    case Length::None: write(m_functions.writePtrArgInt, m_functions.writePtrArgUnsignedInt); break;
    }
}

// Radix 0 finds it from the prefix.
Scan::Outcome Scan::scanInteger(const Conversion& c, int radix, bool isSigned)
{
    int left = c.width ? c.width : INT_MAX;
    int at = m_input.get();
    bool negative = at == '-';
    if (at == '-' || at == '+') {
        --left;
        at = left > 0 ? m_input.get() : -1;
    }
    bool any = false;
    if ((radix == 0 || radix == 16) && at == '0' && left > 0) {
        any = true;
        --left;
        at = left > 0 ? m_input.get() : -1;
        if (at == 'x' || at == 'X') {
            radix = 16;
            --left;
            at = left > 0 ? m_input.get() : -1;
        } else if (radix == 0) {
            radix = 8;
        }
    } else if (radix == 0) {
        radix = 10;
    }
    uint64_t value = 0;
    while (left > 0 && digitValue(at) < radix) {
        any = true;
        value = value * unsigned(radix) + unsigned(digitValue(at));
        --left;
        at = left > 0 ? m_input.get() : -1;
    }
    m_input.unget(at);
    if (!any)
        return Outcome::Mismatch;
    if (c.suppress)
        return Outcome::Skipped;
    store(c, isSigned, negative ? 0 - value : value);
    return Outcome::Stored;
}

Scan::Outcome Scan::scanDouble(const Conversion& c)
{
    std::string text;
    int left = c.width ? c.width : INT_MAX;
    bool digits = false, point = false, exponent = false;
    int at = left > 0 ? m_input.get() : -1;
    for (; at >= 0 && left > 0; at = --left > 0 ? m_input.get() : -1) {
        bool isSign = at == '-' || at == '+';
        char last = text.empty() ? 0 : text.back();
        if (isSign && (text.empty() || last == 'e')) {
        } else if (at >= '0' && at <= '9') {
            digits = true;
        } else if (at == '.' && !point && !exponent) {
            point = true;
        } else if ((at == 'e' || at == 'E') && digits && !exponent) {
            exponent = true;
            at = 'e';
        } else {
            break;
        }
        if (text.size() < MaxNumberText)
            text += char(at);
    }
    m_input.unget(at);
    if (!digits)
        return Outcome::Mismatch;
    if (c.suppress)
        return Outcome::Skipped;
    const char* start = text.c_str() + (text[0] == '+');
    double value = 0;
    auto parsed = std::from_chars(start, text.c_str() + text.size(), value);
    if (parsed.ec == std::errc::result_out_of_range) {
        // The value is untouched then. A wider type tells whether it is huge or tiny; where that is too
        // narrow as well, no number of digits outweighs the exponent.
        long double wide = text.find("e-") == std::string::npos ? HUGE_VALL : 0;
        wide = *start == '-' ? -wide : wide;
        std::from_chars(start, text.c_str() + text.size(), wide);
        value = double(wide);
    }
    uint32_t address = m_functions.getPtrArg(m_data);
    if (c.length == Length::LongDouble)
        m_functions.writePtrArgLongDouble(m_data, address, value);
    else if (c.length == Length::Long)
        m_functions.writePtrArgDouble(m_data, address, value);
    else
        m_functions.writePtrArgFloat(m_data, address, value);
    return Outcome::Stored;
}

// %s up to white space, %c exactly its width. A buffer that the target made too small is its own fault,
// one that lies outside memory is the memory's.
Scan::Outcome Scan::scanText(const Conversion& c)
{
    bool isChars = c.type == 'c';
    int left = c.width ? c.width : isChars ? 1 : INT_MAX;
    uint32_t address = c.suppress ? 0 : m_functions.getPtrArg(m_data);
    int count = 0;
    for (; left > 0; --left) {
        int at = m_input.get();
        if (at < 0)
            break;
        if (!isChars && isSpace(at)) {
            m_input.unget(at);
            break;
        }
        if (!c.suppress)
            m_functions.writePtrArgChar(m_data, address++, at);
        ++count;
    }
    if (count == 0)
        return Outcome::End;
    if (!isChars && !c.suppress)
        m_functions.writePtrArgChar(m_data, address, 0);
    return c.suppress ? Outcome::Skipped : Outcome::Stored;
}

Scan::Outcome Scan::convert(const Conversion& c)
{
    if (c.type == 'n') {
        if (!c.suppress)
            store(c, true, uint64_t(m_input.count()));
        return Outcome::Skipped;
    }
    if (c.type != 'c' && skipSpace() < 0)
        return Outcome::End;
    switch (c.type) {
    case 'd': return scanInteger(c, 10, true);
    case 'i': return scanInteger(c, 0, true);
    case 'u': return scanInteger(c, 10, false);
    case 'o': return scanInteger(c, 8, false);
    case 'x':
    case 'X': return scanInteger(c, 16, false);
    case 'p': {
        Conversion pointer = c;
        pointer.length = Length::None;
        return scanInteger(pointer, 16, false);
    }
    case 'e':
    case 'E':
    case 'f':
    case 'g':
    case 'G': return scanDouble(c);
    case 's':
    case 'c': return scanText(c);
    case '%': {
        int at = m_input.get();
        if (at == '%')
            return Outcome::Skipped;
        m_input.unget(at);
        return Outcome::Mismatch;
    }
    default: return Outcome::Mismatch;
    }
}

int Scan::run(const char* format)
{
    int items = 0;
    bool converted = false;
    for (const char* at = format; *at;) {
        if (isSpace(uint8_t(*at))) {
            skipSpace();
            ++at;
            continue;
        }
        if (*at != '%') {
            int c = m_input.get();
            if (c != uint8_t(*at)) {
                m_input.unget(c);
                return c < 0 && !converted ? -1 : items;
            }
            ++at;
            continue;
        }
        Conversion c;
        at = parseConversion(at + 1, c);
        Outcome outcome = convert(c);
        if (outcome == Outcome::End)
            return converted ? items : -1;
        if (outcome == Outcome::Mismatch)
            return items;
        if (c.type != 'n' && c.type != '%')
            converted = true;
        items += outcome == Outcome::Stored;
    }
    return items;
}

} // namespace

int __vfscanf(__scanf_source* source, const char* format, const va_listfns& functions, void* data)
{
    return Scan(source, functions, data).run(format);
}
