// Arrays and their members.
var a = [3, 1, 2];
print(a, a.length, [1, , 2].length, [1, 2, ].length, [, ].length, [].length, [[1, 2], [3]]);
print(a.push(9, 8), a, a.pop(), a.shift(), a, a.reverse(), a.slice(1), a.slice(-1), a.slice(0, -1), a.slice(5));
print([].pop(), [].shift(), new Array(3).length, new Array(2), new Array("3"), Array(1, 2));
a = []; a[5] = 1; print(a.length, a[0]); a.length = 2; print(a.length, a[5]);
a = [1, 2, 3]; a.length = 1; print(a[1], a[2], a); a[2] = 5; print(a);
a["length"] = "2"; print(a.length, a[2]); a.length = a.length; print(a.length);
print([3, 1, 2].sort(), [10, 9, 1].sort(), [3, 10, 2].sort(function(x, y) { return x - y; }));
var holes = [3, undefined, 1, undefined, 2]; holes.sort(); print(holes[0], holes[1], holes[2], holes[3], holes[4], holes.length);
var big = []; for (var i = 0; i < 500; i++) big[i] = (i * 7919) % 503; big.sort(function(x, y) { return x - y; });
var ok = true; for (i = 1; i < 500; i++) if (big[i - 1] > big[i]) ok = false; print(ok, big.length, big[0], big[499]);
print([1, 2].concat(3, [4, [5]]), [1, undefined, 3].concat([undefined, 4]).length, [1].concat());
print([1, null, undefined, "x"].toString(), [null].toString() == "", [[], []].toString());
a = [1, 2, 3]; delete a[1]; print(a, a.length, a[1]); a.reverse(); print(a);
var like = { length: 2, 0: "x", 1: "y" }; like.pop = a.pop; like.push = a.push; like.reverse = a.reverse;
print(like.pop(), like.length, like.push("z", "w"), like[2], like.reverse()[0]);
a = []; a["01"] = 1; a["-1"] = 2; a[1.5] = 3; a["4294967295"] = 4; print(a.length, a["01"], a[-1], a[1.5]); a["7"] = 1; print(a.length);
a = [1, 2, 3]; a[0]++; a[1] += 5; a[2] = a[0] + a[1]; print(a); i = 1; a[i++] = i; print(a, i);
a = []; for (i = 0; i < 300; i++) a[i] = i * i; print(a.length, a[299], a[a.length - 1], a[300]);
a = new Array(4); a[3] = 1; a[0] = 2; print(a, a.length); a = [1]; a[70000] = 2; print(a.length, a[70000]); a.length = 0; print(a.length, a[0], a[70000]);
delete a.length; print(a.length); a[0] = 1; print(a.length); a.length = 0; print(a[0]);
print(typeof [].join, typeof [].splice, typeof [].unshift, [1, 2] == "1,2", [].toLocaleString());
a = [5, 4]; for (i in a) a[i] *= 2; print(a); a = [1, 2, 3, 4, 5]; print(a.slice(1, 3), a.slice(3, 1), [, 1].slice(0).length);
var seen = ""; [2, 1].sort(function() { seen += this.length; return 0; }); print(seen);
big = new Array(4294967295); print(big.length, big.push(1), big.length); print(new Array(4294967295).slice(-1).length);
/* expect
3,1,2 3 3 2 1 0 1,2,3
5 9,2,1 8 3 9,2,1 9,2,1 2,1 1 9,2 
undefined undefined 3 undefined,undefined 3 1,2
6 undefined
2 undefined
undefined undefined 1
1,undefined,5
2 undefined
2
1,2,3 1,10,9 2,3,10
1 2 3 undefined undefined 5
true 500 0 502
1,2,3,4,5 3 1
1,,undefined,x true ,
1,undefined,3 3 undefined
3,undefined,1
y 1 3 w w
0 1 2 3
8
2,7,9
2,1,9 2
300 89401 89401 undefined
2,undefined,undefined,1 4
70001 2
0 undefined undefined
0
1
undefined
undefined undefined undefined true 
10,8
2,3  2
2
4294967295 4294967296 0
1
*/
