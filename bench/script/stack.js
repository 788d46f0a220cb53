// push, pop, shift, slice and concat on small arrays.
function run() {
    var total = 0;
    for (var round = 0; round < 2500; round++) {
        var a = [];
        for (var i = 0; i < 30; i++) a.push(i * round % 17);
        var b = a.slice(5, 15).concat([1, 2, 3]);
        while (a.length > 10) total += a.pop();
        for (i = 0; i < 5; i++) total += a.shift();
        b.reverse();
        total += b.length + b[0] + b[12];
    }
    return total;
}
print("stack " + run());
