// Sorting numbers with a comparator.
function run(n) {
    var a = [], seed = 1;
    for (var i = 0; i < n; i++) { seed = (seed * 1103 + 12345) % 65536; a[i] = seed; }
    a.sort(function(x, y) { return x - y; });
    var total = 0;
    for (i = 0; i < n; i++) total = (total * 3 + a[i]) % 1000003;
    return total;
}
var sum = 0;
for (var k = 0; k < 12; k++) sum += run(1000 + k);
print("sortnum " + sum);
