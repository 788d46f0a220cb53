// Results kept in a table by a key made of numbers.
var known = {};
function cell(x, y) {
    var key = x + "," + y, v = known[key];
    if (v == undefined) {
        v = x == 0 || y == 0 ? 1 : (known[(x - 1) + "," + y] + known[x + "," + (y - 1)]) % 1000003;
        known[key] = v;
    }
    return v;
}
var total = 0;
for (var r = 0; r < 8; r++) {
    known = {};
    for (var x = 0; x < 40; x++) for (var y = 0; y < 40 + r; y++) total = (total + cell(x, y)) % 1000003;
}
print("memo " + total);
