#include "script/engine/ESLexer.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESNumberText.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/limits.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

enum CharacterClass : uint8_t { Lower = 1, Upper = 2, Sign = 4, Decimal = 8, Hexadecimal = 64, Octal = 128 };
constexpr int IdentifierStart = Lower | Upper | Sign;
constexpr int IdentifierPart = IdentifierStart | Decimal;

constexpr std::array<uint8_t, 256> makeClasses()
{
    std::array<uint8_t, 256> classes{};
    for (int c = 'a'; c <= 'z'; ++c)
        classes[size_t(c)] |= Lower;
    for (int c = 'A'; c <= 'Z'; ++c)
        classes[size_t(c)] |= Upper;
    classes['$'] = classes['_'] = Sign;
    for (int c = '0'; c <= '9'; ++c)
        classes[size_t(c)] |= Decimal | Hexadecimal;
    for (int c = '0'; c <= '7'; ++c)
        classes[size_t(c)] |= Octal;
    for (int c = 'a'; c <= 'f'; ++c) {
        classes[size_t(c)] |= Hexadecimal;
        classes[size_t(c - 'a' + 'A')] |= Hexadecimal;
    }
    return classes;
}

constexpr std::array<uint8_t, 256> ClassTable = makeClasses();

bool is(char16_t c, int characterClass)
{
    return c < ClassTable.size() && (ClassTable[c] & characterClass);
}

int digitValue(char16_t c)
{
    return is(c, Decimal) ? c - '0' : is(c, Lower) ? c - 'a' + 10 : c - 'A' + 10;
}

struct Operator {
    const char* text;
    int token;
};

// Longest first.
constexpr Operator OperatorTable[] = {
    {">>>=", ESToken::UshrAssign},    {"===", ESToken::StrictEqual},
    {"!==", ESToken::StrictNotEqual}, {">>>", ESToken::ShiftRightUnsigned},
    {"<<=", ESToken::ShlAssign},      {">>=", ESToken::ShrAssign},
    {"==", ESToken::Equal},           {"!=", ESToken::NotEqual},
    {"<=", ESToken::LessEqual},       {">=", ESToken::GreaterEqual},
    {"<<", ESToken::ShiftLeft},       {">>", ESToken::ShiftRight},
    {"++", ESToken::Increment},       {"--", ESToken::Decrement},
    {"||", ESToken::LogicalOr},       {"&&", ESToken::LogicalAnd},
    {"+=", ESToken::AddAssign},       {"-=", ESToken::SubAssign},
    {"*=", ESToken::MulAssign},       {"/=", ESToken::DivAssign},
    {"%=", ESToken::ModAssign},       {"&=", ESToken::AndAssign},
    {"|=", ESToken::OrAssign},        {"^=", ESToken::XorAssign},
};

constexpr char SingleTable[] = "(),:;?[]{}~!%&*+-./<=>^|";

} // namespace

void ESLexer::setSource(const QString& source)
{
    if (source.size() > ESLimits::StringLength)
        throw ESFatalError("string too long");
    m_source = source;
    m_length = int(source.size());
    m_position = 0;
    m_line = 1;
    m_ahead = -1;
}

void ESLexer::fail(const QString& text) const
{
    m_context->throwSyntaxError(m_line, text);
}

int ESLexer::peek()
{
    if (m_ahead < 0)
        m_ahead = scan();
    return m_ahead;
}

int ESLexer::next()
{
    int token = peek();
    m_ahead = -1;
    return token;
}

bool ESLexer::take(int token)
{
    if (peek() != token)
        return false;
    m_ahead = -1;
    return true;
}

bool ESLexer::colonFollows() const
{
    int position = m_position;
    while (at(position) == ' ' || at(position) == '\t')
        ++position;
    return at(position) == ':';
}

void ESLexer::skipBlanksAndComments()
{
    while (m_position < m_length) {
        char16_t c = at(m_position);
        if (c == '\n') {
            ++m_line;
            m_afterLineEnd = true;
        } else if (c == '\r') {
            m_afterLineEnd = true;
        } else if (c == '/' && at(m_position + 1) == '/') {
            while (m_position < m_length && at(m_position) != '\n')
                ++m_position;
            continue;
        } else if (c == '/' && at(m_position + 1) == '*') {
            m_position += 2;
            while (m_position < m_length && !(at(m_position) == '*' && at(m_position + 1) == '/')) {
                if (at(m_position) == '\n') {
                    ++m_line;
                    m_afterLineEnd = true;
                }
                ++m_position;
            }
            m_position = std::min(m_position + 2, m_length);
            continue;
        } else if (c != ' ' && c != '\t' && c != '\v' && c != '\f' && c != 26) {
            return;
        }
        ++m_position;
    }
}

int ESLexer::scan()
{
    m_afterLineEnd = false;
    skipBlanksAndComments();
    if (m_position >= m_length)
        return ESToken::EndOfInput;

    char16_t c = at(m_position);
    if (is(c, IdentifierStart)) {
        int start = m_position;
        while (m_position < m_length && is(at(m_position), IdentifierPart))
            ++m_position;
        QStringView text(m_source.constData() + start, m_position - start);
        m_name = ESStringPool::intern(text);
        return ESToken::word(m_name->text());
    }
    if (is(c, Decimal) || (c == '.' && is(at(m_position + 1), Decimal)))
        return scanNumber();
    if (c == '"' || c == '\'')
        return scanString(c);
    return scanOperator();
}

int ESLexer::scanOperator()
{
    for (const Operator& candidate : OperatorTable) {
        int length = int(std::strlen(candidate.text));
        int i = 0;
        while (i < length && at(m_position + i) == char16_t(candidate.text[i]))
            ++i;
        if (i == length) {
            m_position += length;
            return candidate.token;
        }
    }
    char16_t c = at(m_position);
    if (c && c < 128 && std::strchr(SingleTable, int(c))) {
        ++m_position;
        return int(c);
    }
    fail(QStringLiteral("unknown character '%1'").arg(QChar(c)));
}

double ESLexer::integer(int from, int radix)
{
    long double value = 0;
    for (int i = from; i < m_position; ++i) {
        int digit = digitValue(at(i));
        if (digit >= radix)
            fail(QStringLiteral("digit '%1' is not radix %2").arg(m_source[i]).arg(radix));
        value = value * radix + digit;
    }
    return double(value);
}

int ESLexer::scanNumber()
{
    int start = m_position;
    if (at(start) == '0' && (at(start + 1) == 'x' || at(start + 1) == 'X')) {
        m_position += 2;
        while (is(at(m_position), Decimal | Lower | Upper))
            ++m_position;
        m_number = integer(start + 2, 16);
        if (m_position == start + 2)
            fail(QStringLiteral("bad parse of numerical constant '%1'").arg(m_source.mid(start, 2)));
        return ESToken::NumberLiteral;
    }
    if (at(start) == '0' && is(at(start + 1), Decimal)) {
        while (is(at(m_position), Decimal))
            ++m_position;
        m_number = integer(start + 1, 8);
        return ESToken::NumberLiteral;
    }

    while (is(at(m_position), Decimal))
        ++m_position;
    if (at(m_position) == '.') {
        ++m_position;
        while (is(at(m_position), Decimal))
            ++m_position;
    }
    if (at(m_position) == 'e' || at(m_position) == 'E') {
        ++m_position;
        if (at(m_position) == '+' || at(m_position) == '-')
            ++m_position;
        while (is(at(m_position), Decimal))
            ++m_position;
    }
    QStringView text(m_source.constData() + start, m_position - start);
    if (!decimalToNumber(text, m_number))
        fail(QStringLiteral("bad parse of numerical constant '%1'").arg(text));
    return ESToken::NumberLiteral;
}

char16_t ESLexer::hexEscape(int digits)
{
    unsigned value = 0;
    for (int i = 0; i < digits; ++i) {
        char16_t c = at(m_position);
        if (!is(c, Hexadecimal))
            fail(QStringLiteral("malformed hex escape sequence"));
        value = value * 16 + unsigned(digitValue(c));
        ++m_position;
    }
    return char16_t(value);
}

// The character that stands behind a backslash, and what belongs to it.
char16_t ESLexer::scanEscape()
{
    char16_t c = at(m_position++);
    switch (c) {
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case 'x': return hexEscape(2);
    case 'u': return hexEscape(4);
    default: break;
    }
    if (c == '\n')
        ++m_line;
    if (!is(c, Octal))
        return c;
    unsigned value = unsigned(c - '0');
    for (int digits = 1; digits < 3 && is(at(m_position), Octal); ++digits) {
        if (digits == 2 && value > 31)
            break;
        value = value * 8 + unsigned(at(m_position++) - '0');
    }
    return char16_t(value);
}

int ESLexer::scanString(char16_t quote)
{
    ++m_position;
    QString text;
    for (;;) {
        if (m_position >= m_length)
            fail(QStringLiteral("end of file in string constant"));
        char16_t c = at(m_position++);
        if (c == quote)
            break;
        if (c == '\n' || c == '\r')
            fail(QStringLiteral("newline in string constant"));
        if (c == '\\') {
            if (m_position >= m_length)
                fail(QStringLiteral("end of file in string constant"));
            c = scanEscape();
        }
        text += QChar(c);
    }
    m_name = ESStringPool::intern(text);
    return ESToken::StringLiteral;
}
