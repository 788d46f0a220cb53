// Floating-point arithmetic and Math.
function mandel(size) {
    var inside = 0;
    for (var py = 0; py < size; py++)
        for (var px = 0; px < size; px++) {
            var x0 = px / size * 3 - 2, y0 = py / size * 2 - 1, x = 0, y = 0, i = 0;
            while (x * x + y * y <= 4 && i < 50) { var t = x * x - y * y + x0; y = 2 * x * y + y0; x = t; i++; }
            if (i == 50) inside++;
        }
    return inside;
}
function waves(n) {
    var total = 0;
    for (var i = 0; i < n; i++)
        total += Math.floor(Math.abs(Math.sin(i) * 1000)) + Math.max(i & 7, 3) + Math.sqrt(i & 255);
    return Math.round(total);
}
print("math " + mandel(110) + " " + waves(150000));
