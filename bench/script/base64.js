// Text to code and back, unit by unit.
var alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/", reverse = {};
for (var i = 0; i < 64; i++) reverse[alphabet.charAt(i)] = i;
function encode(s) {
    var out = "";
    for (var i = 0; i + 2 < s.length; i += 3) {
        var n = s.charCodeAt(i) << 16 | s.charCodeAt(i + 1) << 8 | s.charCodeAt(i + 2);
        out += alphabet.charAt(n >> 18) + alphabet.charAt(n >> 12 & 63) + alphabet.charAt(n >> 6 & 63) + alphabet.charAt(n & 63);
    }
    return out;
}
function decode(s) {
    var out = "";
    for (var i = 0; i < s.length; i += 4) {
        var n = reverse[s.charAt(i)] << 18 | reverse[s.charAt(i + 1)] << 12 | reverse[s.charAt(i + 2)] << 6 | reverse[s.charAt(i + 3)];
        out += String.fromCharCode(n >> 16, n >> 8 & 255, n & 255);
    }
    return out;
}
var text = "", total = 0;
for (i = 0; i < 900; i++) text += String.fromCharCode(32 + i * 7 % 90);
for (var r = 0; r < 25; r++) total += decode(encode(text)) == text ? 1 : 0;
print("base64 " + total + " " + encode(text).substring(10, 20));
