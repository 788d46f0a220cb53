// Integers and bits: a table-driven CRC over bytes.
function makeTable() {
    var table = [];
    for (var n = 0; n < 256; n++) {
        var c = n;
        for (var k = 0; k < 8; k++)
            c = (c & 1) ? ((c >>> 1) ^ 0xEDB88320) : (c >>> 1);
        table[n] = c >>> 0;
    }
    return table;
}
function crc(table, seed, count) {
    var c = -1;
    for (var i = 0; i < count; i++)
        c = table[(c ^ (seed + i * 7)) & 255] ^ (c >>> 8);
    return (c ^ -1) >>> 0;
}
var table = makeTable();
var sum = 0;
for (var round = 0; round < 40; round++)
    sum = (sum + crc(table, round, 50000)) % 1000003;
print("crc " + sum);
