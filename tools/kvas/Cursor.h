// A reading position in one line of source. Blanks in front of what is asked for are passed over; a
// comment (";" or "//") ends the line. What is malformed throws SyntaxError.
#pragma once

#include "tools/kvas/Diagnostics.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kvas {

class Cursor {
public:
    explicit Cursor(std::string_view line) : m_begin(line.data()), m_at(m_begin), m_end(m_begin + line.size())
    {
    }

    bool atEnd();
    // The next character that is not a blank; 0 at the end of the line.
    char peek();
    // The character `n` behind the present place, blanks included; 0 past the end.
    char ahead(size_t n) const { return size_t(m_end - m_at) > n ? m_at[n] : '\0'; }
    uint32_t column() const { return uint32_t(m_at - m_begin) + 1; }

    bool accept(char c);
    bool accept(std::string_view text);
    // An identifier that equals `word`, as a whole.
    bool acceptWord(std::string_view word);
    void expect(char c, const char* what);
    // A letter, "_", "?" or "$", then also digits, and "." in front of a letter. A leading "." belongs to it
    // when a letter follows. Empty when there is none.
    std::string_view identifier();
    // A register's name as it is printed, such as "@DP[0].B++"; not yet looked up. Empty when the text
    // cannot be one.
    std::string_view registerText();

    // Decimal, 0x, 0b, or a character in single quotes; unsigned, at most 64 bits.
    uint64_t number();
    // A text in double quotes, with \n \r \t \0 \\ \" \' \xHH.
    std::string quoted();
    // A quoted text, or an identifier.
    std::string name(const char* what);
    double floating();

    void expectEnd();
    [[noreturn]] void fail(std::string text) const;
    [[noreturn]] static void failAt(uint32_t column, std::string text);

    using Mark = const char*;
    Mark mark() const { return m_at; }
    void back(Mark mark) { m_at = mark; }

    static bool isNameStart(char c);
    static bool isNamePart(char c);
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

private:
    void skipBlanks();
    char escape();
    bool suffix(std::string_view text);

    const char* m_begin;
    const char* m_at;
    const char* m_end;
};

} // namespace kvas
