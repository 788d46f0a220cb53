// Trees and their evaluation, over a parser with a handful of variables.
#include "expression/ExpressionType.h"
#include "expression/ParserException.h"
#include "expression/SimpleExpressionParser.h"
#include "expression/VariablesParser.h"
#include "support/Failure.h"

#include <gtest/gtest.h>

namespace {

class Parser : public testing::Test {
protected:
    Parser()
    {
        for (const char* name : {"a", "b", "i", "p", "@SP", "::x", "::x::y"})
            parser.values[QLatin1String(name)] = ExpressionType(1LL, 4);
        parser.values["s"] = ExpressionType("text", 4);
        parser.values["u"] = ExpressionType(7ULL, 2);
    }
    std::string tree(const char* text)
    {
        try {
            return parser.parse(QString::fromUtf8(text))->dump().toStdString();
        } catch (const ParserException& e) {
            return "error: " + e.message();
        }
    }
    std::string value(const QString& text)
    {
        try {
            return parser.parseAndEvaluate(text).toStr(10, false, false, nullptr).toStdString();
        } catch (const ParserException& e) {
            return "error: " + e.message();
        }
    }
    struct Case {
        const char* text;
        const char* expected;
    };

    VariablesParser parser;
};

} // namespace

TEST_F(Parser, PrecedenceAndAssociation)
{
    constexpr Case Cases[] = {
        {"1 << 2 + 3", "(<< 1 (+ 2 3))"},
        {"a - b - 1", "(- (- a b) 1)"},
        {"a = b = 1", "(= (= a b) 1)"},
        {"1 || 2 && 3 | 4 ^ 5 & 6 == 7 < 8 << 9 + 10 * 11",
         "(|| 1 (&& 2 (| 3 (^ 4 (& 5 (== 6 (< 7 (<< 8 (+ 9 (* 10 11))))))))))"},
        {"1 * 2 + 3 << 4 < 5 == 6 & 7 ^ 8 | 9 && 10 || 11",
         "(|| (&& (| (^ (& (== (< (<< (+ (* 1 2) 3) 4) 5) 6) 7) 8) 9) 10) 11)"},
        {"a += b = 1", "(= a (+ a (= b 1)))"},
        {"a >>= 1 <<= 2", "(= (= a (>> a 1)) (<< (= a (>> a 1)) 2))"},
        {"-a[1].x", "(-(. ([] a 1) x))"},
        {"*p++", "([] (= p (+ p 1)) 0)"},
        {"--a", "(= a (- a 1))"},
        {"- - +~!a", "(-(-(~(!a))))"},
        {"&a->x::y", "(&(. a x::y))"},
        {"a::b + ::b", "(+ a::b b)"},
        {"a(1, b 2)(3)", "(call (call a 1 b 2) 3)"},
        {"sizeof(a + 1) * 2", "(* (sizeof (+ a 1)) 2)"},
        {"\"x\" == s", "(== \"x\" s)"},
        {"@SP", "@SP"},
    };
    for (const Case& c : Cases)
        EXPECT_EQ(tree(c.text), c.expected) << c.text;
}

TEST_F(Parser, Casts)
{
    constexpr Case Cases[] = {
        {"(char)a + 1", "((char)(+ a 1))"},
        {"(unsigned)a", "((unsigned int)a)"},
        {"(long)a", "((long)a)"},
        {"(unsigned long long int)a", "((unsigned long long)a)"},
        {"(unsigned short int)a", "((unsigned short)a)"},
        {"(const volatile char*[3]*)a", "((char*[3]*)a)"},
        {"(signed)a", "((int)a)"},
        {"(word*)a", "((word*)a)"},
        {"(const word)a", "((word)a)"},
        {"(struct pair)a", "((struct pair)a)"},
        {"(struct { int a; char : 3; word w : 2; unsigned char x; })a",
         "((struct { int a; char :3; word w:2; unsigned char x; })a)"},
        {"(struct {})a", "((struct { })a)"},
        {"(register 4 lo 0 8 \"a b\" 8 0x8;[2])a", "((register 4 lo 0 8 a b 8 8;[2])a)"},
        {"(a)+1", "(+ a 1)"},
        {"(short int)a", "error: ')' expected"},
        {"(char a", "error: ')' expected"},
        {"(char[1)a", "error: ']' expected"},
        {"(struct other)a", "error: struct type not found"},
        {"(struct 1)a", "error: '{' expected"},
        {"(struct {a;})a", "error: struct parse error"},
        {"(struct {int a:b;})a", "error: integer must follow ':'"},
        {"(struct {int a})a", "error: ';' expected"},
        {"(register x)a", "error: size expected"},
        {"(register 4 0)a", "error: fieldname expected"},
        {"(register 4 a)a", "error: bitoffset expected"},
        {"(register 4 a 1;)a", "error: bitsize expected"},
    };
    for (const Case& c : Cases)
        EXPECT_EQ(tree(c.text), c.expected) << c.text;
}

TEST_F(Parser, FaultsOfTheText)
{
    constexpr Case Cases[] = {
        {"1 ? 2 : 3", "error: operator not supported"},
        {"1 , 2", "error: operator not supported"},
        {"1 >>> 2", "error: operator not supported"},
        {"a >>>= 2", "error: operator not supported"},
        {" ", "error: expression expected"},
        {"1 +", "error: expression expected"},
        {"(1", "error: ')' expected"},
        {"a[1", "error: expected ']'"},
        {"a(1", "error: expression expected"},
        {"a.", "error: identifier expected"},
        {"a::1", "error: identifier expected after '::'"},
        {":: 1", "error: identifier expected"},
        {"sizeof a", "error: '(' expected"},
        {"sizeof(a", "error: ')' expected"},
    };
    EXPECT_EQ(parser.parse(QString()), nullptr);
    EXPECT_EQ(parser.parseAndEvaluate(QString()).getType(), ExpressionType::None);
    for (const Case& c : Cases)
        EXPECT_EQ(tree(c.text), c.expected) << c.text;
    int end = 0;
    EXPECT_EQ(parser.parseAndEvaluate("1 2", &end).getInteger(), 1);
    EXPECT_EQ(end, 2);
    parser.parse("a + 1 ", &end);
    EXPECT_EQ(end, 6);
}

TEST_F(Parser, Evaluation)
{
    constexpr Case Cases[] = {
        {"1 << 2 + 3", "32"},
        {"a - b - 1", "-1"},
        {"a = 5", "5"},
        {"a += 3", "8"},
        {"++a", "9"},
        {"a++ + a--", "19"},
        {"(a = 4)", "4"},
        {"p[2].x = a", "4"},
        {"p[2]->x + 0", "4"},
        {"p[b + 1].x * 2", "8"},
        {"*p = 6", "6"},
        {"p[0]", "<p[0]>"},
        {"p[u]", "<p[7]>"},
        {"p.x::y", "<p.x::y>"},
        {"&p.x", "<&p.x>"},
        {"::x + ::x::y + @SP", "3"},
        {"sizeof(p)", "8"},
        {"s == \"text\"", "true"},
        {"(char)a", "4"},
        {"0 && (b = 7)", "0"},
        {"b", "<b>"},
        {"-b", "-7"},
        {"a = b = 1", "error: bad expression type"},
        {"1 = 2", "error: bad expression type"},
        {"1[0]", "error: bad expression type"},
        {"(a + 1).x", "error: bad expression type"},
        {"a[1.5]", "error: bad index type"},
        {"a[s]", "error: bad index type"},
        {"&1", "error: cannot take address of a constant"},
        {"sizeof(1)", "error: cannot determine sizeof of a constant"},
        {"sizeof(int)", "error: int symbol not found"},
        {"a(1)", "error: function calling not implemented"},
        {"1(2)", "error: function calling not implemented"},
        {"0x100000000", "error: number out of range: 0x100000000"},
    };
    for (const Case& c : Cases)
        EXPECT_EQ(value(c.text), c.expected) << c.text;
}

TEST_F(Parser, LongTextsDoNotGrowTheStack)
{
    QString sum = QStringLiteral("1"), elements = QStringLiteral("a"), calls = QStringLiteral("a");
    for (int i = 1; i < 100'000; ++i) {
        sum += QLatin1String(" + 1");
        elements += QLatin1String("[1].x");
        calls += QLatin1String("()");
    }
    EXPECT_EQ(value(sum), "100000");
    EXPECT_GT(parser.parse(sum)->dump().size(), 400'000);
    EXPECT_EQ(value(elements).substr(0, 8), "<a[1].x[");
    EXPECT_EQ(value(calls), "error: function calling not implemented");
}

TEST_F(Parser, NestingAndSharedPartsAreBounded)
{
    EXPECT_EQ(value(QString(200, u'(') + u'1' + QString(200, u')')), "1");
    for (const char* part : {"(", "-", "a[", "a(", "(char)", "*&", "sizeof(", "1+(1*", "--", "(char[", "++",
                             "1=1||1&&1|1^1&1==1<1<<1+1*("})
        EXPECT_EQ(value(QString::fromLatin1(part).repeated(30'000)), "error: expression is nested too deeply")
            << part;
    EXPECT_EQ(value(QStringLiteral("(char") + QString(5000, u'*') + QStringLiteral(")a")),
              "error: expression is nested too deeply");
    // Each += mentions what is left of it twice.
    QString doubling = QStringLiteral("i");
    for (int i = 0; i < 40; ++i)
        doubling = QStringLiteral("a[") + doubling + QStringLiteral(" += 1]");
    EXPECT_EQ(value(doubling), "error: expression is too complex");
    EXPECT_EQ(parser.assignments, 0);
}

TEST(SimpleExpressionParser, TakesWholeNumberTexts)
{
    SimpleExpressionParser& parser = SimpleExpressionParser::instance();
    struct Case {
        const char* text;
        bool ok;
        uint64_t value;
    };
    for (const Case& c : {Case{"0x10 + 2 * 3", true, 22},
                          {"-1", true, UINT64_MAX},
                          {"3 > 2", true, 1},
                          {"", false, 0},
                          {"12 x", false, 0},
                          {"x", false, 0},
                          {"\"1\"", false, 0},
                          {"@A", false, 0},
                          {"1 / 0", false, 0}}) {
        bool ok = !c.ok;
        EXPECT_EQ(parser.getUInteger(c.text, ok), c.value) << c.text;
        EXPECT_EQ(ok, c.ok) << c.text;
    }
    EXPECT_EQ(failureOf([&] { parser.parseAndEvaluate("x"); }), "x symbol not found");
    EXPECT_EQ(failureOf([&] { parser.parseAndEvaluate("@x"); }), "unknown register");
    EXPECT_EQ(failureOf([&] { parser.parseAndEvaluate("(char)1"); }), "cannot cast");
}
