// The tokens of the expression language.
#pragma once

#include "expression/Lexer.h"

class CStyleLexer : public Lexer {
public:
    enum : int {
        Register = 8,
        Semicolon = 9,
        Colon = 10,
        Scope = 11,
        OpenParenthesis = 12,
        CloseParenthesis = 13,
        OpenBracket = 14,
        CloseBracket = 15,
        OpenBrace = 16,
        CloseBrace = 17,
        Dot = 18,
        Arrow = 19,
        Increment = 20,
        Decrement = 21,
        BitNot = 22,
        LogicalNot = 23,
        Multiply = 24,
        Divide = 25,
        Mod = 26,
        Plus = 27,
        Minus = 28,
        Lshift = 29,
        Rshift = 30,
        UnsignedRshift = 31,
        Lt = 32,
        Le = 33,
        Gt = 34,
        Ge = 35,
        Eq = 36,
        Ne = 37,
        BitAnd = 38,
        BitXor = 39,
        BitOr = 40,
        LogicalAnd = 41,
        LogicalOr = 42,
        Question = 43,
        Assign = 44,
        PlusAssign = 45,
        MinusAssign = 46,
        MultiplyAssign = 47,
        DivideAssign = 48,
        ModAssign = 49,
        RshiftAssign = 50,
        LshiftAssign = 51,
        UnsignedRshiftAssign = 52,
        BitAndAssign = 53,
        BitXorAssign = 54,
        BitOrAssign = 55,
        Comma = 56,
    };

    CStyleLexer();
};
