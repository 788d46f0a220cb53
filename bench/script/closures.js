// Closures that share and change what they captured.
function counter(start) {
    var n = start;
    return function(step) { n += step; return n; };
}
function compose(f, g) { return function(x) { return f(g(x)); }; }
function twice(x) { return x * 2; }
function inc(x) { return x + 1; }
function run() {
    var a = counter(0), b = counter(100), both = compose(twice, inc), total = 0;
    for (var i = 0; i < 200000; i++) {
        total = (total + a(1) + b(2) + both(i)) % 1000003;
        if (i % 100 == 0) a = counter(i);
    }
    return total;
}
print("closures " + run());
