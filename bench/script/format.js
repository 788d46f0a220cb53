// Numbers to text in several forms, and back.
function run(n) {
    var total = 0;
    for (var i = 0; i < n; i++) {
        var hex = (i * 2654435761 % 4294967296).toString(16), fixed = (i / 8).toFixed(3), plain = "" + i * 77777;
        total += hex.length + fixed.length + plain.length + parseInt(hex, 16) % 7 + parseFloat(fixed) + Number(plain) % 5;
    }
    return Math.floor(total);
}
print("format " + run(40000));
