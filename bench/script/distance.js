// Edit distance: two rows and single characters.
function distance(a, b) {
    var row = [], i, k;
    for (k = 0; k <= b.length; k++) row[k] = k;
    for (i = 1; i <= a.length; i++) {
        var diagonal = row[0];
        row[0] = i;
        for (k = 1; k <= b.length; k++) {
            var above = row[k], best = diagonal + (a.charAt(i - 1) == b.charAt(k - 1) ? 0 : 1);
            if (above + 1 < best) best = above + 1;
            if (row[k - 1] + 1 < best) best = row[k - 1] + 1;
            row[k] = best;
            diagonal = above;
        }
    }
    return row[b.length];
}
var total = 0;
for (var r = 0; r < 25; r++) total += distance("the quick brown fox jumps over the lazy dog " + r, "a lazy fox is quicker than the jumping brown dogs");
print("distance " + total);
