// Arrays of arrays.
function make(n, f) { var m = []; for (var i = 0; i < n; i++) { m[i] = []; for (var k = 0; k < n; k++) m[i][k] = (i * f + k) % 10; } return m; }
function multiply(a, b, n) {
    var c = [];
    for (var i = 0; i < n; i++) {
        var row = [], left = a[i];
        for (var k = 0; k < n; k++) { var s = 0; for (var j = 0; j < n; j++) s += left[j] * b[j][k]; row[k] = s; }
        c[i] = row;
    }
    return c;
}
var n = 70, c = multiply(make(n, 3), make(n, 7), n), trace = 0;
for (var r = 0; r < 2; r++) c = multiply(c, make(n, r), n);
for (var i = 0; i < n; i++) trace += c[i][i];
print("matrix " + trace);
