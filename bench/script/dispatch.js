// A switch in a loop: a little machine.
function run(program, steps) {
    var acc = 0, x = 1, pc = 0, n = program.length;
    for (var i = 0; i < steps; i++) {
        switch (program[pc]) {
        case 0: acc = acc + x; break;
        case 1: x = (x * 3) & 1023; break;
        case 2: acc = acc ^ x; break;
        case 3: acc = acc & 65535; break;
        case 4: x++; break;
        case 5: acc = acc - x; break;
        case 6: if (acc > 30000) acc = acc >> 1; break;
        case 7: x = x ^ acc & 255; break;
        default: acc = 0;
        }
        pc++;
        if (pc == n) pc = 0;
    }
    return acc * 1000 + x;
}
function named(n) {
    var total = 0, names = ["red", "green", "blue", "black"];
    for (var i = 0; i < n; i++) {
        switch (names[i & 3]) {
        case "red": total += 1; break;
        case "green": total += 20; break;
        case "blue": total += 300; break;
        default: total += i & 7;
        }
    }
    return total;
}
print("dispatch " + run([0, 1, 2, 4, 7, 3, 6, 5, 1, 0, 2, 4], 700000) + " " + named(300000));
