// The binary operators of the expression language, each once, with its text.
#pragma once

#define EXPRESSION_OPERATORS(X)                                                                              \
    X(Plus, "+")                                                                                             \
    X(Minus, "-")                                                                                            \
    X(Multiply, "*")                                                                                         \
    X(Divide, "/")                                                                                           \
    X(Mod, "%")                                                                                              \
    X(Lshift, "<<")                                                                                          \
    X(Rshift, ">>")                                                                                          \
    X(Lt, "<")                                                                                               \
    X(Le, "<=")                                                                                              \
    X(Gt, ">")                                                                                               \
    X(Ge, ">=")                                                                                              \
    X(Eq, "==")                                                                                              \
    X(Ne, "!=")                                                                                              \
    X(BitAnd, "&")                                                                                           \
    X(BitXor, "^")                                                                                           \
    X(BitOr, "|")                                                                                            \
    X(LogicalAnd, "&&")                                                                                      \
    X(LogicalOr, "||")

enum class ExpressionOperator {
#define EXPRESSION_OPERATOR_ID(name, text) name,
    EXPRESSION_OPERATORS(EXPRESSION_OPERATOR_ID)
#undef EXPRESSION_OPERATOR_ID
};

const char* expressionOperatorText(ExpressionOperator op);
