// A queue that grows long before it is worked off, and a stack of the same size.
function run(n) {
    var queue = [], total = 0, i;
    for (i = 0; i < n; i++) { queue.push(i * 3); if (i % 4 == 3) total += queue.shift(); }
    while (queue.length) { total += queue.shift() & 7; if (queue.length) total += queue.pop() & 3; }
    return total;
}
print("backlog " + run(8000));
