// What scripts cost: what the engine makes for itself is given back, nothing is given back too early, and the
// limit holds.
#include "ScriptFixture.h"
#include "script/engine/ESStringPool.h"

#include <gtest/gtest.h>

namespace {

size_t bytesOf(ScriptWorld& world)
{
    return ESStringPool::bytes() + world.context().heap().bytes();
}

} // namespace

TEST(Memory, WhatNothingKeepsIsGivenBack)
{
    const char* handlers[] = {
        "function handle(n) { var t = 'value ' + n + ': '; t = t + t + n * 3; return t.substring(2, "
        "9).length }",
        "function handle(n) { var t = ''; for (var i = 0; i < 9; i++) t += n + '.'; return t.charAt(3) }",
        "function handle(n) { return arguments.length + arguments[0] + list(n, 2) }"
        "function list() { return arguments }",
        "var o = { a: 1, b: 2 }; function handle(n) { for (var k in o) o[k] += n; return o.a }",
        "function handle(n) { with (Math) { if (n) return abs(n) } }",
        "String.prototype.mark = function() { return this + '!' }; function handle(n) { return ('x' + "
        "n).mark() }",
        "Number.prototype.half = function() { return this / 2 }; function handle(n) { return n.half() + (n / "
        "7).toFixed(3) }",
        "var q = []; function handle(n) { q.push('e' + n); q.push(n); if (q.length > 40) { q.shift(); "
        "q.shift() } }",
        "var d = new Date(0); function handle(n) { d.setTime(n * 1e7); return d.toString() + d.getHours() }",
        "function handle(n) { return ('' + n * 1.5).charCodeAt(0) + parseInt((n * 1e6).toString(16), 16) }",
    };
    for (const char* handler : handlers) {
        ScriptWorld world;
        world.value(handler);
        QString calls = "for (var i = 0; i < 40000; i++) handle(i)";
        world.value(calls);
        size_t before = bytesOf(world);
        int names = ESStringPool::count();
        for (int round = 0; round < 2; ++round)
            world.value(calls);
        EXPECT_LT(bytesOf(world), before + (5u << 20)) << handler;
        EXPECT_EQ(ESStringPool::count(), names) << handler;
    }

    // A host that evaluates a text for each access.
    ScriptWorld world;
    world.value("var last = ''; function load(a, n) { last = 'at ' + a + ' of ' + n; return a + n }");
    auto loads = [&] {
        for (int i = 0; i < 20000; ++i)
            world.context().eval(QStringLiteral("load(0x%1, %2)\n").arg(i, 0, 16).arg(i % 7));
    };
    loads();
    size_t before = bytesOf(world);
    int names = ESStringPool::count();
    loads();
    EXPECT_LT(bytesOf(world), before + (5u << 20));
    EXPECT_EQ(ESStringPool::count(), names);
}

// A script that makes garbage all the time while it holds on to values in every place that values can be in.
TEST(Memory, WhatSomethingKeepsStays)
{
    ScriptWorld world;
    world.value("function waste() { var t = ''; for (var i = 0; i < 3000; i++) t = 'garbage ' + i + "
                "t.substring(0, 90);"
                " return t.length } function churn() { for (var k = 0; k < 20; k++) waste() }");
    const char* cases[][2] = {
        {"function f(a) { var t = 'loc' + a; churn(); return t + a } f('arg' + 1)", "locarg1arg1"},
        {"var g = 'glo' + 2; churn(); g", "glo2"},
        {"var o = { m: 'mem' + 3 }, a = ['ele' + 4]; a[5000] = 'far' + 5; churn(); o.m + a[0] + a[5000]",
         "mem3ele4far5"},
        {"function c(x) { var y = 'cap' + x; return function() { return y } } var k = c(6); churn(); k()",
         "cap6"},
        {"function args() { return arguments } var kept = args('one' + 7, 8); churn(); kept[0] + kept.length",
         "one72"},
        {"String.prototype.me = function() { return this }; var w = ('box' + 8).me(); churn(); w.length + w",
         "4box8"},
        {"var t = ''; for (var n in { a1: 1, b2: 2 }) { churn(); t += n } t", "a1b2"},
        {"var long = ''; for (var j = 0; j < 200; j++) long += 'part' + j; var cut = long.substring(10, 300);"
         "long = 0; churn(); cut.length + cut.substring(0, 8)",
         "290part2par"},
        {"var r = 'abcdefghijklmnopqrstuvwxyz0123456789' + 'ABCDEFGHIJKLMNOPQRSTUVWXYZ' + 1; r = 2 + r + r;"
         "churn(); r.length + r.charAt(64)",
         "127a"},
        {"'re' + [3, 1, 2].sort(function(x, y) { churn(); return ('' + x) - y }) + 'st'", "re1,2,3st"},
        {"var v = 'out' + 9; eval(\"churn(); v + 'in'\") + v", "out9inout9"},
        {"with ({ s: 'sco' + 10 }) { churn(); s += 1 } var e = { toString: function() { churn(); return "
         "'tex' + 11 } };"
         " 'x' + e + e",
         "xtex11tex11"},
        {"function F() { this.n = 'new' + 12; churn() } new F().n + function() { churn(); return 'called' + "
         "13 }()",
         "new12called13"},
        {"var d = new Number(5); d.note = 'no' + 14; churn(); d.note + d", "no145"},
        {"function A() {} A.prototype = args('pro' + 15); var inst = new A(); churn(); inst[0] + inst.length",
         "pro151"},
        {"switch ('ca' + 's') { case 'cas': churn(); g + 'e'; break } var tab = {}; tab['key' + 16] = 'v' + "
         "16; churn();"
         " for (n in tab) n + tab[n]",
         "undefined"},
        {"n + tab['key' + 16]", "key16v16"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(world.value(c[0]), c[1]) << c[0];
}

TEST(Memory, SmallObjectsAreSmall)
{
    ScriptWorld world;
    world.value("function P(x, y) { this.x = x; this.y = y } var last = null, n = 20000;");
    const char* makers[] = {"for (i = 0; i < n; i++) last = { a: i, b: last }",
                            "for (i = 0; i < n; i++) last = new P(i, last)"};
    for (const char* maker : makers) {
        world.value(maker);
        size_t before = world.context().heap().bytes();
        world.value(maker);
        EXPECT_LE(world.context().heap().bytes() - before, 20000u * 80) << maker;
    }
}

TEST(Memory, ALimitEndsTheScriptAndNotTheContext)
{
    const char* sources[] = {
        "var a = []; for (;;) a.push({})",
        "for (;;) a = { next: a }",
        "var o = {}; for (i = 0;; i++) o['n' + i] = i",
        "var t = 'x', all = []; for (;;) { t += 'yyyyyyyy'; all.push(t + '!') }",
        "for (;;) a = function() { return a }",
        "var a = []; for (i = 0;; i++) a[i] = 'text ' + i",
        "var a = ['0123456789']; for (i = 0;; i++) a = a.concat(a)",
        "var a = []; for (i = 0;; i++) a[i * 100000] = i",
        "'a,b,c'.split(','); var s = 'a,'; for (;;) { s += s; s.split(',') }",
    };
    for (const char* source : sources) {
        {
            ScriptWorld world;
            world.context().setMemoryLimit(ESStringPool::bytes() + (6u << 20));
            EXPECT_EQ(world.value(source), "fatal: out of memory") << source;
            EXPECT_EQ(world.value("1 + 2"), "3");
            world.context().setMemoryLimit(ESLimits::MemoryBytes);
            EXPECT_EQ(
                world.value("var again = []; for (i = 0; i < 30000; i++) again.push('g' + i); again[29999]"),
                "g29999");
        }
    }
}
