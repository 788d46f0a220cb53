// Closures made in a loop, called once and kept for a while.
function watcher(limit) {
    var count = 0;
    return function(n) { count += n; return count > limit; };
}
function run(n) {
    var kept = [], hits = 0;
    for (var i = 0; i < n; i++) {
        kept[i & 63] = watcher(i & 15);
        for (var k = 0; k < 3; k++) if (kept[i * k & 63] && kept[i * k & 63](k)) hits++;
    }
    return hits;
}
print("makers " + run(60000));
