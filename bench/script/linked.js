// A list of linked objects, turned round and walked.
function run(n, rounds) {
    var head = null, total = 0;
    for (var i = 0; i < n; i++) head = { value: i, next: head };
    for (var r = 0; r < rounds; r++) {
        var back = null;
        while (head) { var next = head.next; head.next = back; back = head; head = next; }
        head = back;
        for (var at = head; at; at = at.next) total = (total + at.value) & 0xFFFFFF;
    }
    return total;
}
print("linked " + run(3000, 60));
