// Counting words in a table.
function run(rounds) {
    var text = "to be or not to be that is the question whether tis nobler in the mind to suffer the slings and arrows of fortune";
    var counts = {}, words = text.split(" "), total = 0;
    for (var r = 0; r < rounds; r++)
        for (var i = 0; i < words.length; i++) {
            var w = words[i];
            if (counts[w]) counts[w]++; else counts[w] = 1;
        }
    for (w in counts) total += counts[w] * w.length;
    return total;
}
print("words " + run(6000));
