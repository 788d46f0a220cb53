// Cutting texts to pieces and putting them together.
function run(rounds) {
    var total = 0, record = "addr=1234,size=16,name=timer0,mode=rw,reset=0,irq=7,clock=8000000";
    for (var r = 0; r < rounds; r++) {
        var fields = (record + ",seq=" + r).split(","), values = [];
        for (var i = 0; i < fields.length; i++) {
            var pair = fields[i].split("=");
            values.push(pair[1]);
            total += pair[0].length;
        }
        total += values.toString().length;
    }
    return total;
}
print("splitting " + run(8000));
