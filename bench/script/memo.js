// Results kept in a table by a key made of numbers.
var known = {};
function paths(x, y) {
    if (x == 0 || y == 0) return 1;
    var key = x + "," + y, v = known[key];
    if (v != undefined) return v;
    v = (paths(x - 1, y) + paths(x, y - 1)) % 1000003;
    known[key] = v;
    return v;
}
var total = 0;
for (var r = 0; r < 6; r++) { known = {}; total += paths(40, 40 + r); }
print("memo " + total);
