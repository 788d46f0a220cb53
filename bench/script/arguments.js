// Functions that take what they are given.
function sum() { var t = 0; for (var i = 0; i < arguments.length; i++) t += arguments[i]; return t; }
function pick(which) { return arguments[which]; }
function outer(a, b) { return sum(a, b, arguments.length) + pick(2, a, b, 9); }
var total = 0;
for (var i = 0; i < 90000; i++) total = (total + sum(i, 2, 3, 4) + outer(i, 1)) % 1000003;
print("arguments " + total);
