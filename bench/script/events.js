// A priority queue of timed events, as a heap in an array.
function push(h, at, what) {
    var i = h.length;
    h.push({ at: at, what: what });
    while (i > 0) { var p = (i - 1) >> 1; if (h[p].at <= h[i].at) break; var t = h[p]; h[p] = h[i]; h[i] = t; i = p; }
}
function pop(h) {
    var top = h[0], last = h.pop(), i = 0;
    if (h.length) {
        h[0] = last;
        for (;;) {
            var c = 2 * i + 1;
            if (c >= h.length) break;
            if (c + 1 < h.length && h[c + 1].at < h[c].at) c++;
            if (h[i].at <= h[c].at) break;
            var t = h[i]; h[i] = h[c]; h[c] = t; i = c;
        }
    }
    return top;
}
function run(n) {
    var h = [], total = 0, seed = 3;
    for (var i = 0; i < n; i++) {
        seed = (seed * 1103 + 12345) % 65536;
        push(h, i + seed, i);
        if (h.length > 200) total = (total + pop(h).what) % 1000003;
    }
    return total;
}
print("events " + run(20000));
