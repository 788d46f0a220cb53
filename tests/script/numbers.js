// Numbers, their texts, Math and Date.
print(1 / 3, 1234567.5, 1e21, 1e-7, 123456789, -0, 0.1 + 0.2, 100, 1e300 > 1e299, 5e-324 > 0, -1e21);
print((255).toString(16), (-255).toString(16), (255).toString(2), (255).toString(1), (255).toString(37), (0.5).toString(2), (35).toString(36), (1e19).toString(16), (1e30).toString(16), (7).toString());
print(0x1F, 017, 1e3, .5, 5., 1.5e-3, 0xffffffff, 1e999, 0.1e-999);
print((1.005).toFixed(2), (5).toFixed(), (-1.5).toFixed(1), (1e21).toFixed(0), (0.5).toFixed(20), (2.345).toFixed(2), (0).toFixed(2));
print(Number("12"), Number(), Number(true), new Number(5).valueOf(), Number(undefined), Number.MAX_VALUE > 1e308, Number.MIN_VALUE > 0, Number.NaN, Number.NEGATIVE_INFINITY);
print(Math.abs(-5), 1 / Math.abs(-0), Math.ceil(1.2), Math.floor(-1.2), Math.max(), Math.min(), Math.max(1, 3, 2), Math.min(1, NaN), 1 / Math.max(-0, 0), 1 / Math.min(0, -0));
print(Math.round(2.5), Math.round(-2.5), 1 / Math.round(-0.2), 1 / Math.round(-0.5), 1 / Math.round(-0), Math.round(0.4), 1 / Math.round(0));
print(Math.pow(2, 10), Math.sqrt(16), Math.atan2(1, 1), Math.sin(0), Math.cos(0), Math.log(Math.E), Math.exp(0), Math.sqrt("9"), Math.abs("x"));
var r = Math.random(); print(r >= 0 && r < 1, Math.SQRT2, Math.LN2, Math.LOG10E, Math.PI);
var d = new Date(2000, 0, 31, 12, 30, 15, 250);
print(d, d.getFullYear(), d.getMonth(), d.getDate(), d.getDay(), d.getHours(), d.getMinutes(), d.getSeconds(), d.getMilliseconds());
print(d.toDateString(), d.toTimeString(), d.getTimezoneOffset(), d.getUTCHours(), typeof d.getTime(), d.valueOf() == d.getTime());
print(d.setMonth(12), d.getMonth(), d);
d = new Date(2000, 0, 31); d.setFullYear(2004, 1, 29); print(d); d.setHours(25); print(d.getHours()); 
d = new Date(1999, 11, 31, 23, 59, 59); d.setMinutes(5); print(d.toTimeString()); d.setSeconds(7, 500); print(d.getMilliseconds(), d.toTimeString()); d.setDate(1); print(d.toDateString());
d.setMilliseconds(NaN); print(d.getTime(), d.getDay(), d);
print(new Date("2001-02-03T04:05:06").toUTCString(), new Date("garbage").getTime(), new Date(99, 5, 1).getFullYear());
var t = new Date(2000, 0, 1).getTime(); print(new Date(t).getFullYear(), t == 2451545 * 86400000, new Date(2000, 0, 2) - new Date(2000, 0, 1), new Date(t) + 0);
print(new Date(8.64e15).getTime(), new Date(-8.65e15).getTime(), new Date(2001, 1, 29).getTime(), new Date(1e300).getFullYear());
d = new Date(0); print(d.setTime(86400000 * 2451545), d.getFullYear(), Date.length, d.setHours.length, d.setUTCMinutes.length);
print(isNaN(new Date(undefined).getTime()), new Date() > new Date(2020, 0, 1));
/* expect
0.333333 1.23457e+06 9223372036854775807 1e-07 123456789 0 0.3 100 true true -9223372036854775808
ff -ff 11111111 255 255 0.5 z 8ac7230489e80000 ffffffffffffffff 7
31 15 1000 0.5 5 0.0015 4294967295 Infinity 0
1.00 5 -1.5 1000000000000000000000 0.50000000000000000000 2.35 0.00
12 0 1 5 NaN true true NaN -Infinity
5 Infinity 2 -2 -Infinity Infinity 3 NaN Infinity -Infinity
3 -2 -Infinity -Infinity -Infinity 0 Infinity
1024 4 0.785398 0 1 1 1 3 NaN
true 1.41421 0.693147 0.434294 3.14159
Mon Jan 31 12:30:15 2000 2000 0 31 1 12 30 15 250
Mon Jan 31 2000 12:30:15 0 12 number true
NaN NaN Invalid Date
Sun Feb 29 00:00:00 2004
1
23:05:59
500 23:05:07
Wed Dec 1 1999
NaN NaN Invalid Date
Sat Feb 3 04:05:06 2001 NaN 1999
2000 true 86400000 Sat Jan 1 00:00:00 20000
8640000000000000 NaN NaN NaN
211813488000000 2000 1 4 3
true true
*/
