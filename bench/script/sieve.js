// An array of some ten thousand flags.
function run(n) {
    var composite = [], count = 0, i, k;
    for (i = 0; i <= n; i++) composite[i] = false;
    for (i = 2; i <= n; i++) {
        if (composite[i]) continue;
        count++;
        for (k = i * 2; k <= n; k += i) composite[k] = true;
    }
    return count;
}
var total = 0;
for (var round = 0; round < 4; round++) total += run(60000 + round);
print("sieve " + total);
