// Calls, arguments, closures, constructors, prototypes.
function f(a, b) { return a + ":" + b + ":" + arguments.length; }
print(f(1), f(1, 2), f(1, 2, 3));
function surplus(a) { var local = 9; return local + a; }
print(surplus(1, 2, 3), surplus.length);
function counter() { var n = 0; return { up: function() { return ++n; }, down: function() { n -= 1; return n--; }, get: function() { return n; } }; }
var c = counter(), d = counter();
c.up(); c.up(); d.up(); c.down();
print(c.get(), d.get());
function shared(p) { var change = function() { p = p + 1; }; change(); p++; change(); return p; }
print(shared(1));
function adders() { var list = []; for (var i = 0; i < 3; i++) list[i] = function(x) { return x + i; }; return list[0](10) + list[2](10); }
print(adders());
print((function(x) { return x * 2; })(21), function() { return this == glob; }());
var glob = this;
print((function() { return this == glob; })());
function make() { return function() { return function() { return "deep"; }; }; }
print(make()()());
var named = function fact(n) { return n < 2 ? 1 : n * fact(n - 1); };
print(named(10), fact(3));
function sum() { var t = 0; for (var i = 0; i < arguments.length; i++) t += arguments[i]; return t; }
print(sum(), sum(1), sum(1, 2, 3, 4), typeof sum.callee);
function self(n) { return n ? arguments.callee(n - 1) + 1 : 0; }
print(self(5));
function noEnum() { var s = ""; for (var k in arguments) s += k; return s + "."; }
print(noEnum(1, 2));
function twice(a, a) { return a; }
print(twice(1, 2));
function Shape(n) { this.n = n; }
Shape.prototype.area = function() { return this.n * this.n; };
function Square(n) { this.n = n; this.kind = "square"; }
Square.prototype = new Shape(0);
var s = new Square(4);
print(s.area(), s.n, s.kind, Shape.prototype.isPrototypeOf(s), s.hasOwnProperty("n"), s.hasOwnProperty("area"));
function Other() { return { mine: 1 }; }
print(new Other().mine, new Other().constructor == Object, new Shape(1).constructor == Shape);
print(new Array(1, 2).concat(3), new (function() { this.v = 3; })().v, new Shape.prototype.constructor(5).n);
var space = { inner: { F: function() { this.ok = "ok"; } } };
print(new space.inner.F().ok, new space.inner.F.prototype.constructor().ok);
function level(n) { return n == 0 ? 0 : 1 + level(n - 1); }
print(level(200));
var obj = { m: function() { return this.v; }, v: 1 }, key = "m";
print(obj.m(), obj["m"](), obj[key](), (obj.m)());
function evalUser(x) { return eval("2 + 3"); }
print(evalUser(1), eval("var fromEval = 4; fromEval * 2"), fromEval, eval("syntax ("), eval(5));
var F = new Function("a, b", "c", "return a + b + c");
print(F(1, 2, 3), F.length, F, new Function()(), Function("return 7")());
print(typeof Function.prototype, Function.prototype(), f.prototype.constructor == f);
function withClosure(o) { with (o) { return function() { return v + free; }; } }
var free = 100; print(withClosure({ v: 1 })());
function over(print2) { var g = function() { return print2; }; print2 = 5; return g(); }
print(over(1));
function mixed(a) { var x = a; switch (x) { default: x = 9; break; case 1: x = 2; } x++; --a; var g = function() { return x + a; }; return g(); }
print(mixed(1), mixed(5));
function assignOuter() { var v = 1; (function() { v = 2; w = 3; })(); return v; }
print(assignOuter(), w);
function hides(arguments) { return eval("1") + arguments; }
print(hides(7));
/* expect
1:undefined:2 1:2:2 1:2:3
10 1
0 1
4
26
42 false
true
deep
3628800 6
0 1 10 undefined
5
.
2
16 4 square true true false
1 true true
1,2,3 3 5
ok ok
200
1 1 1 1
5 8 4 undefined 5
6 3 <<function>> undefined 7
function undefined true
101
5
3 14
2 3
8
*/
