// Names that are made, deleted and made again.
function run(rounds) {
    var open = {}, total = 0;
    for (var i = 0; i < rounds; i++) {
        open["c" + i % 1500] = i;
        if (i >= 700) { var old = "c" + (i - 700) % 1500; total += open[old]; delete open[old]; }
    }
    for (var k in open) total += open[k];
    return total;
}
print("churn " + run(60000));
