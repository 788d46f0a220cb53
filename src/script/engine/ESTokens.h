// Tokens and the kinds of tree nodes, written once with the texts that error messages show. Codes below
// 128 are characters.
#pragma once

#include <QString>

// clang-format off
// Tokens that are no words.
#define ES_SYMBOL_TOKENS(X) \
    X(EndOfInput, "end of input") X(AndAssign, "&=") X(OrAssign, "|=") X(XorAssign, "^=") \
    X(ShlAssign, "<<=") X(ShrAssign, ">>=") X(UshrAssign, ">>>=") X(AddAssign, "+=") \
    X(SubAssign, "-=") X(MulAssign, "*=") X(DivAssign, "/=") X(ModAssign, "%=") \
    X(LogicalOr, "||") X(LogicalAnd, "&&") X(StrictEqual, "===") X(StrictNotEqual, "!==") \
    X(Equal, "==") X(NotEqual, "!=") X(LessEqual, "<=") X(GreaterEqual, ">=") \
    X(ShiftLeft, "<<") X(ShiftRight, ">>") X(ShiftRightUnsigned, ">>>") X(Increment, "++") \
    X(Decrement, "--") X(NumberLiteral, "a number") X(Identifier, "an identifier") \
    X(StringLiteral, "a string")
// Reserved words.
#define ES_WORD_TOKENS(X) \
    X(This, "this") X(Typeof, "typeof") X(Delete, "delete") X(Void, "void") X(While, "while") \
    X(For, "for") X(Break, "break") X(Continue, "continue") X(With, "with") X(Return, "return") \
    X(Function, "function") X(Var, "var") X(If, "if") X(Else, "else") X(In, "in") X(New, "new") \
    X(Case, "case") X(Default, "default") X(Switch, "switch") X(True, "true") X(False, "false") \
    X(Null, "null") X(Catch, "catch") X(Class, "class") X(Const, "const") X(Debugger, "debugger") \
    X(Do, "do") X(Enum, "enum") X(Export, "export") X(Extends, "extends") X(Finally, "finally") \
    X(Import, "import") X(Super, "super") X(Throw, "throw") X(Try, "try")
// Kinds of nodes only.
#define ES_NODE_KINDS(X) \
    X(LineNode, "#line") X(ColumnNode, "#col") X(Call, "call") X(NewCall, "newcall") \
    X(ForIn, "forin") X(ForVar, "forvar") X(ForVarIn, "forvarin") X(ArrayInit, "arrayinit") \
    X(ObjectInit, "objectinit") X(TryCatch, "try-catch") X(TryFinally, "try-finally") \
    X(TryCatchFinally, "try-catch-finally") X(Negate, "-") X(Plus, "+") X(PostIncrement, "++") \
    X(PostDecrement, "--") X(Label, "label") X(Hole, "hole")
// clang-format on

namespace ESToken {

enum Code {
    BeforeFirst = 127,
#define ES_CODE(name, text) name,
    ES_SYMBOL_TOKENS(ES_CODE) ES_WORD_TOKENS(ES_CODE) ES_NODE_KINDS(ES_CODE)
#undef ES_CODE
        Last
};

// The text for error messages; "token<N>" for a code that there is none for.
QString text(int token);
// The reserved word's token, or Identifier.
int word(const QString& name);

} // namespace ESToken
