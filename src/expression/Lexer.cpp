#include "expression/Lexer.h"

#include "expression/ParserException.h"
#include "expression/limits.h"

namespace {

// The rest of a text in a message is cut here.
constexpr qsizetype RestShown = 200;

} // namespace

void Lexer::addToken(const char* pattern, int id, int precedence)
{
    m_tokens.emplace_back(pattern, id, precedence);
    for (size_t character = 0; character < m_beginning.size(); ++character)
        if (m_tokens.back().canBeginWith(char(character)))
            m_beginning[character].push_back(int(m_tokens.size()) - 1);
}

void Lexer::reset(const QString& text)
{
    if (text.size() > EXPRESSION_MAXIMUM_LENGTH)
        throw ParserException("expression is too long");
    m_text = text;
    m_start = m_position = 0;
    gettok();
}

int Lexer::gettok()
{
    do {
        if (m_position >= m_text.size()) {
            m_start = m_position;
            m_precedence = NoOperator;
            return m_token = End;
        }
        nexttok();
    } while (m_token == Space);
    return m_token;
}

const LexerToken* Lexer::tokenAt(qsizetype& length) const
{
    char16_t first = m_text[m_position].unicode();
    if (first >= m_beginning.size()) {
        for (const LexerToken& token : m_tokens)
            if ((length = token.match(m_text, m_position)) > 0)
                return &token;
        return nullptr;
    }
    for (int row : m_beginning[first])
        if ((length = m_tokens[size_t(row)].match(m_text, m_position)) > 0)
            return &m_tokens[size_t(row)];
    return nullptr;
}

int Lexer::nexttok()
{
    qsizetype length = 0;
    const LexerToken* token = tokenAt(length);
    if (!token)
        throw ParserException(QStringLiteral("unrecognised token: ") + m_text.mid(m_position, RestShown));
    m_start = m_position;
    m_position += length;
    m_precedence = token->precedence();
    return m_token = token->id();
}

int64_t Lexer::intTok() const
{
    bool fits = false;
    int64_t value = text().toLongLong(&fits, 10);
    if (!fits)
        throw ParserException(QStringLiteral("number out of range: ") + text().left(RestShown).toString());
    return value;
}

uint32_t Lexer::hexTok() const
{
    QStringView digits = text().mid(2);
    bool fits = digits.isEmpty();
    uint32_t value = fits ? 0 : digits.toUInt(&fits, 16);
    if (!fits)
        throw ParserException(QStringLiteral("number out of range: ") + text().left(RestShown).toString());
    return value;
}
