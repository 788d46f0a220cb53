// One row of a lexer's table: a pattern, the id of the token that it makes, and its precedence.
//
// A pattern is a row of pieces: a character, an escaped one, `\d`, `\s`, or a class in brackets with ranges
// and `^`; `*` and `+` repeat the piece before them. A repeated piece takes all it can and gives nothing
// back, so a match costs no more than the characters it looks at. Only ASCII is written in patterns; every
// other character belongs to the negated classes.
#pragma once

#include <QStringView>

#include <bitset>
#include <vector>

class LexerToken {
public:
    // The pattern is the program's own: a bad one is an assertion.
    LexerToken(const char* pattern, int id, int precedence);

    // The length of the match that begins at `at`; 0 for none.
    qsizetype match(QStringView text, qsizetype at) const;
    bool canBeginWith(char character) const { return m_pieces.front().matches(QLatin1Char(character)); }
    int id() const { return m_id; }
    int precedence() const { return m_precedence; }

private:
    struct Piece {
        std::bitset<128> characters;
        bool others = false; // the characters beyond ASCII
        bool optional = false;
        bool repeated = false;
        bool matches(QChar c) const { return c.unicode() < 128 ? characters[c.unicode()] : others; }
    };
    static Piece readPiece(const char*& at);

    std::vector<Piece> m_pieces;
    int m_id;
    int m_precedence;
};
