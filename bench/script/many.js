// Thousands of functions that call each other: a text is compiled first.
var source = "";
for (var i = 0; i < 2000; i++) source += "function f" + i + "(n) { return n < 1 ? " + i + " : f" + (i * 7 + 1) % 2000 + "(n - 1) + 1; }\n";
eval(source);
var total = 0;
for (i = 0; i < 3000; i++) total = (total + f7(i % 50) + f1999(20)) % 1000003;
print("many " + total);
