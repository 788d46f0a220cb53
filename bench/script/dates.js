// Reckoning with dates.
function run(n) {
    var total = 0, base = new Date(2001, 1, 3, 4, 5, 6);
    for (var i = 0; i < n; i++) {
        var d = new Date(base.getTime() + i * 7654321);
        d.setHours(i % 24);
        d.setMinutes(i % 60, i % 59);
        total = (total + d.getFullYear() + d.getMonth() * 3 + d.getDate() * 5 + d.getDay() + d.getHours() +
                 d.getMinutes() + d.getSeconds() + Math.floor((d.getTime() - base.getTime()) / 1000)) % 1000003;
    }
    return total;
}
print("dates " + run(40000));
