// Strings and their members.
var s = "Hello, World";
print(s.length, s.charAt(0), s.charAt(12) == "", s.charAt(-1) == "", s.charCodeAt(1), s.charCodeAt(99), "abc".charAt(NaN));
print(s.indexOf("o"), s.indexOf("o", 5), s.indexOf("o", -5), s.indexOf("x"), "abc".indexOf("", 2), "abc".indexOf("", 9));
print(s.lastIndexOf("o"), s.lastIndexOf("o", 7), s.lastIndexOf("H", -1), s.lastIndexOf("zz"), "aa".lastIndexOf("aaa"), "abc".lastIndexOf(""));
print(s.slice(7), s.slice(-5, -1), s.slice(3, 1) == "", s.substring(7, 4), s.substring(-3, 2), s.substring(NaN, 3), s.slice(-99, 2), s.substring(2, Infinity));
print(s.toLowerCase(), s.toUpperCase(), s.concat("!", 1, null), "ä".toUpperCase(), "a".localeCompare("a"));
print(String.fromCharCode(72, 105, 0x20AC), String.fromCharCode(65), String.fromCharCode() == "", String(), String(5), new String());
print("a-b-c".split("-"), "abc".split(""), "abc".split().length, "a,b,c".split(",", 2), "".split("x").length, "".split("").length, "aXbX".split("X").length);
print("a.b.c".replace(".", "[$&$$]"), "abc".replace("b", function(m, i, t) { return m + i + t; }), "abc".replace("x", "y"), "aa".replace("a", "$1$"));
print("hay needle".search("needle"), "hay".search("x"), "hay".match("a"), "hay".match("a").index, "hay".match("a").input, "hay".match("z"));
print("\x41\u0042\103\0".length, "\x41\u0042\103\b\f\n\r\t\"\'\\\q".length, "\477".length, "\1012".length);
print("a" < "b", "B" < "a", "abc" < "abd", "" < "a", "a" <= "a", "é" > "z");
var text = ""; for (var i = 0; i < 1000; i++) text += "0123456789"; print(text.length, text.charAt(9999), text.substring(4998, 5003));
var other = ""; for (i = 0; i < 1000; i++) other = other + "0123456789"; print(text == other, text + "x" == "x" + other, text + "x" == other + "x");
var left = ""; for (i = 0; i < 100; i++) left = "ab" + left; var right = ""; for (i = 0; i < 100; i++) right += "ab"; print(left == right, left.length, left.charCodeAt(199));
var map = {}; map[left] = 1; print(map[right]);
s.length = 3; print(s.length); var w = new String("abc"); w.length = 9; w.extra = 1; print(w.length, w.extra, w[0], w.charAt(1));
print("5" * "2", "0x1F" - 0, " 12 " - 0, "1e3" - 0, "abc" - 0, "" - 0, "-5" - 0, "Infinity" - 0, "-Infinity" - 0, "inf" - 0, "0x" - 0, "1 2" - 0, "nan" - 0, "+7" - 0, ".5" - 0, "5." - 0);
print([1, 2, 3].toString.length, "x".charAt.length, Math.max.length, "x".split.length, String.length);
var o = { toString: function() { return "obj"; } }; o.up = s.toUpperCase; o.at = s.charAt; print(o.up(), o.at(1));
print(parseInt("42px"), parseInt(" -17"), parseInt("0x1F"), parseInt("1F", 16), parseInt("z", 36), parseInt("12", 37), parseInt(""), parseInt("9", 8), parseInt("077"), parseInt("101", 2));
print(parseFloat("3.5e2x"), parseFloat(".5"), parseFloat("-.5e"), parseFloat("x"), parseFloat("-Infinity!"), parseFloat("1.2.3"), parseFloat("5e+"));
print("abc".valueOf() == "abc", ("a" + "b").constructor == String, "true" == true, "x".toString().length);
/* expect
12 H true true 101 NaN a
4 8 4 -1 2 3
8 4 0 -1 -1 3
World Worl true o,  He Hel He llo, World
hello, world HELLO, WORLD Hello, World!1null Ä 0
Hi€ A true undefined 5 undefined
a,b,c a,b,c 1 a,b 1 0 3
a[.$]b.c ab1abcc abc $1$a
4 -1 a 1 hay null
4 12 2 2
true true true true true true
10000 9 89012
true false true
true 200 98
1
12
3 1 undefined b
10 31 12 1000 NaN 0 -5 Infinity -Infinity NaN NaN NaN NaN 7 0.5 5
0 1 0 2 1
OBJ b
42 -17 31 31 35 NaN NaN NaN 77 5
350 0.5 -0.5 NaN -Infinity 1.2 5
true true false 1
*/
