// Memory that is touched here and there: an array with far indices.
function run(n) {
    var memory = [], address = 1, total = 0;
    for (var i = 0; i < n; i++) {
        address = (address * 69069 + 5) % 1000003;
        memory[address * 100] = i;
    }
    address = 1;
    for (i = 0; i < n; i++) {
        address = (address * 69069 + 5) % 1000003;
        total += memory[address * 100];
        if (memory[address * 100 + 1] != undefined) total++;
    }
    return total;
}
print("sparse " + run(20000));
