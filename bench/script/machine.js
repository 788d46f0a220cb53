// A byte-code machine over arrays, with registers in an object.
function run(code, steps) {
    var cpu = { a: 0, b: 1, pc: 0, flags: 0 }, memory = [], n = 0;
    for (var i = 0; i < 64; i++) memory[i] = i;
    while (n++ < steps) {
        var op = code[cpu.pc++];
        switch (op >> 4) {
        case 0: cpu.a = cpu.a + memory[op & 15] & 0xFFFF; break;
        case 1: cpu.b = cpu.b ^ cpu.a; break;
        case 2: memory[op & 15] = cpu.a; break;
        case 3: cpu.flags = cpu.a > cpu.b ? 1 : 0; break;
        case 4: if (cpu.flags) cpu.pc = op & 15; break;
        case 5: var t = cpu.a; cpu.a = cpu.b; cpu.b = t; break;
        default: cpu.pc = 0;
        }
    }
    return cpu.a * 3 + cpu.b + memory[5];
}
print("machine " + run([0x03, 0x10, 0x25, 0x51, 0x07, 0x30, 0x42, 0x2A, 0x05, 0x60], 500000));
