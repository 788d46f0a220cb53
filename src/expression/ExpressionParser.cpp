#include "expression/ExpressionParser.h"

#include "expression/CStyleLexer.h"
#include "expression/ExpressionArena.h"
#include "expression/ExpressionOperator.h"
#include "expression/MarkerType.h"
#include "expression/ParserException.h"

namespace {

// What a token does between two operands. Tokens that are not here have a precedence but no meaning.
struct OperatorRow {
    int token;
    ExpressionOperator op;
    bool assigns; // the result to the left operand
};

using Op = ExpressionOperator;
constexpr OperatorRow Operators[] = {
    {CStyleLexer::Multiply, Op::Multiply, false},
    {CStyleLexer::Divide, Op::Divide, false},
    {CStyleLexer::Mod, Op::Mod, false},
    {CStyleLexer::Plus, Op::Plus, false},
    {CStyleLexer::Minus, Op::Minus, false},
    {CStyleLexer::Lshift, Op::Lshift, false},
    {CStyleLexer::Rshift, Op::Rshift, false},
    {CStyleLexer::Lt, Op::Lt, false},
    {CStyleLexer::Le, Op::Le, false},
    {CStyleLexer::Gt, Op::Gt, false},
    {CStyleLexer::Ge, Op::Ge, false},
    {CStyleLexer::Eq, Op::Eq, false},
    {CStyleLexer::Ne, Op::Ne, false},
    {CStyleLexer::BitAnd, Op::BitAnd, false},
    {CStyleLexer::BitXor, Op::BitXor, false},
    {CStyleLexer::BitOr, Op::BitOr, false},
    {CStyleLexer::LogicalAnd, Op::LogicalAnd, false},
    {CStyleLexer::LogicalOr, Op::LogicalOr, false},
    {CStyleLexer::PlusAssign, Op::Plus, true},
    {CStyleLexer::MinusAssign, Op::Minus, true},
    {CStyleLexer::MultiplyAssign, Op::Multiply, true},
    {CStyleLexer::DivideAssign, Op::Divide, true},
    {CStyleLexer::ModAssign, Op::Mod, true},
    {CStyleLexer::RshiftAssign, Op::Rshift, true},
    {CStyleLexer::LshiftAssign, Op::Lshift, true},
    {CStyleLexer::BitAndAssign, Op::BitAnd, true},
    {CStyleLexer::BitXorAssign, Op::BitXor, true},
    {CStyleLexer::BitOrAssign, Op::BitOr, true},
};

} // namespace

ExpressionParser::Tree ExpressionParser::parse(const QString& text, int* end)
{
    if (end)
        *end = 0;
    if (text.isEmpty())
        return nullptr;
    auto arena = std::make_shared<Arena>();
    m_arena = arena.get();
    m_depth = 0;
    m_lexer->reset(text);
    const Expression* root = parseExpression(LowestLevel);
    if (end)
        *end = m_lexer->tokenPosition();
    return Tree(std::move(arena), root);
}

ExpressionType ExpressionParser::parseAndEvaluate(const QString& text, int* end)
{
    Tree tree = parse(text, end);
    return tree ? tree->evaluate() : ExpressionType();
}

// Precedence climbing: operands of a level are expressions of the level above, and every level goes on to
// the left.
const Expression* ExpressionParser::parseExpression(int level)
{
    Nesting nesting(*this);
    const Expression* left = parseExpr10();
    for (int found; (found = m_lexer->precedence()) >= level && found <= HighestLevel;) {
        int token = m_lexer->token();
        m_lexer->gettok();
        const Expression* right = found == HighestLevel ? parseExpr10() : parseExpression(found + 1);
        left = combine(token, left, right);
    }
    return left;
}

const Expression* ExpressionParser::combine(int token, const Expression* left, const Expression* right)
{
    if (token == CStyleLexer::Assign)
        return make<AssignExpression>(left, right, this);
    for (const OperatorRow& row : Operators) {
        if (row.token != token)
            continue;
        const Expression* made = nullptr;
        switch (row.op) {
#define EXPRESSION_OPERATOR_MAKE(name, text)                                                                 \
    case Op::name: made = make<name##Expression>(left, right); break;
            EXPRESSION_OPERATORS(EXPRESSION_OPERATOR_MAKE)
#undef EXPRESSION_OPERATOR_MAKE
        }
        return row.assigns ? make<AssignExpression>(left, made, this) : made;
    }
    throw ParserException("operator not supported");
}

void ExpressionParser::expect(int token, const char* otherwise)
{
    if (m_lexer->token() != token)
        throw ParserException(otherwise);
    m_lexer->gettok();
}

const Expression* ExpressionParser::parseExpr10()
{
    Nesting nesting(*this);
    return parsePostfix(parsePrimary());
}

const Expression* ExpressionParser::parsePrimary()
{
    int token = m_lexer->token();
    const Expression* made = nullptr;
    switch (token) {
    case Lexer::Integer: made = make<IntegerConstantExpression>(m_lexer->intTok()); break;
    case Lexer::HexInteger: made = make<IntegerConstantExpression>(m_lexer->hexTok()); break;
    case Lexer::Float: made = make<FloatConstantExpression>(m_lexer->doubleTok()); break;
    case Lexer::String: made = make<StringConstantExpression>(m_lexer->strTok()); break;
    case CStyleLexer::Register:
        made = make<RegisterExpression>(m_lexer->text().mid(1).toString(), this);
        break;
    case Lexer::Identifier:
        if (!m_lexer->identIs(u"sizeof"))
            return parseIdentifier(false);
        break;
    case CStyleLexer::OpenParenthesis:
    case CStyleLexer::Scope:
    case CStyleLexer::Increment:
    case CStyleLexer::Decrement:
    case CStyleLexer::Minus:
    case CStyleLexer::Plus:
    case CStyleLexer::BitNot:
    case CStyleLexer::LogicalNot:
    case CStyleLexer::Multiply:
    case CStyleLexer::BitAnd: break;
    default: throw ParserException("expression expected");
    }
    m_lexer->gettok();
    if (made)
        return made;

    switch (token) {
    case Lexer::Identifier: {
        expect(CStyleLexer::OpenParenthesis, "'(' expected");
        const Expression* operand = parseExpression(LowestLevel);
        expect(CStyleLexer::CloseParenthesis, "')' expected");
        return make<SizeofExpression>(operand, this);
    }
    case CStyleLexer::Scope: return parseIdentifier(true);
    case CStyleLexer::OpenParenthesis: {
        if (const Expression* cast = parseCast())
            return cast;
        const Expression* inner = parseExpression(LowestLevel);
        expect(CStyleLexer::CloseParenthesis, "')' expected");
        return inner;
    }
    case CStyleLexer::Increment: return step(parseExpr10(), Op::Plus);
    case CStyleLexer::Decrement: return step(parseExpr10(), Op::Minus);
    case CStyleLexer::Minus: return make<NegateExpression>(parseExpr10());
    case CStyleLexer::BitNot: return make<BitNotExpression>(parseExpr10());
    case CStyleLexer::LogicalNot: return make<LogicalNotExpression>(parseExpr10());
    case CStyleLexer::Multiply: {
        const Expression* pointer = parseExpr10();
        return make<LeftSquareBracketExpression>(pointer, make<IntegerConstantExpression>(0), this);
    }
    case CStyleLexer::BitAnd: return make<AddressofExpression>(parseExpr10(), this);
    default: return parseExpr10(); // a sign that changes nothing
    }
}

// The expression with 1 added or subtracted, assigned to itself.
const Expression* ExpressionParser::step(const Expression* expression, ExpressionOperator op)
{
    const Expression* one = make<IntegerConstantExpression>(1);
    const Expression* next = op == Op::Plus
                                 ? static_cast<const Expression*>(make<PlusExpression>(expression, one))
                                 : make<MinusExpression>(expression, one);
    return make<AssignExpression>(expression, next, this);
}

const Expression* ExpressionParser::parsePostfix(const Expression* expression)
{
    for (;;) {
        switch (m_lexer->token()) {
        case CStyleLexer::OpenBracket: {
            m_lexer->gettok();
            const Expression* index = parseExpression(LowestLevel);
            expect(CStyleLexer::CloseBracket, "expected ']'");
            expression = make<LeftSquareBracketExpression>(expression, index, this);
            break;
        }
        case CStyleLexer::Dot:
        case CStyleLexer::Arrow:
            m_lexer->gettok();
            expression = make<DotExpression>(expression, parseIdentifier(false), this);
            break;
        case CStyleLexer::Increment:
        case CStyleLexer::Decrement:
            expression = step(expression, m_lexer->token() == CStyleLexer::Increment ? Op::Plus : Op::Minus);
            m_lexer->gettok();
            break;
        case CStyleLexer::OpenParenthesis: {
            m_lexer->gettok();
            std::vector<const Expression*> arguments;
            while (m_lexer->token() != CStyleLexer::CloseParenthesis) {
                arguments.push_back(parseExpr10());
                if (m_lexer->token() == CStyleLexer::Comma)
                    m_lexer->gettok();
            }
            m_lexer->gettok();
            expression = make<CallExpression>(expression, std::move(arguments), this);
            break;
        }
        default: return expression;
        }
    }
}

const Expression* ExpressionParser::parseIdentifier(bool global)
{
    QStringList names;
    for (const char* otherwise = "identifier expected";; otherwise = "identifier expected after '::'") {
        if (m_lexer->token() != Lexer::Identifier)
            throw ParserException(otherwise);
        names.append(m_lexer->text().toString());
        if (m_lexer->gettok() != CStyleLexer::Scope)
            break;
        m_lexer->gettok();
    }
    if (names.size() == 1 && !global)
        return make<IdentifierExpression>(names.front(), this);
    return make<ScopedIdentifierExpression>(names, this);
}

std::unique_ptr<MarkerType> ExpressionParser::getAddressof(MarkerType*)
{
    throw ParserException("addressof not implemented");
}

ExpressionType ExpressionParser::getSizeof(MarkerType*)
{
    throw ParserException("sizeof not implemented");
}

ExpressionType ExpressionParser::callFunction(MarkerType*, const std::vector<ExpressionType>&)
{
    throw ParserException("function calling not implemented");
}
