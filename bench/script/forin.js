// for-in over small objects and arrays.
function run() {
    var o = { one: 1, two: 2, three: 3, four: 4, five: 5, six: 6, seven: 7, eight: 8 }, total = 0;
    for (var round = 0; round < 25000; round++) {
        for (var k in o) total += o[k];
        o.one = round & 3;
    }
    var a = [3, 1, 4, 1, 5, 9, 2, 6];
    for (round = 0; round < 15000; round++)
        for (k in a) total += a[k];
    return total;
}
print("forin " + run());
