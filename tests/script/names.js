// Names that come and go, and texts that become names.
// Sorted, since the order is that in which all scripts of the process met the names.
function keys(o) { var n = []; for (var k in o) n.push(k); n.sort(); var t = ""; for (k = 0; k < n.length; k++) t += n[k] + " "; return t; }
var o = {}, i, t; for (i = 0; i < 30; i++) o["n" + i] = i; for (i = 0; i < 30; i += 2) delete o["n" + i]; print(keys(o));
for (i = 28; i >= 0; i -= 2) o["n" + i] = -i; print(keys(o), o.n0, o.n28, o.n29); print(delete o.absent, delete o.n1, delete o.n1, o.n1, o.hasOwnProperty("n" + 1), o.hasOwnProperty("n" + 2));
o = {}; for (i = 0; i < 5000; i++) { o["id" + i] = i; if (i >= 5) delete o["id" + (i - 5)]; } print(keys(o), o.id4995, o.id0);
o = { b: 1, a: 2 }; for (var k in o) { delete o.a; delete o.b; o.c = 1; } print(keys(o)); o.a = 3; o.b = 4; print(keys(o), o.a + o.b);
var p = { one: 1, two: 2 }; function F() {} F.prototype = p; o = new F(); o.one = "own"; print(keys(o), o.one, o.two); delete o.one; print(o.one); p.three = 3; print(o.three, o.hasOwnProperty("three")); delete p.two; print(o.two);
var big = {}; for (i = 0; i < 40; i++) big["m" + i] = i; F.prototype = big; o = new F(); t = 0; for (i = 0; i < 40; i++) t += o["m" + i]; print(t, o.m39, o.m40); for (k in o) delete big[k]; print(keys(o), o.m5); big.m5 = 1; print(o.m5, keys(o));
first = 1; second = 2; function sum() { return first + second; } print(sum()); delete first; print(typeof first, second, sum()); first = 10; print(first, second);
t = "pre"; t += "fix"; o = {}; o[t] = 1; o["pre" + "fix" + 1] = 2; print(o.prefix, o.prefix1, t == "prefix", "prefix1" == t + 1, keys(o)); switch (t + 1) { case "prefix": print("short"); case "prefix1": print("found"); }
var s = ""; for (i = 0; i < 50; i++) { s += "0123456789"; o[s] = i; } print(s.length, o[s], o[s.substring(0, 100)], o[s.slice(-70) + "x"], s.substring(3, 80).charAt(70), s.charCodeAt(499));
var head = s.substring(0, 90), x1 = head + "-one", x2 = head + "-two", x3 = head + "-one"; print(x1.length, x1 == x2, x1 == x3, x1 < x2, head.length, x1.substring(88), x2.substring(88), (x1 + x1).length, (x1 + x1).charAt(94));
var parts = []; s = "<"; for (i = 0; i < 100; i++) { s = s + i; parts[i] = s; } print(parts[0], parts[9], parts[99].length, parts[50].length, parts[50] == parts[51].substring(0, parts[50].length), s == parts[99]);
s = "a"; for (i = 0; i < 12; i++) s = s + s; print(s.length, s.indexOf("b"), (s + "b").indexOf("b"), ("b" + s).indexOf("b"), ("b" + s).charAt(1), s.length);
o = {}; o[1.5] = "f"; o[-1] = "n"; o[1e21] = "big"; o[0] = "z"; o[true] = "t"; o[null] = "nil"; o[undefined] = "u"; print(o["1.5"], o["-1"], o[1e21], o["0"], o["true"], o["null"], o.undefined, o[4294967296]); o[70000] = 1; print(o["70000"], o[70001], o["70001"]);
function Count() { this.n = 0; } Count.prototype.up = function() { return ++this.n; }; var c = new Count(); c.up(); c.up(); c.up = function() { return "own"; }; print(c.up(), c.n); delete c.up; print(c.up()); Count.prototype.up = 5; print(c.up, typeof Count.prototype.constructor, Count.prototype.constructor == Count);
function G() {} print(G.length, typeof G.prototype, keys(G), G.hasOwnProperty("prototype"), G.prototype.constructor == G); delete G.prototype; print(G.prototype, new G().constructor == Object); G.length = 7; print(G.length); function H(a, b) {} H.extra = 1; print(H.length, keys(H), H.prototype == H.prototype);
function scoped() { var a0 = 0, a1 = 1, a2 = 2, a3 = 3, a4 = 4, a5 = 5, a6 = 6, a7 = 7, a8 = 8, a9 = 9; return function() { a0++; a9++; return a0 + a1 + a2 + a3 + a4 + a5 + a6 + a7 + a8 + a9; }; } var f1 = scoped(), f2 = scoped(); f1(); f1(); print(f1(), f2());
function outer(n) { with ({ w: n }) { if (n > 1) return function() { return w; }; } return 0; } var w5 = outer(5), w6 = outer(6); print(w5(), w6(), outer(1)); function self() { var inner = function() { return this; }; return inner(); } var kept = self(); for (i = 0; i < 50; i++) self(); print(typeof kept.inner, typeof self().inner);
o = {}; for (i = 9; i > 0; i -= 2) o["order_" + i] = i; for (i = 2; i < 10; i += 2) o["order_" + i] = i; delete o.order_9; o.order_9 = 0; delete o.order_3; t = ""; for (k in o) t += k + " "; print(t);
a = []; for (i = 3999990; i > 3999900; i -= 30) a[i] = i; a[3999950] = 1; for (i = 0; i < 5; i++) a[i] = i; t = ""; for (k in a) t += k + " "; print(t);
/* expect
n1 n11 n13 n15 n17 n19 n21 n23 n25 n27 n29 n3 n5 n7 n9 
n0 n1 n10 n11 n12 n13 n14 n15 n16 n17 n18 n19 n2 n20 n21 n22 n23 n24 n25 n26 n27 n28 n29 n3 n4 n5 n6 n7 n8 n9  0 -28 29
true true true undefined false true
id4995 id4996 id4997 id4998 id4999  4995 undefined
c 
a b c  7
one two  own 2
1
3 false
undefined
780 39 undefined
 undefined
1 m5 
3
undefined 2 NaN
10 2
1 2 true true prefix prefix1 
found
500 49 9 undefined 3 57
94 false true true 90 89-one 89-two 188 0
<0 <0123456789 191 93 true true
4096 -1 4096 0 a 4096
f n big z t nil u undefined
1 undefined undefined
own 2
3
5 function true
0 object  true true
undefined true
7
2 extra  true
51 47
5 6 0
undefined undefined
order_9 order_7 order_5 order_1 order_2 order_4 order_6 order_8 
0 1 2 3 4 3999950 3999990 3999960 3999930 
*/
