// Splits a text into tokens with a table of patterns: at each position the first pattern that matches wins.
//
// reset() gives the text and fetches the first token; gettok() goes on. The accessors describe the current
// token.
#pragma once

#include "expression/LexerToken.h"

#include <QString>

#include <array>
#include <vector>

class Lexer {
public:
    // Ids that the lexer itself knows; a table adds its own.
    enum : int { End = 0, Space = 2, Integer = 3, HexInteger = 4, Float = 5, String = 6, Identifier = 7 };
    // Precedence of what is no binary operator.
    static constexpr int NoOperator = 10;

    Lexer() = default;
    virtual ~Lexer() = default;
    Lexer(const Lexer&) = delete;
    Lexer& operator=(const Lexer&) = delete;

    // Adds a row behind those that are there.
    void addToken(const char* pattern, int id, int precedence);

    // Throws ParserException for a text beyond the limit, and what gettok() throws.
    void reset(const QString& text);
    // Fetches the next token that is not white space, and returns its id; End behind the last one. Throws
    // ParserException "unrecognised token: " and the rest of the text.
    int gettok();
    // The same, and white space is a token, too. Not to be called at the end of the text.
    int nexttok();

    int token() const { return m_token; }
    int precedence() const { return m_precedence; }
    QStringView text() const { return QStringView(m_text).mid(m_start, m_position - m_start); }
    // Where the current token begins; the length of the text at its end.
    int tokenPosition() const { return int(m_start); }
    int position() const { return int(m_position); } // behind the current token

    // The token as a number or text. A number that does not fit throws ParserException.
    int64_t intTok() const;
    uint32_t hexTok() const;
    double doubleTok() const { return text().toDouble(); }
    QString strTok() const { return text().mid(1, text().size() - 2).toString(); } // without the quotes
    bool identIs(QStringView name) const { return m_token == Identifier && text() == name; }

private:
    const LexerToken* tokenAt(qsizetype& length) const;

    std::vector<LexerToken> m_tokens;
    std::array<std::vector<int>, 128> m_beginning; // rows by the ASCII character they can begin with
    QString m_text;
    qsizetype m_start = 0;
    qsizetype m_position = 0;
    int m_token = End;
    int m_precedence = NoOperator;
};
