// What the operators make of values. The left operand's type alone decides.
#include "expression/ExpressionType.h"
#include "expression/ParserException.h"

#include <bit>
#include <cmath>

namespace {

constexpr char NoNumericOperation[] = "unsupported binary numeric operation";
constexpr char NoComparison[] = "unsupported comparison operation";
constexpr char NoUnaryOperation[] = "unsupported unary num operation";

const char* const OperatorTexts[] = {
#define EXPRESSION_OPERATOR_TEXT(name, text) text,
    EXPRESSION_OPERATORS(EXPRESSION_OPERATOR_TEXT)
#undef EXPRESSION_OPERATOR_TEXT
};

bool isArithmetic(ExpressionOperator op)
{
    return op <= ExpressionOperator::Divide;
}

// Arithmetic wraps; the most negative number divided by -1 is itself.
template <typename Integer> uint64_t combine(ExpressionOperator op, Integer left, Integer right)
{
    constexpr bool Signed = std::is_signed_v<Integer>;
    uint64_t a = uint64_t(left), b = uint64_t(right);
    switch (op) {
    case ExpressionOperator::Plus: return a + b;
    case ExpressionOperator::Minus: return a - b;
    case ExpressionOperator::Multiply: return a * b;
    case ExpressionOperator::Divide: return Signed && b == ~uint64_t(0) ? 0 - a : uint64_t(left / right);
    case ExpressionOperator::Mod: return Signed && b == ~uint64_t(0) ? 0 : uint64_t(left % right);
    case ExpressionOperator::BitAnd: return a & b;
    case ExpressionOperator::BitXor: return a ^ b;
    case ExpressionOperator::BitOr: return a | b;
    case ExpressionOperator::LogicalAnd: return a && b;
    case ExpressionOperator::LogicalOr: return a || b;
    default: throw ParserException(NoNumericOperation);
    }
}

template <typename Value> bool holds(ExpressionOperator op, const Value& left, const Value& right)
{
    switch (op) {
    case ExpressionOperator::Lt: return left < right;
    case ExpressionOperator::Le: return left <= right;
    case ExpressionOperator::Gt: return left > right;
    case ExpressionOperator::Ge: return left >= right;
    case ExpressionOperator::Eq: return left == right;
    case ExpressionOperator::Ne: return left != right;
    default: throw ParserException(NoComparison);
    }
}

double combineFloating(ExpressionOperator op, double left, double right)
{
    switch (op) {
    case ExpressionOperator::Plus: return left + right;
    case ExpressionOperator::Minus: return left - right;
    case ExpressionOperator::Multiply: return left * right;
    case ExpressionOperator::Divide: return left / right;
    default: throw ParserException(NoNumericOperation);
    }
}

} // namespace

const char* expressionOperatorText(ExpressionOperator op)
{
    return OperatorTexts[size_t(op)];
}

ExpressionType ExpressionType::like(uint64_t bits) const
{
    return m_type == Signed ? ExpressionType((long long)(bits), m_sizeInBytes)
                            : ExpressionType((unsigned long long)(bits), m_sizeInBytes);
}

ExpressionType ExpressionType::arithmetic(ExpressionOperator op, const ExpressionType& right) const
{
    if (m_type > Unsigned && !(m_type == Float && isArithmetic(op)))
        throw ParserException(NoNumericOperation);
    if (op == ExpressionOperator::Divide || op == ExpressionOperator::Mod) {
        bool zero = m_type == Boolean  ? right.lowByte() == 0
                    : m_type == Signed ? right.getInteger() == 0
                    : m_type == Float  ? right.getFloating() == 0
                                       : right.getUInteger() == 0;
        if (zero)
            throw ParserException("divide by zero");
    }
    switch (m_type) {
    case Boolean: return ExpressionType(combine<int64_t>(op, lowByte(), right.lowByte()) != 0);
    case Signed: return like(combine<int64_t>(op, getInteger(), right.getInteger()));
    case Unsigned: return like(combine<uint64_t>(op, getUInteger(), right.getUInteger()));
    default: return ExpressionType(combineFloating(op, getFloating(), right.getFloating()), m_sizeInBytes);
    }
}

ExpressionType ExpressionType::shift(ExpressionOperator op, const ExpressionType& right) const
{
    if (right.m_type != Signed)
        throw ParserException("integer shift value expected");
    if (m_type != Signed && m_type != Unsigned)
        throw ParserException("can only shift numeric values");
    unsigned count = unsigned(right.getInteger()) & 63;
    if (op == ExpressionOperator::Lshift)
        return like(getUInteger() << count);
    return like(m_type == Signed ? uint64_t(getInteger() >> count) : getUInteger() >> count);
}

bool ExpressionType::compare(ExpressionOperator op, const ExpressionType& right) const
{
    switch (m_type) {
    case Boolean: return holds(op, lowByte(), right.lowByte());
    case Signed: return holds(op, getInteger(), right.getInteger());
    case Unsigned: return holds(op, getUInteger(), right.getUInteger());
    case String: return holds(op, m_text, right.m_text);
    default: throw ParserException(NoComparison);
    }
}

ExpressionType ExpressionType::apply(ExpressionOperator op, ExpressionType& left, ExpressionType& right)
{
    left.evaluate();
    right.evaluate();
    switch (op) {
    case ExpressionOperator::Lshift:
    case ExpressionOperator::Rshift: return left.shift(op, right);
    case ExpressionOperator::Lt:
    case ExpressionOperator::Le:
    case ExpressionOperator::Gt:
    case ExpressionOperator::Ge:
    case ExpressionOperator::Eq:
    case ExpressionOperator::Ne: return ExpressionType(left.compare(op, right));
    default: return left.arithmetic(op, right);
    }
}

ExpressionType ExpressionType::negate()
{
    evaluate();
    switch (m_type) {
    case Boolean: return ExpressionType(-(long long)(lowByte()), m_sizeInBytes);
    case Signed: return like(0 - uint64_t(getInteger()));
    case Unsigned: return like(0 - getUInteger());
    case Float: return ExpressionType(-getFloating(), m_sizeInBytes);
    default: throw ParserException(NoUnaryOperation);
    }
}

ExpressionType ExpressionType::bitNot()
{
    evaluate();
    if (m_type != Signed && m_type != Unsigned)
        throw ParserException(NoUnaryOperation);
    return like(~(m_type == Signed ? uint64_t(getInteger()) : getUInteger()));
}

ExpressionType ExpressionType::logicalNot()
{
    evaluate();
    switch (m_type) {
    case Boolean: return ExpressionType(lowByte() == 0);
    case Signed:
    case Unsigned: return ExpressionType(m_bits == 0);
    case Float: return ExpressionType(getFloating() == 0);
    default: throw ParserException(NoUnaryOperation);
    }
}

ExpressionType ExpressionType::abs()
{
    evaluate();
    if (m_type > Unsigned && m_type != Float)
        throw ParserException(NoUnaryOperation);
    auto magnitude = [](int64_t number) {
        int32_t low = int32_t(number);
        return int64_t(low < 0 ? int32_t(0 - uint32_t(low)) : low);
    };
    if (m_type == Float)
        return ExpressionType(double(magnitude(getInteger())), m_sizeInBytes);
    uint64_t bits = uint64_t(magnitude(m_type == Boolean ? lowByte() : int64_t(m_bits)));
    return m_type == Boolean ? ExpressionType((long long)(bits), m_sizeInBytes) : like(bits);
}
