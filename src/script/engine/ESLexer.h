// Turns source text into tokens. Faults of the text are raised as SyntaxError of the context.
#pragma once

#include "script/engine/ESTokens.h"

#include <QString>

class ESContext;
class ESString;

class ESLexer {
public:
    explicit ESLexer(ESContext* context) : m_context(context) {}

    void setSource(const QString& source);

    // Reads the next token; peek shows it without taking it.
    int next();
    int peek();
    // Takes the token if it is the next one.
    bool take(int token);

    // Of the newest token, read or peeked: its identifier or string, its number, whether a line end came
    // before it, and the line on which it ends.
    ESString* name() const { return m_name; }
    double number() const { return m_number; }
    bool afterLineEnd() const { return m_afterLineEnd; }
    int line() const { return m_line; }
    // The newest token read was an identifier, and a colon follows it with at most blanks between.
    bool colonFollows() const;

private:
    int scan();
    void skipBlanksAndComments();
    int scanOperator();
    int scanNumber();
    int scanString(char16_t quote);
    char16_t scanEscape();
    char16_t hexEscape(int digits);
    double integer(int from, int radix);
    char16_t at(int position) const
    {
        return position < m_length ? m_source.constData()[position].unicode() : char16_t(0);
    }
    [[noreturn]] void fail(const QString& text) const;

    ESContext* m_context;
    QString m_source;
    int m_length = 0;
    int m_position = 0;
    int m_line = 1;
    int m_ahead = -1;
    ESString* m_name = nullptr;
    double m_number = 0;
    bool m_afterLineEnd = false;
};
