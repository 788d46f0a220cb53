// Bit loops on locals.
function popcount(n) {
    var count = 0;
    while (n != 0) {
        n = n & (n - 1);
        count++;
    }
    return count;
}
function shuffle(limit) {
    var x = 12345, total = 0;
    for (var i = 0; i < limit; i++) {
        x = x ^ (x << 13);
        x = x ^ (x >>> 17);
        x = x ^ (x << 5);
        total = (total + popcount(x & 0xFFFF)) | 0;
    }
    return total;
}
print("bits " + shuffle(200000));
