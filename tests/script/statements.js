// Statements, jumps out of them, and automatic semicolons.
var i, j, out = "";
for (i = 0; i < 3; i++) out += i;
while (i > 0) { i--; if (i == 1) continue; out += "w" + i; }
do { i++; if (i == 2) continue; out += "d" + i } while (i < 4)
for (;;) { if (i++ > 5) break; }
print(out, i);
outer: for (i = 0; i < 4; i++) {
    for (j = 0; j < 4; j++) {
        if (j == 2) continue outer;
        if (i == 2) break outer;
        print(i, j);
    }
}
block: { print("in"); break block; print("never"); }
function grade(n) {
    switch (n) {
    case 1: return "one";
    default: return "other";
    case 2: out = "two";
    case 3: return out + "+";
    case "1": return "text";
    }
}
out = "";
print(grade(1), grade(2), grade(3), grade("1"), grade(9), grade(NaN));
function dense(n) {
    var r = "";
    switch (n) {
    case 0: r += "a";
    case 1: r += "b"; break;
    case 5: r += "f"; break;
    case 3: r += "d"; break;
    case 2: r += "c"; break;
    case 1: r += "never";
    }
    return r + "|";
}
print(dense(0), dense(1), dense(2), dense(3), dense(5), dense(4), dense(-1), dense(1.5), dense("1"), dense(-0));
var a = 1
var b = a
++b
print(a, b)
function early() { return
  5 }
print(early());
function inWith(o) { with (o) { for (;;) { with ({ p: 2 }) { if (p == 2) break; } } return p + q; } }
var q = 10;
print(inWith({ p: 1 }), typeof p);
for (i in { x: 1 }) with ({ i: 5 }) { continue; }
print(i);
var names = "";
for (var n in { b: 1, a: 2, c: 3 }) { if (n == "a") continue; names += n; if (n == "c") break; }
print(names);
try { var declared = 5; print("no"); } catch (e) { print("no"); } finally { print("no"); }
print(typeof declared, declared);
if (0) print("no"); else if (1) print("yes"); else print("no");
for (var arr = [], z = 0; z < 3; ++z) arr[z] = z; print(arr);
var target = {}; for (target.key in { only: 1 }) ; print(target.key);
hoisted(); function hoisted() { print("hoisted"); }
for (i = 0, j = 10; i < j && j != 7 || i == 100; i++, j--) ; print(i, j);
/* expect
012w2w0d1d3d4 7
0 0
0 1
1 0
1 1
in
one two+ two+ text other other
ab| b| c| d| f| | | | | ab|
1 2
undefined
11 undefined
x
bc
undefined undefined
yes
0,1,2
only
hoisted
3 7
*/
