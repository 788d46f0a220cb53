// Sorting texts, and numbers as texts.
function run(n) {
    var a = [], b = [], seed = 1;
    for (var i = 0; i < n; i++) { seed = (seed * 1103 + 12345) % 65536; a[i] = "key" + seed % 977; b[i] = seed; }
    a.sort();
    b.sort();
    return a[0] + a[n >> 1] + a[n - 1] + b[0] + b[n >> 1] + b[n - 1];
}
var text = "";
for (var k = 0; k < 8; k++) text = run(1000 + k);
print("sorttext " + text);
