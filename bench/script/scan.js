// Reading strings character by character.
function words(text) {
    var count = 0, inside = false, sum = 0;
    for (var i = 0; i < text.length; i++) {
        var c = text.charCodeAt(i);
        sum = (sum * 31 + c) % 65521;
        if (c == 32) inside = false;
        else if (!inside) { inside = true; count++; }
    }
    return count * 100000 + sum;
}
var text = "the quick brown fox jumps over the lazy dog ", all = "";
for (var k = 0; k < 20; k++) all += text + k + " ";
var total = 0;
for (var round = 0; round < 250; round++) total = (total + words(all)) % 1000003;
print("scan " + total);
