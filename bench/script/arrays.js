// Arrays of tens of elements: filling, sorting by hand, searching, summing.
function fill(a, n, seed) {
    for (var i = 0; i < n; i++) { seed = (seed * 1103 + 12345) % 65536; a[i] = seed; }
    return seed;
}
function insertion(a, n) {
    for (var i = 1; i < n; i++) {
        var v = a[i], j = i - 1;
        while (j >= 0 && a[j] > v) { a[j + 1] = a[j]; j--; }
        a[j + 1] = v;
    }
}
function search(a, n, v) {
    var lo = 0, hi = n - 1;
    while (lo <= hi) {
        var mid = (lo + hi) >> 1;
        if (a[mid] == v) return mid;
        if (a[mid] < v) lo = mid + 1; else hi = mid - 1;
    }
    return -1;
}
function run() {
    var seed = 1, total = 0, n = 60;
    for (var round = 0; round < 400; round++) {
        var a = [];
        seed = fill(a, n, seed);
        insertion(a, n);
        for (var i = 0; i < n; i++) total += search(a, n, a[i]);
        total += a.length;
    }
    return total;
}
print("arrays " + run());
