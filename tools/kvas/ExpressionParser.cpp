#include "tools/kvas/ExpressionParser.h"
#include "tools/kvas/Expression.h"
#include "tools/kvas/Registers.h"
#include "tools/kvas/Tags.h"
#include "tools/kvas/limits.h"

namespace kvas {

namespace {

struct Operator {
    std::string_view text;
    int level; // the higher binds tighter
    Tag tag;
};

// A longer text stands before its beginning.
constexpr Operator operators[] = {
    {"||", 1, Tag::LogicalOr},    {"&&", 2, Tag::LogicalAnd},   {"|", 3, Tag::Or},
    {"^", 4, Tag::Xor},           {"&", 5, Tag::And},           {"==", 6, Tag::Equal},
    {"!=", 6, Tag::NotEqual},     {"<<", 8, Tag::ShiftLeft},    {">>", 8, Tag::ShiftRight},
    {"<=", 7, Tag::LessEqual},    {">=", 7, Tag::GreaterEqual}, {"<", 7, Tag::Less},
    {">", 7, Tag::Greater},       {"+", 9, Tag::Add},           {"-", 9, Tag::Subtract},
    {"*", 10, Tag::Multiply},     {"/", 10, Tag::Divide},       {"%", 10, Tag::Remainder},
    {"??", 11, Tag::WordAddress},
};
constexpr Operator arithmeticRight = {"ASHR", 8, Tag::ArithmeticRight};

// The operator at the cursor if it binds at least as tightly as `level`; then the cursor is behind it.
const Operator* acceptOperator(Cursor& cursor, int level)
{
    if (cursor.atEnd())
        return nullptr;
    char c = cursor.ahead(0);
    if (c == 'A') {
        if (arithmeticRight.level >= level && cursor.acceptWord(arithmeticRight.text))
            return &arithmeticRight;
        return nullptr;
    }
    if (c == ',' || c == ')')
        return nullptr;
    if (c == '-' && cursor.ahead(1) == '>') // an arrow stands between parameters and results
        return nullptr;
    for (const Operator& op : operators) {
        if (op.text[0] == c && (op.text.size() == 1 || op.text[1] == cursor.ahead(1))) {
            if (op.level < level)
                return nullptr;
            cursor.accept(op.text);
            return &op;
        }
    }
    return nullptr;
}

} // namespace

const Expr* ExpressionParser::parse(Cursor& cursor)
{
    return binary(cursor, 1, 0);
}

const Expr* ExpressionParser::make(Cursor& cursor, Tag tag, const Expr* left, const Expr* right)
{
    const Expr* result = m_program.binary(tag, left, right);
    if (!result)
        cursor.fail("the expression is too complex");
    return result;
}

const Expr* ExpressionParser::binary(Cursor& cursor, int level, unsigned nesting)
{
    if (nesting > limits::Nesting)
        cursor.fail("the expression is nested too deeply");
    const Expr* left = unary(cursor, nesting);
    while (const Operator* op = acceptOperator(cursor, level))
        left = make(cursor, op->tag, left, binary(cursor, op->level + 1, nesting + 1));
    return left;
}

const Expr* ExpressionParser::unary(Cursor& cursor, unsigned nesting)
{
    if (nesting > limits::Nesting)
        cursor.fail("the expression is nested too deeply");
    switch (cursor.peek()) {
    case '-':
        cursor.accept('-');
        return make(cursor, Tag::Subtract, m_program.constant(0), unary(cursor, nesting + 1));
    case '~':
        cursor.accept('~');
        return make(cursor, Tag::Xor, unary(cursor, nesting + 1), m_program.constant(-1));
    case '!':
        cursor.accept('!');
        return make(cursor, Tag::Equal, unary(cursor, nesting + 1), m_program.constant(0));
    case '+': cursor.accept('+'); return unary(cursor, nesting + 1);
    }
    return primary(cursor, nesting);
}

const Expr* ExpressionParser::primary(Cursor& cursor, unsigned nesting)
{
    char c = cursor.peek();
    if (Cursor::isDigit(c) || c == '\'')
        return m_program.constant(int64_t(cursor.number()));
    if (c == '(') {
        cursor.accept('(');
        const Expr* inner = binary(cursor, 1, nesting + 1);
        cursor.expect(')', "behind the expression");
        return inner;
    }
    uint32_t column = cursor.column();
    std::string_view name = cursor.identifier();
    if (name.empty() && c == '.') {
        cursor.accept('.');
        return m_program.of(m_names.here());
    }
    if (name.empty())
        cursor.fail("expected an expression");
    if (cursor.ahead(0) == '(') {
        bool start = name == "STARTOF", size = name == "SIZEOF";
        if (start || size) {
            cursor.accept('(');
            Section* section = m_program.section(m_program.keep(cursor.name("the name of a section")));
            cursor.expect(')', "behind the section");
            if (!section->place.line)
                section->place = m_names.placeAt(column);
            return m_program.ofSection(section, start ? Expr::Kind::SectionStart : Expr::Kind::SectionSize);
        }
        if (name == "WORDADDR") {
            cursor.accept('(');
            const Expr* inner = binary(cursor, 1, nesting + 1);
            cursor.expect(')', "behind the expression");
            return make(cursor, Tag::WordAddress, inner, m_program.constant(0));
        }
    }
    if (cursor.ahead(0) == '[' || isRegisterName(name))
        Cursor::failAt(column, "a register cannot be part of an expression");
    return m_program.of(m_names.reference(name, column));
}

int64_t ExpressionParser::number(Cursor& cursor, int64_t low, int64_t high, const char* what)
{
    cursor.peek();
    uint32_t column = cursor.column();
    const Expr* expr = parse(cursor);
    Value value = Evaluator().evaluate(expr);
    if (!value.resolved())
        Cursor::failAt(column, std::string(what) + " must be known here: " + value.why);
    if (value.number < low || value.number > high)
        Cursor::failAt(column, std::string(what) + " must be from " + std::to_string(low) + " to " +
                                   std::to_string(high));
    return value.number;
}

const Expr* ExpressionParser::location(Cursor& cursor)
{
    Cursor::Mark mark = cursor.mark();
    std::string_view name = cursor.registerText();
    std::optional<unsigned> number = name.empty() ? std::nullopt : sourceRegister(name);
    if (!number) {
        cursor.back(mark);
        return parse(cursor);
    }
    const Expr* base = m_program.ofRegister(*number);
    if (cursor.peek() != '+' && cursor.peek() != '-')
        return base;
    return make(cursor, Tag::RegisterRelative, base, parse(cursor)); // the sign goes with the distance
}

} // namespace kvas
