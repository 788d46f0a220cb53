#include "ScriptFixture.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESRealm.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNativeGlobal.h"
#include "sim/Machine.h"
#include "support/HException.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

namespace {

class Budget : public ESContext {
public:
    explicit Budget(Ask ask = Ask::EachInstruction) : ESContext(ask) {}
    bool carryOnExecuting() override { return --left > 0; }
    long left = 1000000;
};

class NowAndThen : public Budget {
public:
    NowAndThen() : Budget(Ask::NowAndThen) {}
};

template <typename Context> void stopsRunaways()
{
    const char* sources[] = {
        "for (;;) ;",
        "while (1) x = 1;",
        "function f(n) { while (n < 40) f(n + 1) } f(0)",
        "new Array(4294967295).reverse()",
        "[3, 2, 1].sort(function() { for (;;) ; })",
        "o = { toString: function() { for (;;) ; } }; o + ''",
        "eval('for (;;) ;')",
        "for (k in { a: 1 }) for (;;) ;",
        "new (function() { do { } while (1) })",
        "'a'.replace('a', function() { for (;;) ; }); for (;;) ;",
    };
    for (const char* source : sources) {
        ScriptWorldOf<Context> world;
        world.context().left = 3000;
        ESCompletion completion = world.run(source);
        EXPECT_TRUE(world.context().stopped()) << source << world.output().toStdString();
        EXPECT_EQ(completion.type, ESCompletion::Normal);
        world.context().left = 1000000;
        EXPECT_EQ(world.value("var n = 0; for (var i = 0; i < 5000; i++) n++; n"), "5000");
        EXPECT_FALSE(world.context().stopped());
    }
}

} // namespace

TEST(Machine, FailuresCarryLineKindAndText)
{
    const struct {
        const char* source;
        const char* kind;
        const char* message;
    } cases[] = {
        {"x = 1;\ny();", "TypeError", "line 2: not a function object"},
        {"[].join()", "TypeError", "line 1: not a function object"},
        {"undefined.x", "TypeError", "line 1: can't convert undefined to an object"},
        {"null.x = 1", "TypeError", "line 1: can't convert null to an object"},
        {"new 5", "TypeError", "line 1: new must be given a constructor object"},
        {"new Math()", "TypeError", "line 1: new must be given a constructor object"},
        {"new Math.abs(1)", "TypeError", "line 1: new must be given a constructor object"},
        {"Date()", "Error", "line 1: bad signature in builtin call"},
        {"1 + { valueOf: 5, toString: 6 }", "TypeError", "line 1: type error: no default value"},
        {"new Array(2.5)", "RangeError", "line 1: bad length in array constructor"},
        {"\n[1].sort(5)", "Error", "line 2: Array.prototype.sort argument is not a function"},
        {"(1.5).toFixed(25)", "RangeError", "line 1: fraction digits should 0 through 20"},
        {"x = {}; x.t = Number.prototype.toString; x.t()", "TypeError",
         "line 1: Number.prototype.toString called on non-Number object"},
        {"x = {}; x.t = Number.prototype.valueOf; x.t()", "TypeError",
         "line 1: Number.prototype.valueOf called on non-Number object"},
        {"x = {}; x.t = String.prototype.valueOf; x.t()", "TypeError",
         "line 1: String.prototype.valueOf called on non-String object"},
        {"x = {}; x.t = Boolean.prototype.valueOf; x.t()", "TypeError",
         "line 1: Boolean.prototype.toString called on non-Boolean object"},
        {"x = {}; x.t = [].toString; x.t()", "TypeError",
         "line 1: Array.prototype.toString requires an array"},
        {"x = {}; x.t = Date.prototype.getTime; x.t()", "TypeError", "line 1: Date object required"},
        {"function f() {\n  return g();\n}\nfunction g() {\n  return h.x;\n}\nvar h;\nf();", "TypeError",
         "line 5: can't convert undefined to an object"},
        {"new Function('a', 'return (')", "SyntaxError",
         "line 1: expected an expression, found end of input"},
    };
    for (const auto& c : cases) {
        ScriptWorld world;
        ESCompletion completion = world.context().eval(c.source);
        ASSERT_EQ(completion.type, ESCompletion::Thrown) << c.source;
        EXPECT_EQ(completion.text.toStdString(), c.message) << c.source;
        ESValue name = world.context().get(completion.value.object(), g_nameString);
        EXPECT_EQ(world.context().toString(name).toStdString(), c.kind) << c.source;
        EXPECT_TRUE(
            ESContext::isPrototypeOf(world.context().realm().prototype(ESRealm::Error), completion.value));
    }
}

TEST(Machine, RecursionEndsInTheFatalTextAndLeavesTheContextUsable)
{
    const std::string full = "fatal: virtual machine stack too small";
    const char* sources[] = {
        "function f() { f() } f()",
        "function f(a, b, c) { return f(1, 2, 3, 4) + 1 } f()",
        "function F() { return new F() } new F()",
        "a = []; a[0] = a; a + ''",
        "o = { valueOf: function() { return o + 1 } }; o + 1",
        "o = { toString: function() { return '' + o } }; '' + o",
        "c = function(x, y) { return [2, 1].sort(c) }; [2, 1].sort(c)",
        "r = function() { return 'a'.replace('a', r) }; r()",
        "s = 'eval(s)'; eval(s)",
        "function w(o) { with (o) { return w(o) } } w({})",
        "function g() { return arguments.callee() } g()",
        "function h(a) { var q = function() { return a }; return h(1) } h()",
        "b = function() { return new Function('return b()')() }; b()",
    };
    ScriptWorld world;
    for (const char* source : sources) {
        EXPECT_EQ(world.value(source), full) << source;
        EXPECT_EQ(world.value(
                      "function ok(n) { return n ? ok(n - 1) + 1 : this == glob } var glob = this; ok(150)"),
                  "151")
            << source;
    }
    QString wide = "[" + QString("1,").repeated(1100) + "]";
    EXPECT_EQ(world.value(wide), full);
    EXPECT_EQ(world.value("[" + QString("1,").repeated(900) + "].length"), "900");
    EXPECT_EQ(world.value("Math.max(" + QString("1,").repeated(1100) + "1)"), full);
}

TEST(Machine, FailedEvalPutsTheStateBack)
{
    ScriptWorld world;
    for (int i = 0; i < 3000; ++i)
        ASSERT_EQ(world.context().eval("with ({a: 1}) (function(p) { return [1, 2, p.x.y] })(1)").type,
                  ESCompletion::Thrown);
    EXPECT_EQ(world.value("this + typeof a"), "[object global]undefined");
    // Inside a script as well.
    EXPECT_EQ(
        world.value("function f(n) { var r = 1 + n; eval('with ({}) [1, 2, x.y.z]'); return r + n } f(5)"),
        "11");
}

TEST(Machine, StringsHaveAnEndAndLongOnesAreCheapToBuild)
{
    ScriptWorld world;
    EXPECT_EQ(world.value("s = 'x'; for (;;) s += s"), "fatal: string too long");
    EXPECT_EQ(world.value("s = ''; for (i = 0; i < 200000; i++) s += 'ab'; s.length + s.charAt(199999)"),
              "400000b");
    EXPECT_EQ(world.value("new Array(4294967295).toString()"), "fatal: string too long");
    EXPECT_EQ(
        world.value(
            "s = ''; for (i = 0; i < 26; i++) s += s + 'ab'; t = s + 'c'; t.replace('c', '$&$&').length"),
        "fatal: string too long");
}

TEST(Machine, OwnersStopRunawayScripts)
{
    stopsRunaways<Budget>();
    stopsRunaways<NowAndThen>();
}

TEST(Machine, StrictHookIsAskedBeforeEveryInstruction)
{
    ScriptWorldOf<Budget> world;
    world.context().left = 1000;
    world.value("1");
    long few = 1000 - world.context().left;
    world.context().left = 1000;
    world.value("x = 1; x = 2; x = 3; x = 4; x = 5;");
    EXPECT_GT(1000 - world.context().left, few + 5);
}

TEST(Machine, LoadLooksAlongThePathAndSwallowsFailures)
{
    TempDir directory;
    directory.write("good.js", "var loaded = 'l\xc3\xb6';");
    directory.write("bad.js", "var before = 1; x = nothing.x; before = 2;");
    directory.write("self.js", "load('self.js')");
    ScriptWorld world;
    EXPECT_EQ(world.value("load('good.js')"), "false");
    ESNativeGlobal::of(&world.context())->addToLoadPath("/nonexistent");
    ESNativeGlobal::of(&world.context())->addToLoadPath(QString::fromStdString(directory.path()));
    EXPECT_EQ(world.value("load('good.js') + loaded + loaded.length"), "truel\xc3\xb6"
                                                                       "2");
    EXPECT_EQ(world.value("load('bad.js') + '' + before"), "true1");
    EXPECT_EQ(world.value("load('self.js')"), "fatal: virtual machine stack too small");
    EXPECT_EQ(world.value("load('.')"), "false");
}
