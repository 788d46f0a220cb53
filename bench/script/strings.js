// Building strings from pieces.
function hex(n) {
    var digits = "0123456789abcdef", text = "";
    for (var i = 28; i >= 0; i -= 4) text += digits.charAt((n >>> i) & 15);
    return text;
}
function dump(base, count) {
    var text = "";
    for (var i = 0; i < count; i++) {
        if (i % 8 == 0) text += hex(base + i) + ": ";
        text += hex((i * 2654435) & 0xFFFF).substring(4, 8) + (i % 8 == 7 ? "\n" : " ");
    }
    return text;
}
var total = 0;
for (var round = 0; round < 40; round++) {
    var t = dump(round * 16, 256);
    total += t.length + t.charCodeAt(round * 3) + t.indexOf("beef");
}
print("strings " + total);
