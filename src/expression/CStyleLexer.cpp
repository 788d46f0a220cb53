#include "expression/CStyleLexer.h"

namespace {

struct Row {
    int id;
    const char* pattern;
    int precedence;
};

// The order matters: of "-=" and "-" the longer one must come first.
constexpr Row Tokens[] = {
    {Lexer::Space, R"([\s]+)", 10},
    {Lexer::String, R"("[^"]*")", 10},
    {Lexer::HexInteger, R"(0x[0-9A-Fa-f]*)", 10},
    {Lexer::Float, R"(\d+\.\d+)", 10},
    {Lexer::Integer, R"(\d+)", 10},
    {Lexer::Identifier, R"([A-Za-z_$][A-Za-z_0-9$]*)", 10},
    {CStyleLexer::Register, R"(@[A-Za-z_0-9]*)", 10},
    {CStyleLexer::Semicolon, R"(;)", 10},
    {CStyleLexer::Scope, R"(::)", 10},
    {CStyleLexer::Colon, R"(:)", 10},
    {CStyleLexer::OpenParenthesis, R"(\()", 10},
    {CStyleLexer::CloseParenthesis, R"(\))", 10},
    {CStyleLexer::OpenBracket, R"(\[)", 10},
    {CStyleLexer::CloseBracket, R"(\])", 10},
    {CStyleLexer::OpenBrace, R"(\{)", 10},
    {CStyleLexer::CloseBrace, R"(\})", 10},
    {CStyleLexer::Dot, R"(\.)", 10},
    {CStyleLexer::Arrow, R"(->)", 10},
    {CStyleLexer::Increment, R"(\+\+)", 10},
    {CStyleLexer::Decrement, R"(\-\-)", 10},
    {CStyleLexer::Ne, R"(!=)", 5},
    {CStyleLexer::LogicalNot, R"(!)", 10},
    {CStyleLexer::BitNot, R"(~)", 10},
    {CStyleLexer::MultiplyAssign, R"(\*=)", -3},
    {CStyleLexer::Multiply, R"(\*)", 9},
    {CStyleLexer::DivideAssign, R"(/=)", -3},
    {CStyleLexer::Divide, R"(/)", 9},
    {CStyleLexer::ModAssign, R"(%=)", -3},
    {CStyleLexer::Mod, R"(%)", 9},
    {CStyleLexer::PlusAssign, R"(\+=)", -3},
    {CStyleLexer::Plus, R"(\+)", 8},
    {CStyleLexer::MinusAssign, R"(\-=)", -3},
    {CStyleLexer::Minus, R"(-)", 8},
    {CStyleLexer::LshiftAssign, R"(<<=)", -3},
    {CStyleLexer::Lshift, R"(<<)", 7},
    {CStyleLexer::UnsignedRshiftAssign, R"(>>>=)", -3},
    {CStyleLexer::UnsignedRshift, R"(>>>)", 7},
    {CStyleLexer::RshiftAssign, R"(>>=)", -3},
    {CStyleLexer::Rshift, R"(>>)", 7},
    {CStyleLexer::Le, R"(<=)", 6},
    {CStyleLexer::Lt, R"(<)", 6},
    {CStyleLexer::Ge, R"(>=)", 6},
    {CStyleLexer::Gt, R"(>)", 6},
    {CStyleLexer::Eq, R"(==)", 5},
    {CStyleLexer::BitXorAssign, R"(\^=)", -3},
    {CStyleLexer::BitXor, R"(\^)", 3},
    {CStyleLexer::BitAndAssign, R"(&=)", -3},
    {CStyleLexer::LogicalAnd, R"(&&)", 1},
    {CStyleLexer::BitAnd, R"(&)", 4},
    {CStyleLexer::BitOrAssign, R"(\|=)", -3},
    {CStyleLexer::LogicalOr, R"(\|\|)", 0},
    {CStyleLexer::BitOr, R"(\|)", 2},
    {CStyleLexer::Question, R"(?)", -1},
    {CStyleLexer::Assign, R"(=)", -2},
    {CStyleLexer::Comma, R"(,)", -4},
};

} // namespace

CStyleLexer::CStyleLexer()
{
    for (const Row& row : Tokens)
        addToken(row.pattern, row.id, row.precedence);
}
