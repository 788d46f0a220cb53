// Expressions, by the precedence of C:
//
//   ??                         word address of the left operand
//   * / %   + -   << >> ASHR   < > <= >=   == !=   &   ^   |   &&   ||
//
// with - ~ ! + in front of an operand. Operands are numbers, characters, symbols, "." for the place of the
// statement, STARTOF(section), SIZEOF(section) and WORDADDR(expression).
#pragma once

#include "tools/kvas/Cursor.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Program.h"
#include "tools/kvas/Tags.h"

namespace kvas {

// What names mean at the present place.
class Names {
public:
    virtual ~Names() = default;
    virtual Symbol* reference(std::string_view name, uint32_t column) = 0;
    virtual Marker* here() = 0;
    virtual Place placeAt(uint32_t column) const = 0;
};

class ExpressionParser {
public:
    ExpressionParser(Program& program, Names& names) : m_program(program), m_names(names) {}

    const Expr* parse(Cursor& cursor);
    // A number that is known where it stands; within the bounds, or SyntaxError with `what`.
    int64_t number(Cursor& cursor, int64_t low, int64_t high, const char* what);
    // Where a variable lives: a register, a register and a distance, or an address.
    const Expr* location(Cursor& cursor);

private:
    const Expr* binary(Cursor& cursor, int level, unsigned nesting);
    const Expr* unary(Cursor& cursor, unsigned nesting);
    const Expr* primary(Cursor& cursor, unsigned nesting);
    const Expr* make(Cursor& cursor, Tag tag, const Expr* left, const Expr* right);

    Program& m_program;
    Names& m_names;
};

} // namespace kvas
