// A walk through the program with the debugger. Begin with "-break main"; the texts are the same on the simulator
// and on a board, which has four breakpoints for code and two for data.

var folder = "";

function heading(text) { Debug.echo("== " + text); }

// Lets the program go on, and tells which breakpoint has stopped it; temporary ones have no number.
function run(what) {
    Debug.go();
    Debug.echo(what + ": breakpoint " + Debug.wait(10000));
}

function step(how, times) {
    for (var i = 0; i < times; i++) {
        how == "into" ? Debug.stepinto() : how == "over" ? Debug.stepover() : Debug.stepout();
        Debug.wait(10000);
    }
}

function print(expressions) {
    for (var i = 0; i < expressions.length; i++)
        Debug.print(expressions[i]);
}

heading("the program stops at main");
Debug.wait(10000);
var file = Debug.getfilename();
folder = file.substring(0, file.lastIndexOf("/") + 1);
Debug.list(1, 3);

heading("breakpoints on lines and functions");
var counted = Debug.breakexpr("square", false, 3);      // stops at its third hit
var line = Debug.breakline(folder + "main.s", 53);
Debug.breakline(folder + "main.s", 44, true);           // temporary, and without a number
Debug.breakline(folder + "main.s", 49, false, 1, false); // not enabled
Debug.showbreak(0);
run("temporary");
run("line");
run("line again");
run("third call of square");
Debug.printlocals();
Debug.where();
Debug.deletebreak(0);

heading("breakpoints on data");
var flags = Debug.breakexpr("(flags & 0x0F) == 4");
var element = Debug.breakexpr("table[4] == 16");
run("flags");
Debug.print("flags");
run("element");
Debug.print("table");
Debug.deletebreak(flags);
Debug.deletebreak(element);

heading("out of functions and over calls");
step("out", 1);
step("over", 1);
Debug.print("*root");
Debug.print("root->name");

heading("recursion");
var weigh = Debug.breakexpr("weigh", false, 3);
run("third call of weigh");
step("over", 3);
Debug.where();
Debug.printlocals();
for (var frame = 1; frame < 4; frame++) {
    Debug.locate(frame);
    Debug.printlocals();
}
Debug.locate(0);
Debug.deletebreak(weigh);
step("into", 4);                // a conditional jump
step("out", 1);
step("over", 8);                // the other half of the tree, in one step

heading("what values look like");
var formats = ["b", "c", "d", "i", "o", "p", "u", "x"];
for (var i = 0; i < formats.length; i++)
    Debug.print("parts[2].number", formats[i]);
Debug.print("ratio", "e");
Debug.print("ratio", "f");
Debug.print("precise", "g");
Debug.print("names[1]", "s");
Debug.print("motto", "c");
print(["parts[0]", "parts[1].kind", "parts[1].painted", "parts[1].level", "&parts[3]", "parts[3].left",
       "root->left->number + 1", "sizeof(parts)", "table[2] << 4", "names", "primes",
       "(short)-1", "total >= 0"]);
Debug.setprintradix(10);
Debug.setprintarray(3);
print(["table", "primes", "@SP", "@A[4]"]);
Debug.setprintarray(32);
Debug.printglobals();
Debug.setprintradix(16);

heading("values that the debugger sets");
print(["table[0] = 99", "parts[4].painted = 0", "parts[4]", "ratio = 2.5", "names[0] = names[1]"]);
Debug.echo("the heaviest part weighs " + Debug.evaluate("parts[2]").weight);

heading("texts and constants");
var reverse = Debug.breakexpr("reverse");
run("reverse");
Debug.print("buffer", "c");
step("over", 4);                // past the call of length
step("into", 17);               // once around the loop
Debug.print("buffer", "c");
Debug.deletebreak(reverse);
var sum = Debug.breakexpr("sumPrimes");
run("sumPrimes");
step("into", 5);                // DJNZ goes back
Debug.print("left");
Debug.deletebreak(sum);

heading("five calls deep");
var subtract = Debug.breakexpr("subtract", false, 2);
run("second call of subtract");
Debug.where();
for (frame = 0; frame < 6; frame++) {
    Debug.locate(frame);
    Debug.printlocals();
}
Debug.locate(0);
Debug.deletebreak(subtract);
step("out", 1);

heading("instructions");
Debug.setmode("disassembly");
step("into", 3);
Debug.list(2, 2);
Debug.setmode("source");

heading("the program ends");
var field = Debug.breakexpr("figures.average == 12");
run("average");
Debug.print("figures");
Debug.deletebreak(0);
Debug.go();
