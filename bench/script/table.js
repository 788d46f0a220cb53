// An object as a table with thousands of names: filled, looked up, missed.
function run(n) {
    var table = {}, total = 0, i;
    for (i = 0; i < n; i++) table["reg" + i] = i;
    for (var round = 0; round < 6; round++)
        for (i = 0; i < n; i++) {
            var v = table["reg" + (i * 7 % (n + n))];
            if (v != undefined) total += v;
        }
    return total;
}
print("table " + run(8000));
