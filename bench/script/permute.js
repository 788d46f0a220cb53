// Permutations by swapping: recursion over an array.
var count = 0, sum = 0;
function permute(a, k) {
    if (k == a.length) { count++; sum = (sum + a[0] * a[k - 1]) % 1000003; return; }
    for (var i = k; i < a.length; i++) {
        var t = a[k]; a[k] = a[i]; a[i] = t;
        permute(a, k + 1);
        t = a[k]; a[k] = a[i]; a[i] = t;
    }
}
permute([1, 2, 3, 4, 5, 6, 7, 8], 0);
print("permute " + count + " " + sum);
