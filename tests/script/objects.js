// Properties, deletion, enumeration, wrappers.
function keys(o) { var list = []; for (var k in o) list.push(k); return "" + list; }
var o = { a: 1, "b c": 2, 3: "three", nested: { x: [1, { y: 2 }] }, };
print(o.a, o["b c"], o[3], o["3"], o.nested.x[1].y, keys({ a: 1 }), keys([7, 8]));
print(delete o.a, o.a, keys(o), delete o.a);
o.a = 5; print(o.a, o.hasOwnProperty("a"), o.propertyIsEnumerable("a"), o.propertyIsEnumerable("toString"));
var g1 = 1, g2 = 2; h1 = 1; h2 = 2;
delete h1; print(h2, typeof h1, delete g1, g1);
function P() {} P.prototype.inherited = 1; var p = new P(); p.own = 2; p.inherited;
print(keys(p), p.inherited); p.inherited = 3; print(P.prototype.inherited, p.inherited, keys(p));
var many = {}; for (var i = 0; i < 120; i++) many["p" + i] = i;
var total = 0; for (i = 0; i < 120; i++) total += many["p" + i]; print(total, keys(many).length);
for (i = 0; i < 120; i += 2) delete many["p" + i];
print(many.p1, many.p2, many.p119, keys(many).length); many.p2 = "again"; print(many.p2);
print({}.toString(), [].toString(), new Date(0).constructor == Date, Math, new Boolean(0), new Number(5) + 1, this);
print(Object(5) + 1, typeof Object(5), new Object("s").length, typeof new Object(), Object(null), new Object(true) == true);
print("abc".length, (5).toString(), "x".constructor == String, typeof "x".valueOf(), typeof new String("x"), new String("x") == "x");
print(new Error("m").message, new TypeError().name, new RangeError(5).message, Error("called").message, new EvalError());
print(Error.prototype.isPrototypeOf(new SyntaxError()), typeof Error.prototype.message, new Error().message == "");
with (o) { var inWith = a; a = 6; newGlobal = 7; } print(inWith, o.a, o.newGlobal, newGlobal);
with ({ toString: 5 }) print(typeof toString);
with (many) p1++; print(many.p1);
with ({ z: 1 }) { print(delete z, typeof z); }
Math.PI = 3; print(Math.PI > 3.1, delete Math.PI, typeof Math.PI);
var circular = { n: 1 }; circular.self = circular; print(circular.self.self.n);
print(undefined, typeof undefined, NaN, Infinity, isNaN("x"), isNaN("5"), isFinite(1 / 0), isFinite("12"));
var order = { z: 1 }; order.a1z = 1; order.z = 2; print(keys(order));
var slots = [5, 6]; slots.extra = 1; print(keys(slots), slots.length);
print("s".missing, (5).missing, true.missing);
/* expect
1 2 three three 2 a 0,1
true undefined 3,b c,nested true
5 true true false
2 undefined false 1
inherited,own 1
1 3 inherited,own
7140 489
1 undefined 119 244
again
[object Object]  true [object Math] false 6 [object global]
6 object 1 object [object Object] true
3 5 true string object true
m TypeError 5 called [object EvalError]
true string true
5 6 undefined 7
number
2
true undefined
true false number
1
undefined undefined NaN Infinity true false false true
z,a1z
0,1,extra 2
undefined undefined undefined
*/
