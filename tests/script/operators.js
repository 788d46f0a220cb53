// Operators on values of all types.
var o = { valueOf: function() { return 7; } };
var t = { toString: function() { return "t"; } };
print(1 + 2, 1 + "2", "a" + null, "a" + undefined, true + 1, null + 1, undefined + 1);
print(o + 1, o + "x", t + 1, [1, 2] + [3], "" + {});
print(7 - "2", "3" * "4", 7 / 2, -7 % 3, 7 % -3, 5.5 % 2, 1 / 0, -1 / 0, 0 / 0);
print(5 & 3, 5 | 3, 5 ^ 3, ~5, 1 << 31, 1 << 33, -8 >> 1, -8 >>> 28, 4294967296 | 0, 4294967295 | 0);
print(1e10 | 0, -1e10 >>> 0, 1e20 | 0, NaN | 0, Infinity >>> 0, "0x10" | 0, 2147483648 >> 0);
print(1 < 2, 2 < 1, "10" < "9", "10" < 9, NaN < 1, 1 < NaN, NaN <= NaN, NaN >= NaN, 2 >= 2, 3 > 2);
print(null == undefined, null == 0, "1" == 1, true == 1, true == "1", NaN == NaN, o == 7, t == "t");
print("abc" == "ab" + "c", {} == {}, "" == 0, " \n" == 0, undefined != null, "1" != 1);
print(!0, !"", !"a", !{}, !NaN, !null, !"0");
print(typeof undefined, typeof null, typeof 1, typeof "", typeof true, typeof {}, typeof print, typeof Math.abs);
print(0 || "b", "a" || "b", 0 && "b", "a" && "b", (1, 2, 3), void 5);
print(1 ? 2 : 3, 0 ? 1 : 0 ? 2 : 3);
var x = 5;
print(x++, x, ++x, x--, --x, -x, +"12", -"", - -x);
x += 2; x *= 3; x -= 1; x /= 4; x %= 4; x <<= 3; x >>= 1; x >>>= 1; x |= 8; x &= 12; x ^= 5;
print(x);
var m = { a: 1, b: "5", i: 0 }, k = "a";
m.a += 2; m[k] <<= 3; m.b++; --m["b"]; m.a >>= 1; m[k] >>>= 1; m[k] |= 1;
print(m.a, m.b, typeof m.b, m.i++, m.i, ++m.i, m[k]--, m[k]);
print(delete m.a, m.a, delete m.none, delete zzz, delete 5);
print(1 / (0 * -1), -0 == 0, 1 / -0, 1 / (-0 % 5));
var s = "5"; s++; print(s, typeof s);
/* expect
3 12 anull aundefined 2 1 NaN
8 7x t1 1,23 [object Object]
5 12 3.5 -1 1 1.5 Infinity -Infinity NaN
1 7 6 -6 -2147483648 2 -4 15 0 -1
1410065408 2884901888 1661992960 0 0 16 -2147483648
true false true false false false false false true true
true false true true true false true true
true false true true false false
true true false false true true false
undefined object number string boolean object function function
b a 0 b 3 undefined
2 3
5 6 7 7 5 -5 12 0 5
13
7 5 number 0 1 2 7 6
true undefined true false true
-Infinity true -Infinity -Infinity
6 number
*/
