// Reading hex records: substring, parseInt, a sum of bytes.
function record(address, bytes) {
    var text = ":", sum = bytes.length + (address >> 8) + (address & 255);
    function hex(n, digits) { var t = n.toString(16).toUpperCase(); while (t.length < digits) t = "0" + t; return t; }
    text += hex(bytes.length, 2) + hex(address, 4) + "00";
    for (var i = 0; i < bytes.length; i++) { text += hex(bytes[i], 2); sum += bytes[i]; }
    return text + hex(-sum & 255, 2);
}
function check(text) {
    var sum = 0;
    for (var i = 1; i < text.length; i += 2) sum += parseInt(text.substring(i, i + 2), 16);
    return (sum & 255) == 0;
}
var good = 0;
for (var r = 0; r < 700; r++) {
    var bytes = [];
    for (var i = 0; i < 16; i++) bytes.push(r * i & 255);
    if (check(record(r * 16 & 0xFFFF, bytes))) good++;
}
print("records " + good);
