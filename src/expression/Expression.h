// The tree of an expression. Nodes belong to the tree that parse() returns, may stand in several places of
// it, and never change; whatever they need of a program they ask of the parser that made them, which must
// outlive them.
//
// Evaluation throws ParserException.
#pragma once

#include "expression/BaseType.h"
#include "expression/ExpressionOperator.h"
#include "expression/ExpressionType.h"

#include <QStringList>

#include <vector>

class ExpressionParser;

class Expression {
public:
    virtual ~Expression() = default;
    Expression(const Expression&) = delete;
    Expression& operator=(const Expression&) = delete;

    virtual ExpressionType evaluate() const = 0;
    virtual QString dump() const = 0; // for tracing

    // Nodes that one evaluation visits; a node that stands in two places counts twice.
    uint64_t cost() const { return m_cost; }

protected:
    explicit Expression(uint64_t partsCost = 0) : m_cost(partsCost + 1) {}

private:
    friend class ChainExpression;
    virtual const class ChainExpression* asChain() const { return nullptr; }

    uint64_t m_cost;
};

// An expression that goes on from the value of its first part. `a + b + c` and `a[1][2]` lean to the left as
// far as a text is long, so the first parts are walked instead of called.
class ChainExpression : public Expression {
public:
    ExpressionType evaluate() const final;
    QString dump() const final; // "(operator first others)"

protected:
    ChainExpression(const Expression* first, uint64_t partsCost)
        : Expression(first->cost() + partsCost), m_first(first)
    {
    }
    const Expression* first() const { return m_first; }
    // The value of the whole, from that of the first part.
    virtual ExpressionType apply(ExpressionType first) const = 0;
    virtual QString dumpOperator() const = 0;
    virtual QString dumpOthers() const = 0;

private:
    const ChainExpression* asChain() const final { return this; }
    std::vector<const ChainExpression*> links(const Expression*& innermost) const;

    const Expression* m_first;
};

class ConstantExpression : public Expression {
public:
    ExpressionType evaluate() const override { return m_value; }
    QString dump() const override { return m_value.toStr(10, false, false, nullptr); }

protected:
    explicit ConstantExpression(const ExpressionType& value) : m_value(value) {}

private:
    ExpressionType m_value;
};

class IntegerConstantExpression : public ConstantExpression {
public:
    explicit IntegerConstantExpression(long long value) : ConstantExpression(ExpressionType(value, 8)) {}
};

class FloatConstantExpression : public ConstantExpression {
public:
    explicit FloatConstantExpression(double value) : ConstantExpression(ExpressionType(value, 8)) {}
};

class StringConstantExpression : public ConstantExpression {
public:
    explicit StringConstantExpression(const QString& text)
        : ConstantExpression(ExpressionType(text, unsigned(text.size())))
    {
    }
    QString dump() const override { return u'"' + ConstantExpression::dump() + u'"'; }
};

class IdentifierExpression : public Expression {
public:
    IdentifierExpression(const QString& name, ExpressionParser* parser) : m_name(name), m_parser(parser) {}
    const QString& name() const { return m_name; }
    ExpressionType evaluate() const override;
    QString dump() const override { return m_name; }

private:
    QString m_name;
    ExpressionParser* m_parser;
};

class ScopedIdentifierExpression : public Expression {
public:
    ScopedIdentifierExpression(const QStringList& names, ExpressionParser* parser)
        : m_names(names), m_parser(parser)
    {
    }
    const QStringList& names() const { return m_names; }
    ExpressionType evaluate() const override;
    QString dump() const override { return m_names.join(QLatin1String("::")); }

private:
    QStringList m_names;
    ExpressionParser* m_parser;
};

class RegisterExpression : public Expression {
public:
    RegisterExpression(const QString& name, ExpressionParser* parser) : m_name(name), m_parser(parser) {}
    const QString& name() const { return m_name; } // without the "@"
    ExpressionType evaluate() const override;
    QString dump() const override { return u'@' + m_name; }

private:
    QString m_name;
    ExpressionParser* m_parser;
};

class UnaryExpression : public Expression {
public:
    const Expression* operand() const { return m_operand; }
    QString dump() const override { return u'(' + QLatin1String(m_text) + m_operand->dump() + u')'; }

protected:
    UnaryExpression(const Expression* operand, const char* text)
        : Expression(operand->cost()), m_operand(operand), m_text(text)
    {
    }

private:
    const Expression* m_operand;
    const char* m_text;
};

class NegateExpression : public UnaryExpression {
public:
    explicit NegateExpression(const Expression* operand) : UnaryExpression(operand, "-") {}
    ExpressionType evaluate() const override { return operand()->evaluate().negate(); }
};

class BitNotExpression : public UnaryExpression {
public:
    explicit BitNotExpression(const Expression* operand) : UnaryExpression(operand, "~") {}
    ExpressionType evaluate() const override { return operand()->evaluate().bitNot(); }
};

class LogicalNotExpression : public UnaryExpression {
public:
    explicit LogicalNotExpression(const Expression* operand) : UnaryExpression(operand, "!") {}
    ExpressionType evaluate() const override { return operand()->evaluate().logicalNot(); }
};

class AddressofExpression : public UnaryExpression {
public:
    AddressofExpression(const Expression* operand, ExpressionParser* parser)
        : UnaryExpression(operand, "&"), m_parser(parser)
    {
    }
    ExpressionType evaluate() const override;

private:
    ExpressionParser* m_parser;
};

class SizeofExpression : public UnaryExpression {
public:
    SizeofExpression(const Expression* operand, ExpressionParser* parser)
        : UnaryExpression(operand, "sizeof "), m_parser(parser)
    {
    }
    ExpressionType evaluate() const override;

private:
    ExpressionParser* m_parser;
};

class CastExpression : public Expression {
public:
    CastExpression(const BaseType* type, const Expression* operand, ExpressionParser* parser)
        : Expression(type->cost() + operand->cost()), m_type(type), m_operand(operand), m_parser(parser)
    {
    }
    ExpressionType evaluate() const override;
    QString dump() const override;

private:
    const BaseType* m_type;
    const Expression* m_operand;
    ExpressionParser* m_parser;
};

class CallExpression : public ChainExpression {
public:
    CallExpression(const Expression* callee, std::vector<const Expression*> arguments,
                   ExpressionParser* parser);

protected:
    ExpressionType apply(ExpressionType callee) const override;
    QString dumpOperator() const override { return QStringLiteral("call"); }
    QString dumpOthers() const override;

private:
    std::vector<const Expression*> m_arguments;
    ExpressionParser* m_parser;
};

class BinaryExpression : public ChainExpression {
public:
    const Expression* left() const { return first(); }
    const Expression* right() const { return m_right; }

protected:
    BinaryExpression(const Expression* left, const Expression* right)
        : ChainExpression(left, right->cost()), m_right(right)
    {
    }
    QString dumpOthers() const override { return m_right->dump(); }

private:
    const Expression* m_right;
};

// An operator of ExpressionType. Both sides of && and || are always evaluated.
template <ExpressionOperator Op> class OperatorExpression : public BinaryExpression {
public:
    OperatorExpression(const Expression* left, const Expression* right) : BinaryExpression(left, right) {}

protected:
    ExpressionType apply(ExpressionType left) const override
    {
        ExpressionType value = right()->evaluate();
        return ExpressionType::apply(Op, left, value);
    }
    QString dumpOperator() const override { return QLatin1String(expressionOperatorText(Op)); }
};

// PlusExpression, MinusExpression and so on.
#define EXPRESSION_OPERATOR_CLASS(name, text)                                                                \
    using name##Expression = OperatorExpression<ExpressionOperator::name>;
EXPRESSION_OPERATORS(EXPRESSION_OPERATOR_CLASS)
#undef EXPRESSION_OPERATOR_CLASS

class AssignExpression : public BinaryExpression {
public:
    AssignExpression(const Expression* left, const Expression* right, ExpressionParser* parser)
        : BinaryExpression(left, right), m_parser(parser)
    {
    }

protected:
    ExpressionType apply(ExpressionType left) const override;
    QString dumpOperator() const override { return QStringLiteral("="); }

private:
    ExpressionParser* m_parser;
};

// A field. The right part is a name, or several with "::".
class DotExpression : public BinaryExpression {
public:
    DotExpression(const Expression* left, const Expression* right, ExpressionParser* parser)
        : BinaryExpression(left, right), m_parser(parser)
    {
    }

protected:
    ExpressionType apply(ExpressionType left) const override;
    QString dumpOperator() const override { return QStringLiteral("."); }

private:
    ExpressionParser* m_parser;
};

class LeftSquareBracketExpression : public BinaryExpression {
public:
    LeftSquareBracketExpression(const Expression* left, const Expression* right, ExpressionParser* parser)
        : BinaryExpression(left, right), m_parser(parser)
    {
    }

protected:
    ExpressionType apply(ExpressionType left) const override;
    QString dumpOperator() const override { return QStringLiteral("[]"); }

private:
    ExpressionParser* m_parser;
};
