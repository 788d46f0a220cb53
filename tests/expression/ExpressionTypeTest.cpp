// Values: what operators make of them, and how they print.
#include "expression/ExpressionType.h"
#include "expression/ExpressionOperator.h"
#include "expression/ParserException.h"
#include "expression/VariablesParser.h"
#include "support/Failure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Op = ExpressionOperator;
using Value = ExpressionType;

Value boolean(bool value)
{
    return Value(value);
}
Value integer(long long value, unsigned size = 4)
{
    return Value(value, size);
}
Value natural(unsigned long long value, unsigned size = 4)
{
    return Value(value, size);
}

// "TYPE VALUE" of a result, or the fault.
std::string combined(Op op, Value left, Value right)
{
    try {
        Value result = Value::apply(op, left, right);
        return (result.TypeToString(false) + u' ' + result.toStr(10, false, false, nullptr)).toStdString();
    } catch (const ParserException& e) {
        return e.message();
    }
}

std::string text(const Value& value, int radix, bool unsignedView = false, bool asChar = false,
                 const char* format = nullptr)
{
    return value.toStr(radix, unsignedView, asChar, format).toStdString();
}

constexpr char NoNumeric[] = "unsupported binary numeric operation";
constexpr char NoComparison[] = "unsupported comparison operation";

} // namespace

TEST(ExpressionType, LeftOperandDecides)
{
    EXPECT_EQ(combined(Op::Plus, integer(1, 8), Value(2.5, 8)), "long long 3");
    EXPECT_EQ(combined(Op::Plus, Value(2.5, 8), integer(1)), "double 3.5");
    EXPECT_EQ(combined(Op::Plus, Value(2.5, 4), natural(1)), "float 3.5");
    EXPECT_EQ(combined(Op::Plus, natural(255, 1), integer(2)), "unsigned char 1") << "no promotion";
    EXPECT_EQ(combined(Op::Multiply, integer(-3, 2), natural(5)), "short -15");
    EXPECT_EQ(combined(Op::Plus, boolean(true), boolean(false)), "boolean true");
    EXPECT_EQ(combined(Op::Minus, boolean(true), boolean(true)), "boolean false");
    EXPECT_EQ(combined(Op::Plus, boolean(true), integer(255)), "boolean true") << "256 is not zero";
    EXPECT_EQ(combined(Op::BitXor, boolean(true), integer(1)), "boolean false");
    EXPECT_EQ(combined(Op::BitAnd, natural(0xF0, 1), integer(0x3C)), "unsigned char 48");
    EXPECT_EQ(combined(Op::LogicalAnd, integer(4, 2), integer(2)), "short 1");
    EXPECT_EQ(combined(Op::LogicalOr, natural(0, 1), integer(0)), "unsigned char 0");
    EXPECT_EQ(combined(Op::LogicalOr, boolean(false), integer(7)), "boolean true");
    EXPECT_EQ(combined(Op::Plus, Value("a", 1), integer(1)), NoNumeric);
    EXPECT_EQ(combined(Op::BitOr, Value(1.0, 8), integer(1)), NoNumeric);
    EXPECT_EQ(combined(Op::LogicalAnd, Value(1.0, 8), integer(1)), NoNumeric);

    // A result keeps its 64 bits until it is an operand again.
    Value wide = natural(200, 1), one = natural(100, 1);
    Value sum = Value::apply(Op::Plus, wide, one);
    EXPECT_EQ(sum.getUInteger(), 44u);
    EXPECT_FALSE(sum.logicalNot().getBoolean());
    EXPECT_EQ(combined(Op::Divide, sum, natural(2)), "unsigned char 22") << "read by its size";
}

TEST(ExpressionType, DivisionAndItsZeros)
{
    for (Value left : {boolean(true), integer(5), natural(5)})
        for (Op op : {Op::Divide, Op::Mod})
            EXPECT_EQ(combined(op, left, integer(0)), "divide by zero");
    EXPECT_EQ(combined(Op::Divide, Value(5.0, 8), integer(0)), "divide by zero");
    EXPECT_EQ(combined(Op::Divide, integer(5), Value(0.5, 8)), "divide by zero") << "0.5 is taken as 0";
    EXPECT_EQ(combined(Op::Divide, boolean(true), integer(256)), "divide by zero") << "its first byte is";
    EXPECT_EQ(combined(Op::Mod, Value(5.0, 8), integer(0)), NoNumeric) << "the left type comes first";
    EXPECT_EQ(combined(Op::Divide, Value("a", 1), integer(0)), NoNumeric);
    EXPECT_EQ(combined(Op::Divide, integer(-7), integer(2)), "int -3");
    EXPECT_EQ(combined(Op::Mod, integer(-7), integer(2)), "int -1");
    Value lowest = integer(INT64_MIN, 8);
    EXPECT_EQ(combined(Op::Divide, lowest, integer(-1)), "long long -9223372036854775808");
    EXPECT_EQ(combined(Op::Mod, lowest, integer(-1)), "long long 0");
    EXPECT_EQ(combined(Op::Divide, natural(UINT64_MAX, 8), natural(UINT64_MAX, 8)), "unsigned long long 1");
}

TEST(ExpressionType, ShiftsAndComparisons)
{
    EXPECT_EQ(combined(Op::Lshift, integer(1, 8), integer(63)), "long long -9223372036854775808");
    EXPECT_EQ(combined(Op::Lshift, integer(1), integer(65)), "int 2");
    EXPECT_EQ(combined(Op::Rshift, integer(-8), integer(1)), "int -4");
    EXPECT_EQ(combined(Op::Rshift, natural(0xF0, 1), integer(4)), "unsigned char 15");
    EXPECT_EQ(combined(Op::Rshift, integer(-8), integer(-1)), "int -1") << "by 63";
    EXPECT_EQ(combined(Op::Rshift, integer(8), natural(1)), "integer shift value expected");
    EXPECT_EQ(combined(Op::Rshift, Value("a", 1), natural(1)), "integer shift value expected");
    EXPECT_EQ(combined(Op::Rshift, Value(8.0, 8), integer(1)), "can only shift numeric values");

    EXPECT_EQ(combined(Op::Lt, integer(-1), natural(1)), "boolean true");
    EXPECT_EQ(combined(Op::Lt, natural(UINT32_MAX), integer(1)), "boolean false");
    EXPECT_EQ(combined(Op::Gt, integer(3), Value(2.5, 8)), "boolean true");
    EXPECT_EQ(combined(Op::Eq, natural(0x40200000), Value(2.5, 4)), "boolean true") << "by bit pattern";
    EXPECT_EQ(combined(Op::Le, boolean(true), integer(257)), "boolean true") << "first bytes";
    EXPECT_EQ(combined(Op::Ne, Value("a", 1), Value("b", 1)), "boolean true");
    EXPECT_EQ(combined(Op::Ge, Value("b", 1), Value("a", 1)), "boolean true");
    EXPECT_EQ(combined(Op::Lt, Value(2.5, 8), integer(3)), NoComparison);
    Value left = integer(1), right = integer(1);
    EXPECT_EQ(Value::apply(Op::Eq, left, right).getSizeInBytes(), 0u);
}

TEST(ExpressionType, UnaryOperators)
{
    Value flag = boolean(true), number = integer(-5, 2), count = natural(1, 1), real(-2.5, 4), name("a", 1);
    EXPECT_EQ(text(flag.negate(), 10), "-1");
    EXPECT_EQ(flag.negate().getType(), Value::Signed);
    EXPECT_EQ(text(number.negate(), 10), "5");
    EXPECT_EQ(count.negate().getUInteger(), 255u);
    EXPECT_EQ(real.negate().getFloating(), 2.5);
    EXPECT_EQ(text(number.bitNot(), 10), "4");
    EXPECT_EQ(count.bitNot().getUInteger(), 254u);
    EXPECT_TRUE(integer(0).logicalNot().getBoolean());
    EXPECT_FALSE(integer(0x100, 1).logicalNot().getBoolean()) << "all 64 bits";
    EXPECT_FALSE(Value(0.25, 8).logicalNot().getBoolean());
    EXPECT_EQ(number.abs().getInteger(), 5);
    EXPECT_EQ(integer(INT32_MIN, 8).abs().getInteger(), INT32_MIN);
    EXPECT_EQ(real.abs().getFloating(), 2.0);
    const std::string refused = "unsupported unary num operation";
    EXPECT_EQ(failureOf([&] { name.negate(); }), refused);
    EXPECT_EQ(failureOf([&] { flag.bitNot(); }), refused);
    EXPECT_EQ(failureOf([&] { real.bitNot(); }), refused);
    EXPECT_EQ(failureOf([&] { name.logicalNot(); }), refused);
    EXPECT_EQ(failureOf([&] { name.abs(); }), refused);
}

TEST(ExpressionType, ReadsBySizeAndConverts)
{
    EXPECT_EQ(integer(0x1FF, 1).getInteger(), -1);
    EXPECT_EQ(integer(0x1FF, 1).getUInteger(), 255u);
    EXPECT_EQ(natural(0x18000, 2).getFloating(), 32768);
    EXPECT_EQ(natural(0x123456789, 3).getUInteger(), 0x123456789u) << "other sizes are read whole";
    EXPECT_EQ(Value(1e30, 8).getInteger(), INT64_MAX);
    EXPECT_EQ(Value(-1e30, 8).getInteger(), INT64_MIN);
    EXPECT_EQ(Value(std::nan(""), 8).getInteger(), 0);
    EXPECT_EQ(Value(1.0, 4).getUInteger(), 0x3F800000u);
    EXPECT_EQ(Value(1.0, 8).getUInteger(), 0x3FF0000000000000u);
    EXPECT_EQ(Value(1.0, 2).getUInteger(), 0u);
    Value value = integer(-1, 8);
    value.setType(Value::Float);
    EXPECT_EQ(value.getFloating(), 18446744073709551616.0) << "the bits as an unsigned number";
    value.setType(Value::Unsigned);
    EXPECT_EQ(value.getUInteger(), 0x43F0000000000000u) << "the value stays";

    EXPECT_TRUE(integer(0x101, 1).equiv(integer(1, 1)));
    EXPECT_FALSE(integer(1, 1).equiv(integer(1, 2)));
    EXPECT_FALSE(integer(1).equiv(natural(1)));
    EXPECT_TRUE(Value("a", 1).equiv(Value("a", 5)));

    EXPECT_EQ(Value(integer(0), "-0x10", 10).getInteger(), -16);
    EXPECT_EQ(Value(integer(0), "010", 10).getInteger(), 10);
    EXPECT_EQ(Value(natural(0), "fF", 16).getUInteger(), 255u);
    EXPECT_EQ(Value(natural(0, 1), "101", 2).getUInteger(), 5u);
    EXPECT_EQ(Value(integer(0), "-17", 8).getInteger(), -15);
    EXPECT_TRUE(Value(boolean(false), "true", 10).getBoolean());
    EXPECT_FALSE(Value(boolean(true), "yes", 10).getBoolean());
    EXPECT_EQ(Value(Value(0.0, 4), "1.5", 10).getFloating(), 1.5);
    EXPECT_EQ(Value(Value("", 0), "x", 10).getString(), "x");
}

TEST(ExpressionType, PrintsInEveryRadix)
{
    struct Case {
        Value value;
        int radix;
        const char* text;
    };
    const Case Cases[] = {
        {integer(-1, 2), 16, "0xffff"},
        {integer(10, 1), 16, "0x0a"},
        {natural(1, 3), 16, "0x000001"},
        {natural(0, 0), 16, "0x00"},
        {Value(5ULL, 1, 3), 16, "0x5"},
        {Value(5ULL, 1, 3), 2, "0b101"},
        {Value(1ULL, 4, 9), 16, "0x001"},
        {integer(-2, 1), 10, "-2"},
        {natural(250, 1), 10, "250"},
        {natural(UINT64_MAX, 8), 10, "8446744073709551615"},
        {integer(-1, 2), 8, "077777"},
        {natural(8, 1), 8, "0010"},
        {natural(UINT64_MAX, 8), 8, "0777777777777777777777"},
        {natural(5, 1), 2, "0b00000101"},
        {natural(5, 2), 7, "5"},
        {Value(2.5, 8), 10, "2.5"},
        {Value(1.0, 4), 16, "0x3f800000"},
        {Value(std::numeric_limits<double>::infinity(), 8), 10, "Inf"},
        {boolean(true), 16, "true"},
        {Value("text", 4), 16, "text"},
        {Value(), 16, ""},
    };
    for (const Case& c : Cases)
        EXPECT_EQ(text(c.value, c.radix), c.text) << c.radix;
    EXPECT_EQ(text(integer(-2, 1), 10, true), "254");
    EXPECT_EQ(text(Value(2.5, 8), 10, false, false, "%e"), "2.500000e+00");
    EXPECT_EQ(text(integer(0x41), 16, false, true), "A");
    EXPECT_EQ(text(integer(7), 16, false, true), "\\u0007");
    EXPECT_EQ(text(integer(-1, 1), 16, false, true), "\\uffff");
    EXPECT_EQ(text(natural(1, 0x40000000), 2).size(), 2 + 512u) << "a size of gigabytes";
    EXPECT_EQ(integer(1, 1).TypeToString(true), "byte");
    EXPECT_EQ(integer(1, 3).TypeToString(false), "unknown");
}

TEST(ExpressionType, MarkersAreSharedAndReadOnDemand)
{
    VariablesParser parser;
    parser.values["a"] = integer(3);
    Value marker(parser.getIdentifier("a")), copy = marker;
    EXPECT_EQ(text(marker, 16), "<a>");
    EXPECT_EQ(combined(Op::Plus, marker, marker), "int 6");
    EXPECT_EQ(marker.negate().getInteger(), -3);
    EXPECT_EQ(marker.getType(), Value::Signed) << "evaluated in place";
    EXPECT_EQ(copy.getType(), Value::Marker);
    Value renamed(copy, "b", 10);
    EXPECT_EQ(text(copy, 16), "<b>");
    EXPECT_TRUE(renamed.equiv(copy));
    EXPECT_EQ(marker.getMarker(), nullptr);
}
