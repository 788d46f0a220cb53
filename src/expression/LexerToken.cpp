#include "expression/LexerToken.h"

#include <cassert>

LexerToken::LexerToken(const char* pattern, int id, int precedence) : m_id(id), m_precedence(precedence)
{
    for (const char* at = pattern; *at;) {
        Piece piece = readPiece(at);
        piece.optional = *at == '*';
        piece.repeated = *at == '*' || *at == '+';
        if (piece.repeated)
            ++at;
        m_pieces.push_back(piece);
    }
    assert(!m_pieces.empty() && !m_pieces.front().optional);
}

// Reads one character or class.
LexerToken::Piece LexerToken::readPiece(const char*& at)
{
    Piece piece;
    auto one = [&piece, &at]() -> int { // the character, -1 for a class by name
        if (*at != '\\')
            return *at++;
        char escaped = at[1];
        at += 2;
        if (escaped != 'd' && escaped != 's')
            return escaped;
        for (const char* member = escaped == 'd' ? "0123456789" : " \t\n\v\f\r"; *member; ++member)
            piece.characters.set(size_t(*member));
        return -1;
    };
    if (*at != '[') {
        if (int character = one(); character >= 0)
            piece.characters.set(size_t(character));
        return piece;
    }
    bool negated = *++at == '^';
    at += negated;
    while (*at != ']') {
        assert(*at);
        int first = one();
        if (first < 0)
            continue;
        int last = first;
        if (*at == '-' && at[1] != ']') {
            ++at;
            last = one();
        }
        for (int character = first; character <= last; ++character)
            piece.characters.set(size_t(character));
    }
    ++at;
    if (negated) {
        piece.characters.flip();
        piece.others = true;
    }
    return piece;
}

qsizetype LexerToken::match(QStringView text, qsizetype at) const
{
    qsizetype end = at;
    for (const Piece& piece : m_pieces) {
        bool found = end < text.size() && piece.matches(text[end]);
        if (!found && !piece.optional)
            return 0;
        if (!found)
            continue;
        ++end;
        while (piece.repeated && end < text.size() && piece.matches(text[end]))
            ++end;
    }
    return end - at;
}
