// Calls and recursion.
function fib(n) { return n < 2 ? n : fib(n - 1) + fib(n - 2); }
function ack(m, n) {
    if (m == 0) return n + 1;
    if (n == 0) return ack(m - 1, 1);
    return ack(m - 1, ack(m, n - 1));
}
var total = 0;
for (var i = 0; i < 60; i++) total += ack(2, 9);
print("fib " + fib(27) + " " + total);
