// The receive queue of a UART: bytes in bursts, taken out one by one.
function Uart() { this.fifo = []; this.overruns = 0; }
Uart.prototype.receive = function(byte) { if (this.fifo.length < 400) this.fifo.push(byte); else this.overruns++; };
Uart.prototype.read = function() { return this.fifo.length ? this.fifo.shift() : -1; };
function run() {
    var uart = new Uart(), total = 0, seed = 7;
    for (var burst = 0; burst < 1500; burst++) {
        seed = (seed * 1103 + 12345) % 65536;
        for (var i = 0; i < seed % 120; i++) uart.receive(i & 255);
        for (i = 0; i < 55; i++) total += uart.read();
    }
    return total * 10 + uart.overruns;
}
print("fifo " + run());
