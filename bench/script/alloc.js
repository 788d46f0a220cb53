// Making many short-lived objects and arrays.
function node(left, right) { return { left: left, right: right }; }
function tree(depth) { return depth == 0 ? node(null, null) : node(tree(depth - 1), tree(depth - 1)); }
function check(t) { return t.left == null ? 1 : 1 + check(t.left) + check(t.right); }
function Pair(a, b) { this.a = a; this.b = b; }
var total = 0;
for (var i = 0; i < 12; i++) total += check(tree(11));
for (var k = 0; k < 60000; k++) { var p = new Pair(k, k + 1); var v = [p.a, p.b, 3]; total += v[1] - v[0]; }
print("alloc " + total);
