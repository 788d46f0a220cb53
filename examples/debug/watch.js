// What the simulator's debugger can do beyond a board's: conditions on an access, chains of breakpoints,
// exceptions, and a record of what has run. Begin with "-break main".

function run(what) {
    Debug.go();
    Debug.echo(what + ": breakpoint " + Debug.wait(10000));
}

Debug.wait(10000);

Debug.echo("== a pair: in the table, but not its first element");
var pair = Debug.breakexpr("table && !table[0]");
run("pair");
Debug.print("table");
Debug.deletebreak(pair);

Debug.echo("== what has run: the last instructions, and how often each line");
Debug.breakline("main.s", 56, true);
Debug.trace(true);
run("end of the loop");
Debug.trace(false);
Debug.showtrace(3);
Debug.showcounts();

Debug.echo("== a chain: length counts only after label");
var first = Debug.breakexpr("label");
var second = Debug.breakexpr("length");
Debug.chainbreak(first, second);
Debug.showbreak(0);
run("chain");
Debug.where();
Debug.deletebreak(0);

Debug.echo("== an inverted range: anything but the buffer");
var outside = Debug.breakexpr("!buffer");
run("outside");
Debug.deletebreak(outside);

Debug.echo("== more breakpoints than a board has");
var names = ["report", "summarise", "average", "divide", "subtract"];
for (var i = 0; i < names.length; i++)
    Debug.breakexpr(names[i]);
for (i = 0; i < names.length; i++)
    run(names[i]);
Debug.where();
Debug.deletebreak(0);

Debug.echo("== an exception");
Debug.showexceptions();
Debug.enableexception("Address outside memory range on read", true);
Debug.print("mode = 1");
run("stray read");
Debug.echo(Debug.lastexception());
Debug.printlocals();
Debug.enableexception("Address outside memory range on read", false);
Debug.go();
