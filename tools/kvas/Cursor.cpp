#include "tools/kvas/Cursor.h"
#include "tools/kvas/limits.h"

#include <charconv>

namespace kvas {

namespace {

int digitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    char lower = char(c | 0x20);
    return lower >= 'a' && lower <= 'z' ? lower - 'a' + 10 : 99;
}

} // namespace

bool Cursor::isNameStart(char c)
{
    char lower = char(c | 0x20);
    return (lower >= 'a' && lower <= 'z') || c == '_' || c == '$' || c == '?';
}

bool Cursor::isNamePart(char c)
{
    return (isNameStart(c) && c != '?') || isDigit(c);
}

void Cursor::skipBlanks()
{
    while (m_at < m_end && (*m_at == ' ' || *m_at == '\t' || *m_at == '\r'))
        ++m_at;
    if (m_at < m_end && (*m_at == ';' || (*m_at == '/' && ahead(1) == '/')))
        m_end = m_at;
}

bool Cursor::atEnd()
{
    skipBlanks();
    return m_at == m_end;
}

char Cursor::peek()
{
    skipBlanks();
    return ahead(0);
}

bool Cursor::accept(char c)
{
    if (peek() != c || m_at == m_end)
        return false;
    ++m_at;
    return true;
}

bool Cursor::accept(std::string_view text)
{
    skipBlanks();
    if (!std::string_view(m_at, size_t(m_end - m_at)).starts_with(text))
        return false;
    m_at += text.size();
    return true;
}

bool Cursor::acceptWord(std::string_view word)
{
    skipBlanks();
    Mark start = m_at;
    if (identifier() == word)
        return true;
    m_at = start;
    return false;
}

void Cursor::expect(char c, const char* what)
{
    if (!accept(c))
        fail(std::string("expected '") + c + "' " + what);
}

std::string_view Cursor::identifier()
{
    skipBlanks();
    const char* start = m_at;
    const char* at = m_at;
    if (at < m_end && *at == '.')
        ++at;
    // "?" starts a name but "??" is an operator.
    if (at == m_end || !isNameStart(*at) || (*at == '?' && at + 1 < m_end && at[1] == '?'))
        return {};
    for (++at; at < m_end; ++at) {
        if (isNamePart(*at))
            continue;
        if (*at == '.' && at + 1 < m_end && isNameStart(at[1]))
            continue;
        break;
    }
    if (size_t(at - start) > limits::NameLength)
        fail("the name is too long");
    m_at = at;
    return {start, size_t(at - start)};
}

bool Cursor::suffix(std::string_view text)
{
    if (!std::string_view(m_at, size_t(m_end - m_at)).starts_with(text))
        return false;
    if (isNamePart(text.back()) && isNamePart(ahead(text.size())))
        return false;
    m_at += text.size();
    return true;
}

std::string_view Cursor::registerText()
{
    skipBlanks();
    const char* start = m_at;
    bool access = suffix("@");
    if (access)
        suffix("--");
    const char* name = m_at;
    while (m_at < m_end && isNamePart(*m_at))
        ++m_at;
    if (m_at == name) {
        m_at = start;
        return {};
    }
    if (m_at < m_end && *m_at == '[') {
        while (m_at < m_end && *m_at != ']')
            ++m_at;
        if (m_at == m_end) {
            m_at = start;
            return {};
        }
        ++m_at;
    }
    if (access) {
        bool step = suffix("++") || suffix("--");
        if (!step && (suffix(".B") || suffix(".W") || suffix(".L")))
            (void)(suffix("++") || suffix("--"));
    }
    return {start, size_t(m_at - start)};
}

uint64_t Cursor::number()
{
    skipBlanks();
    if (m_at < m_end && *m_at == '\'') {
        ++m_at;
        if (m_at == m_end)
            fail("a character is missing");
        unsigned char c = *m_at == '\\' ? (unsigned char)escape() : (unsigned char)*m_at++;
        if (m_at == m_end || *m_at != '\'')
            fail("a closing ' is missing");
        ++m_at;
        return c;
    }
    unsigned base = 10;
    const char* start = m_at;
    if (ahead(0) == '0' && (ahead(1) | 0x20) == 'x')
        base = 16;
    else if (ahead(0) == '0' && (ahead(1) | 0x20) == 'b')
        base = 2;
    if (base != 10)
        m_at += 2;
    const char* digits = m_at;
    uint64_t value = 0;
    for (; m_at < m_end && unsigned(digitValue(*m_at)) < base; ++m_at) {
        uint64_t digit = uint64_t(digitValue(*m_at));
        if (value > (UINT64_MAX - digit) / base) {
            m_at = start;
            fail("the number is too large");
        }
        value = value * base + digit;
    }
    if (m_at == digits || (m_at < m_end && isNamePart(*m_at))) {
        m_at = start;
        fail("malformed number");
    }
    return value;
}

char Cursor::escape()
{
    ++m_at; // the backslash
    if (m_at == m_end)
        fail("the text ends within an escape");
    char c = *m_at++;
    switch (c) {
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case '0': return '\0';
    case '\\':
    case '"':
    case '\'': return c;
    case 'x': {
        int high = digitValue(ahead(0)), low = digitValue(ahead(1));
        if (high < 16 && low < 16) {
            m_at += 2;
            return char(high << 4 | low);
        }
        fail("\\x needs two hexadecimal digits");
    }
    }
    --m_at;
    fail(std::string("unknown escape \\") + c);
}

std::string Cursor::quoted()
{
    expect('"', "before a text");
    std::string text;
    while (m_at < m_end && *m_at != '"')
        text += *m_at == '\\' ? escape() : *m_at++;
    if (m_at == m_end)
        fail("a closing \" is missing");
    ++m_at;
    return text;
}

std::string Cursor::name(const char* what)
{
    if (peek() == '"') {
        std::string text = quoted();
        if (text.size() > limits::NameLength)
            fail("the name is too long");
        return text;
    }
    std::string_view word = identifier();
    if (word.empty())
        fail(std::string("expected ") + what);
    return std::string(word);
}

double Cursor::floating()
{
    skipBlanks();
    double value = 0;
    // from_chars knows no plus sign.
    const char* from = m_at < m_end && *m_at == '+' ? m_at + 1 : m_at;
    auto [end, fault] = std::from_chars(from, m_end, value);
    if (fault != std::errc() || (end < m_end && isNamePart(*end)))
        fail("expected a floating point number");
    m_at = end;
    return value;
}

void Cursor::expectEnd()
{
    if (!atEnd())
        fail("unexpected text behind the operands");
}

void Cursor::fail(std::string text) const
{
    throw SyntaxError{column(), std::move(text)};
}

void Cursor::failAt(uint32_t column, std::string text)
{
    throw SyntaxError{column, std::move(text)};
}

} // namespace kvas
