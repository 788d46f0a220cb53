// Elements of arrays however they are held: side by side, with holes, and far apart.
// Sorted, since the order is that in which all scripts of the process met the names.
function keys(o) { var n = []; for (var k in o) n.push(k); n.sort(); var t = ""; for (k = 0; k < n.length; k++) t += n[k] + " "; return t; }
var a = [1, 2, 3], i; delete a[1]; print(a.length, a[1], keys(a), a.hasOwnProperty(1), a.hasOwnProperty("2"));
Array.prototype[1] = "inherited"; print(a[1], a, a.pop(), a.pop(), a.length); delete Array.prototype[1]; print(a[1], [].pop());
a = [1, undefined, 2, undefined, 3]; print(keys(a)); a.shift(); print(keys(a), a, a.length); a.shift(); print(keys(a), a.length);
a = []; a[3] = "x"; a[1] = "y"; print(a.shift(), a.shift(), a.length, keys(a), a); a.push(7); print(a.length, keys(a));
a = []; for (i = 0; i < 3000; i++) a.push(i); var sum = 0; while (a.length > 10) { sum += a.shift(); sum -= a.pop(); } print(sum, a);
a = []; a[100000] = "far"; a[5] = "near"; a[99999] = "by"; print(a.length, a.shift(), a.length, a[99999], a[99998], a[4], a.pop(), a.pop(), a.length);
a = []; for (i = 2000; i >= 0; i--) a[i] = i; print(a.length, a[0], a[1999], a[2000], a[2001]); a.length = 1500; print(a.length, a[1499], a[1500], a[1999]);
a = []; for (i = 0; i < 400; i++) a[i * 1000] = i; print(a.length, a[399000], a[1], a.slice(398999).length, a.slice(-2)); a.length = 5000; print(keys(a));
a = [1, 2, 3, 4]; for (i = 0; i < a.length; i++) if (a[i] == 2) a.length = 3; print(a); for (i in a) { delete a[2]; a[8] = 1; } print(keys(a), a.length);
a = [5, 6, 7]; var seen = ""; for (i in a) { delete a[1]; seen += i + "=" + a[i] + " "; } print(seen);
a = [1, 2]; a[4294967294] = "n"; a[4294967295] = "m"; a[2147483646] = "last"; print(a.length, a[4294967295], a[2147483646]); a.length = 0; print(keys(a), a.length);
a = []; a[2147483647] = 1; print(a.length); a["03"] = 2; a["3.0"] = 3; a[-0] = "zero"; a[1e3] = "thousand"; print(a.length, a[0], a["1000"], keys(a));
a = new Array(4294967295); print(a.length, a.pop(), a.length, a.slice(0, 2).length); a = new Array(3); a.reverse(); print(a.length, keys(a)); a[1] = 1; print(a.concat(2).length, a.reverse());
a = [3, , 1]; print(a.sort(), a.length, keys(a)); a = [3, 1]; a[5] = 2; print(a.sort(), a.length, keys(a)); a = []; a[3000] = 1; a[0] = 2; print(a.sort().length, keys(a));
a = [4, 2, 3, 1]; var calls = ""; a.sort(function(x, y) { calls += x + "" + y + " "; return x - y; }); print(a, calls);
a = [2, 1]; a.sort(function(x, y) { a.length = 0; return x - y; }); print(a.length, a[0], a[1]);
a = [1, 2, 3]; delete a.length; a.push(9); print(a.length, a[0], a.pop()); a = [1]; a.length = 1; a["length"] = 3; a.push(1); print(keys(a), a.length);
var like = { length: 3, 0: "p", 2: "r" }; like.shift = a.shift; like.slice = a.slice; like.sort = a.sort; print(like.shift(), like.length, like[0], like[1], like.slice(0).length, keys(like.sort()));
function f(x, y) { arguments[0] = 9; arguments[3] = "z"; delete arguments[1]; var t = keys(arguments); return x + t + arguments.length + arguments[1] + arguments.propertyIsEnumerable(0) + arguments[3]; } print(f(1, 2, 3));
function g() { return arguments; } a = g(1, 2); a[1] = 5; a.length = 1; print(a.length, a[0], a[1], a.callee == g, keys(a)); a = g(); print(a[0], a.length); a[0] = 1; print(keys(a));
var row = [], rows = []; for (i = 0; i < 70; i++) { row[i] = i; rows[i] = row.slice(0); } row.length = 1; print(rows[69].length, rows[69][69], rows[8][8], rows[8][9], row);
a = [0, 1, 2, 3, 4, 5]; a.x = "own"; a["1e3"] = 2; print(keys(a.slice(2)), a.reverse()[0], keys(a).length); a[2] = undefined; print(a.hasOwnProperty(2), a[2], a.reverse()); print(keys(a));
a = []; a[300] = 1; a[250] = 2; a[200] = 3; print(keys(a)); a = []; a[250] = 1; a[200] = 1; a[300] = 1; print(keys(a));
a = []; for (i = 0; i < 40; i++) { a[i] = i; if (i > 3) delete a[i - 3]; } print(keys(a), a.length); for (; i < 20000; i++) { a[i] = i; delete a[i - 3]; } print(keys(a), a.length, a[19999]);
/* expect
3 undefined 0 2  false true
inherited 1 3 inherited 1
undefined undefined
0 1 2 3 4 
1 3  undefined,2,undefined,3 4
0 2  3
undefined y 2 1  undefined,x
3 1 2 
-2249975 1495,1496,1497,1498,1499,1500,1501,1502,1503,1504
100001 undefined 100000 far by near far by 99998
2001 0 1999 2000 undefined
1500 1499 undefined undefined
399001 399 undefined 2 undefined,399
0 1000 2000 3000 4000 
1,2,3
0 1 8  9
0=5 1=undefined 2=7 
2147483647 m last
4294967294 4294967295  0
0
1001 zero thousand 0 03 1000 2147483647 3.0 
4294967295 undefined 4294967294 2
3 
2 undefined,1,undefined
1,3,undefined 3 0 1 
1,2,3,undefined,undefined,undefined 6 0 1 2 
3001 0 1 
1,2,3,4 31 21 23 41 42 43 
2 1 2
3 1 9
0 3  4
p 2 undefined r 2 0 length shift slice sort 
13 3undefinedfalsez
1 1 5 true 
undefined 0
0 
70 69 8 undefined 0
0 1 2 3  5 18
true undefined 0,1,2,undefined,4,5
0 1 1e3 2 4 5 x 
200 250 300 
200 250 300 
0 37 38 39  40
0 19997 19998 19999  20000 19999
*/
