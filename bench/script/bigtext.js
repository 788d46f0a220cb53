// Texts that are built in a loop, looked at on the way, and thrown away.
function line(n) { return "line " + n + ": " + (n * 7 & 1023) + " of " + (n & 31) + ";"; }
function run(rounds) {
    var total = 0;
    for (var r = 0; r < rounds; r++) {
        var text = "";
        for (var i = 0; i < 400; i++) { text += line(i + r); if (text.charAt(text.length - 1) == ";") total++; }
        total += text.length + text.indexOf("of 31");
    }
    return total;
}
print("bigtext " + run(120));
