#include "ScriptFixture.h"

#include "script/engine/ESCode.h"
#include "script/engine/ESCompiler.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESStringPool.h"

#include <gtest/gtest.h>

namespace {

QString dump(const char* source)
{
    ScriptWorld world;
    ESCompiler compiler(&world.context());
    compiler.setSource(QString::fromLatin1(source));
    return ESCompiler::dumpcode(compiler.parse().get());
}

} // namespace

// Message for a source that must not compile, or compiles and then fails.
TEST(Compiler, SyntaxErrorsNameLineAndToken)
{
    const struct {
        const char* source;
        const char* message;
    } cases[] = {
        {"a b", "line 1: expected ; found an identifier"},
        {"x = (1", "line 1: expected ) found end of input"},
        {"\n\nif x", "line 3: expected ( found an identifier"},
        {"1 === 1", "line 1: expected ; found ==="},
        {"1 = 2", "line 1: expected ; found ="},
        {"var", "line 1: expected an identifier found end of input"},
        {"x = in", "line 1: expected an expression, found in"},
        {"class", "line 1: expected an expression, found class"},
        {"++5", "line 1: expected an expression, found ++"},
        {"x = [1 2]", "line 1: ']' or ',' expected, found a number"},
        {"x = {+: 1}", "line 1: number, string, or identifier expected in object initialiser"},
        {"x = 'abc\ndef'", "line 1: newline in string constant"},
        {"x = 'abc\\\n", "line 2: end of file in string constant"},
        {"'\\xg1'", "line 1: malformed hex escape sequence"},
        {"'\\u12'", "line 1: malformed hex escape sequence"},
        {"089", "line 1: digit '8' is not radix 8"},
        {"0xfg", "line 1: digit 'g' is not radix 16"},
        {"0x", "line 1: bad parse of numerical constant '0x'"},
        {"1e+", "line 1: bad parse of numerical constant '1e+'"},
        {"a # b", "line 1: unknown character '#'"},
        {"\xc3\xa9", "line 1: unknown character '\xc3\xa9'"},
        {"return 1", "line 1: return not in a function"},
        {"switch (1) { default: default: }", "line 1: default case already defined"},
        {"switch (1) { x }", "line 1: expected 'case' or 'default' but found 'an identifier'"},
        {"try { } x", "line 1: 'catch' or 'finally' clause expected after 'try'"},
        {"for (var i, j in o) ;", "line 1: too many variables in for-in expression"},
        {"break", "line 1: 'break' not in a 'for' or 'while' loop"},
        {"while (1) break nowhere", "line 1: can't find label nowhere"},
        {"a: { for (;;) continue a; }", "line 1: labeled 'continue' doesn't mark a loop"},
        {"for (;;) { function f() { break; } }", "line 1: 'break' not in a 'for' or 'while' loop"},
        {"do x(); while (1)", "line 1: expected { found an identifier"},
        {"f(1", "line 1: expected ) found end of input"},
        {"{ x", "line 1: expected } found end of input"},
    };
    for (const auto& c : cases) {
        ScriptWorld world;
        EXPECT_EQ(world.value(QString::fromUtf8(c.source)), std::string("error: ") + c.message) << c.source;
    }
}

TEST(Compiler, CompletionValueIsThatOfTheLastStatement)
{
    ScriptWorld world;
    EXPECT_EQ(world.value("1; 2"), "2");
    EXPECT_EQ(world.value("var x = 1"), "1");
    EXPECT_EQ(world.value("var x = 1, y"), "undefined");
    EXPECT_EQ(world.value("if (x) x"), "undefined");
    EXPECT_EQ(world.value("function f() { }"), "undefined");
    EXPECT_EQ(world.value("7; function f() { }"), "7");
    EXPECT_EQ(world.value(""), "undefined");
    EXPECT_EQ(world.value("/* never closed"), "undefined");
    EXPECT_EQ(world.value("{ 1; { 2 } }"), "2");
    EXPECT_EQ(world.value("a\n++x"), "2");
    // Where a label can be left, all ways give one value.
    EXPECT_EQ(world.value("a: { 5 }"), "5");
    EXPECT_EQ(world.value("a: { if (x) break a; 5 }"), "undefined");
    EXPECT_EQ(world.value("a: { if (!x) break a; 5 }"), "5");
    EXPECT_EQ(world.value("7; a: for (;;) break a"), "undefined");
    EXPECT_EQ(world.value("a: b: if (x) break a; else break b"), "undefined");
}

TEST(Compiler, EqualFormsGiveEqualCode)
{
    EXPECT_EQ(dump("a[\"b\"]"), dump("a.b"));
    EXPECT_EQ(dump("a[1]"), dump("a['1']"));
    EXPECT_EQ(dump("3 > f()"), dump("f() < 3"));
    EXPECT_EQ(dump("'t'; -1"), QStringLiteral("    0 NUM_M1\n    1 RET\n"));
    // Without an effect and without a user, no code.
    EXPECT_EQ(dump("1 + x; new F; void 0; 3"), QStringLiteral("    0 NUM_3\n    1 RET\n"));
}

TEST(Compiler, VariablesMoveToAnActivationOnlyWhereTheyAreReached)
{
    ScriptWorld world;
    auto code = [&](const char* source) {
        ESCompiler compiler(&world.context());
        compiler.setSource(QString::fromLatin1(source));
        auto top = compiler.parse();
        QString text;
        for (int offset = 0; offset < top->length(); offset += ESCode::size(top->code[size_t(offset)]))
            if (top->code[size_t(offset)] == VM_CLOSURE)
                text +=
                    ESCompiler::dumpcode(ESContext::functionCode(top->indexOf(top->operandAt(offset + 1))));
        return text;
    };
    EXPECT_TRUE(code("f = function(a) { var b = a; b++; return b }").contains("GETA 0"));
    QString outer = code("f = function(a) { var b = a; b++; g = function() { return b } }");
    EXPECT_TRUE(outer.contains("GETAM 0") && outer.contains("INCLM 0")) << outer.toStdString();
    EXPECT_TRUE(code("f = function(a) { with (a) b() }").contains("GETAM"));
}

TEST(Compiler, DeepNestingIsRefusedAndLongChainsAreNot)
{
    ScriptWorld world;
    auto nested = [](const char* open, const char* middle, const char* close, int depth) {
        return QString(open).repeated(depth) + middle + QString(close).repeated(depth);
    };
    const std::string tooDeep = "error: line 1: nesting too deep";
    EXPECT_EQ(world.value(nested("(", "1", ")", 1000)), "1");
    EXPECT_EQ(world.value(nested("{", "1", "}", 1000)), "1");
    EXPECT_EQ(world.value(nested("- ", "1", "", 1000)), "1");
    const char* forms[][3] = {
        {"(", "1", ")"},          {"{", "1", "}"},
        {"- ", "1", ""},          {"[", "", "]"},
        {"x={a:", "1", "}"},      {"if(1)", "1", ""},
        {"function(){", "", "}"}, {"f(", "1", ")"},
        {"new ", "F", ""},        {"x=", "1", ""},
        {"1?1:", "1", ""},        {"a:", "1", ""},
        {"x[", "1", "]"},         {"switch(1){case 1:", "", "}"},
        {"while(0)", ";", ""},    {"!", "1", ""},
        {"typeof ", "1", ""},     {"do{", "", "}while(0)"},
        {"with({})", "1", ""},    {"try{", "", "}finally{}"},
        {"x", "", ".y"},          {"f", "", "()"},
        {"1>", "1", ""},
    };
    for (const auto& form : forms) {
        QString source = nested(form[0], form[1], form[2], 100000);
        if (form[0][0] == 'x' && !form[1][0])
            source = "x" + QString(".y").repeated(100000);
        if (form[0][0] == 'f' && !form[1][0])
            source = "f" + QString("()").repeated(100000);
        EXPECT_EQ(world.value(source), tooDeep) << form[0];
    }
    EXPECT_EQ(world.value("1" + QString("+1").repeated(9000)), "9001");
    EXPECT_EQ(world.value("1" + QString(",1").repeated(100000)), "1");
    EXPECT_EQ(world.value("1" + QString("&&1").repeated(9000)), "1");
}

TEST(Compiler, CodeBeyond64KiBFailsWithItsText)
{
    ScriptWorld world;
    const std::string tooLarge = "fatal: compiler error: patch constant too large";
    EXPECT_EQ(world.value(QString("x = x + 1;").repeated(30000)), tooLarge);
    EXPECT_EQ(world.value("if (0) {" + QString("x = x + 1;").repeated(30000) + "}"), tooLarge);
    EXPECT_EQ(world.value("while (0) {" + QString("x = 1; if (x) break;").repeated(20000) + "}"), tooLarge);
    EXPECT_EQ(world.value(QString("x = 1;").repeated(5000) + "x"), "1");
}

TEST(Compiler, NamesBeyondTheReachOfAnOperandWork)
{
    ScriptWorld world;
    // Fill the pool so that new names have indices of more than 16 bits.
    EXPECT_EQ(world.value("for (var i = 0; i < 70000; i++) x = 'filler' + i; i"), "70000");
    EXPECT_GT(ESStringPool::count(), 65536);
    EXPECT_EQ(world.value("var farName = { farKey: 'farText' }; farName.farKey + farName['farKey'].length"),
              "farText7");
    EXPECT_EQ(world.value("with (farName) farKey"), "undefined");
    EXPECT_EQ(world.value("function farFunction(farParameter) { return farParameter + 1 } farFunction(1)"),
              "2");
}

TEST(Compiler, WarnsOnceOfBlocksThatDoNotRun)
{
    ScriptWorld world;
    world.context().eval("try { x } finally { }\nthrow 1;", "file.js");
    std::vector<ESWarning> warnings = world.context().takeWarnings();
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[0], (ESWarning{"file.js", 1, "'try' blocks do not run"}));
    EXPECT_EQ(warnings[1], (ESWarning{"file.js", 2, "'throw' statements do not run"}));
    world.context().eval("for (i = 0; i < 3; i++) eval('throw 1')");
    EXPECT_EQ(world.context().takeWarnings().size(), 1u);
    EXPECT_TRUE(world.context().takeWarnings().empty());
}
