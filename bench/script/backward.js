// Arrays filled downwards and in leaps, turned round and joined.
function run(n) {
    var down = [], leaps = [], i, total = 0;
    for (i = n - 1; i >= 0; i--) down[i] = i & 15;
    for (var start = 0; start < 4; start++)
        for (i = start; i < n; i += 4) leaps[i] = i & 7;
    for (var round = 0; round < 10; round++) { down.reverse(); leaps = leaps.slice(1).concat([round]); }
    var both = down.concat(leaps);
    for (i = 0; i < both.length; i++) total += both[i];
    return total;
}
print("backward " + run(20000));
