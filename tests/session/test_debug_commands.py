"""The commands of a debug session, on a program with variables of many kinds that runs on the simulator."""
from harness import EXAMPLES, SessionTest, main
from terminal import Terminal

PROGRAM = """\
        .LIBRARY console
        .PUBLIC main, twice, count, table, origin
        .TYPE   int, INT(4)
        .TYPE   char, CHAR(1)
        .STRUCT point
        .FIELD  x, INT(2)
        .FIELD  y, INT(2)
        .FIELD  shown, UNSIGNED(1), 32, 1
        .FIELD  level, UNSIGNED(1), 33, 3
        .ENDSTRUCT
        .CODE
        .FUNC   main
        .LOCAL  index, int, A[4]
        PUSH    A[4]
        .ADJUST -4
        MOVE    A[4], #0
.next:  MOVE    A[0], A[4]
        CALL    twice
        MOVE    DP[0], #count
        MOVE    @DP[0].L, A[0]
        MOVE    A[0], A[4]
        ADD     #1
        MOVE    A[4], A[0]
        CMP     #5
        JUMP    NE, .next
        POP     A[4]
        .ADJUST 0
        MOVE    A[0], #7
        RET
        .ENDFUNC
        .FUNC   twice
        .PARAM  number, int, A[1]
        MOVE    A[1], A[0]
        ADD     A[1]
        RET
        .ENDFUNC
        .DATA
count:  DL      0
        .VAR    count, int
table:  DL      1, 2, 3, 4
        .VAR    table, ARRAY(int, 4)
origin: DW      3, -4
        DB      11, 0, 0, 0
        .VAR    origin, STRUCT point
real:   .FLOAT  2.5
        .VAR    real, FLOAT(4)
text:   .ASCIZ  "hey"
        .VAR    text, ARRAY(char, 4)
name:   DL      text
        .VAR    name, PTR(char)
lost:   DL      0x7000000
        .VAR    lost, PTR(char)
"""


def line(text):
    """The number of the first line that holds a text."""
    return next(i for i, row in enumerate(PROGRAM.splitlines(), 1) if text in row)


class Commands(SessionTest):
    def setUp(self):
        super().setUp()
        self.source = self.write("program.s", PROGRAM)
        self.expect(self.run_program("kvas", "--lib", EXAMPLES / "lib", "-o", "program.kvx",
                                     EXAMPLES / "lib" / "crt.s", "program.s"), 0, err="")
        self.arguments = ("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first",
                          "-config", "Debug", "-quiet", "-debug", "-entry", "start", "program.kvx")

    def debug(self, script, *arguments):
        self.write("script.js", script)
        return self.qburn(*self.arguments, "-script", "script.js", *arguments)

    def says(self, script, expected):
        """Runs a script from main on and compares what it shows."""
        result = self.debug("Debug.wait(10000);" + script + "; Debug.quit()", "-break", "main")
        lines = result.out.splitlines()
        self.assertEqual(lines[:1], [f"{line('PUSH')}:\t        PUSH    A[4]"], result)
        self.assertEqual(lines[1:], expected, result)
        self.assertEqual((result.status, result.err), (0, ""), result)

    def fails(self, script, message):
        result = self.debug("Debug.wait(10000);" + script, "-break", "main")
        self.assertEqual((result.status, result.err), (1, f"error: {message}\n\n"), result)

    def test_values_in_every_format(self):
        self.says("""
            Debug.print("table"); Debug.print("table[2]", "d"); Debug.print("origin", "d");
            Debug.print("real"); Debug.print("real", "f"); Debug.print("real", "e"); Debug.print("name");
            Debug.print("lost"); Debug.print("origin.level", "b"); Debug.print("origin.y", "u");
            Debug.print("text[1]", "c"); Debug.print("table[1]", "o"); Debug.print("1 + 2", "?");
            Debug.print("&table[1]"); Debug.print("*((int*)0x7000000)"); Debug.print("count == 0");
            Debug.setprintradix(10); Debug.setprintarray(2); Debug.setprintstring(false);
            Debug.print("table"); Debug.print("text"); Debug.print("name", "s"); Debug.print("name", "x")""",
                  ["table=[0x00000001, 0x00000002, 0x00000003, 0x00000004]", "table[2]=3",
                   "origin={x=3, y=-4, shown=1, level=5}", "real=0x40200000", "real=2.500000", "real=2.500000e+00",
                   "name=hey", "lost=???", "origin.level=0b101", "origin.y=65532", "text[1]=e",
                   "table[1]=000000000002", "1 + 2=0x0000000000000003", f"&table[1]=0x{self.address('table') + 4:08x}",
                   "*((int*)0x7000000)=???", "count == 0=true", "table=[1, 2,...]", "text=[104, 101,...]", "name=hey",
                   f"name=0x{self.address('text'):08x}"])

    def address(self, symbol):
        result = self.run_program("kvas", "--dump", "program.kvx")
        row = next(row for row in result.out.splitlines() if f" {symbol} " in f" {row} " and "0x" in row)
        return int(next(word for word in row.replace(",", " ").split() if word.startswith("0x")), 16)

    def test_scripts_get_real_values(self):
        self.says("""
            function all(list) { var s = ""; for (var i = 0; i < list.length; i++) s += list[i] + " "; return s; }
            function value(expression) { return Debug.evaluate(expression); }
            var o = value("origin");
            Debug.echo(o.x + o.y + " " + o.level + " " + typeof value("count"));
            Debug.echo(all(value("table")) + value("table").length);
            Debug.echo(value("text") + value("name") + value("real"));
            Debug.echo(value("count == 0") + " " + value("") + " " + Debug.getlinenumber());
            Debug.set("table[0]", 10); Debug.set("origin.level", 3); Debug.set("real", 1.5);
            Debug.set("@A[4]", "table[3]");
            Debug.echo(all([value("table[0]"), value("origin.level"), value("real"), value("@A[4]"),
                            value("table[1] = 5") + value("table[1]")]));
            Debug.assert(value("table[0]") == 10, "written")""",
                  ["-1 5 number", "1 2 3 4 4", "heyhey2.5", f"true undefined {line('PUSH')}", "10 3 1.5 4 10 "])

    def test_breakpoints_of_every_kind(self):
        n = line("MOVE    @DP[0].L, A[0]")
        add = line("ADD     A[1]")
        here, behind, there = (f"{i}:\t{PROGRAM.splitlines()[i - 1]}" for i in (n, n + 1, add))
        self.says(f"""
            function run() {{ Debug.go(); return Debug.wait(10000); }}
            var first = Debug.breakline("program.s", {n}, false, 2);
            Debug.echo(first + " " + Debug.breakline("program.s", {n + 1}, true) + " " + run());
            Debug.echo(run()); Debug.print("count", "d"); Debug.deletebreak(first);
            var watch = Debug.breakexpr("count == 4"); Debug.echo(watch + " " + run()); Debug.print("count", "d");
            Debug.enablebreak(watch, false);
            var off = Debug.breakexpr("twice", false, 1, false), on = Debug.breakline("{self.source}", {add});
            var armed = Debug.breakline("program.s", {n + 1}); Debug.chainbreak(on, armed);
            Debug.showbreak(off); Debug.deletebreak(77);
            Debug.echo(run() == armed); Debug.chainbreak(0, armed); Debug.echo(run() == on);
            Debug.print("number", "d"); Debug.where(); Debug.stepout(); Debug.wait(10000);
            Debug.deletebreak(0); Debug.showbreak(0); Debug.echo(Debug.breakexpr("main"))""",
                  [behind, "1 undefined 0", here, "1", "count=0", behind, "2 2", "count=4",
                   f"3) twice 0x{self.address('twice'):x}", behind, "true", there, "true", "number=4",
                   f"0) twice(int number=0x00000004)\t{self.source}:{add}",
                   f"1) main()\t{self.source}:{line('CALL    twice')}",
                   f"2) start()\t{EXAMPLES}/lib/crt.s:{self.crt_call()}",
                   f"{line('MOVE    DP[0], #count')}:\t        MOVE    DP[0], #count", "6"])

    def crt_call(self):
        rows = (EXAMPLES / "lib" / "crt.s").read_text().splitlines()
        return next(i for i, row in enumerate(rows, 1) if "CALL" in row and "main" in row)

    def test_steps_frames_and_code(self):
        call = line("CALL    twice")
        self.says(f"""
            function step(how) {{ how(); Debug.wait(10000); }}
            for (var i = 0; i < 3; i++) step(function() {{ Debug.stepover(); }});
            step(function() {{ Debug.stepinto(); }}); Debug.locate(1); Debug.printlocals();
            Debug.locate(0); Debug.list(1, 1); Debug.setmode("disassembly"); Debug.setmode("source");
            Debug.setnext("program.s", {call - 1}); Debug.echo(Debug.getfilename())""",
                  [f"{call - 2}:\t        MOVE    A[4], #0", f"{call - 1}:\t.next:  MOVE    A[0], A[4]",
                   f"{call}:\t        CALL    twice", f"{line('MOVE    A[1], A[0]')}:\t        MOVE    A[1], A[0]",
                   f"{call}:\t        CALL    twice", "index=0x00000000",
                   f"{line('MOVE    A[1], A[0]')}:\t        MOVE    A[1], A[0]"]
                  + [f"{i}:\t{PROGRAM.splitlines()[i - 1]}" for i in range(call + 14, call + 17)]
                  + ["\t    9909                MOVE\tA[1], A[0]", f"{line('MOVE    A[1], A[0]')}:\t        MOVE    A[1], A[0]",
                     f"{call - 1}:\t.next:  MOVE    A[0], A[4]", str(self.source)])

    def test_memory_trace_and_counts(self):
        result = self.debug(f"""Debug.wait(10000); Debug.dump("table", 8); Debug.trace(true);
            Debug.breakline("program.s", {line('POP')}); Debug.go(); Debug.wait(10000);
            Debug.echo("-- trace"); Debug.showtrace(2); Debug.echo("-- counts"); Debug.showcounts(); Debug.quit()""",
                            "-break", "main")
        self.assertEqual((result.status, result.err), (0, ""), result)
        memory, rest = result.out.split("-- trace\n")
        trace, counts = rest.split("-- counts\n")
        self.assertIn("01 00 00 00 02 00 00 00", memory)
        self.assertEqual([row for row in trace.splitlines() if not row.startswith("\t")],
                         [f"program.s:{line('CMP')}\t        CMP     #5",
                          f"program.s:{line('JUMP')}\t        JUMP    NE, .next"])
        self.assertIn(f"5\tprogram.s:{line('CMP')}\t", counts)
        self.assertIn(f"1\tprogram.s:{line('PUSH')}\t", counts)

    def test_states_and_faults(self):
        for script, message in (
                ("Debug.breaknow()", "already stopped"),
                ("Debug.go(); Debug.go()", "not stopped"),
                ("Debug.print('nowhere')", "nowhere symbol not found"),
                ("Debug.print('1 +')", "expression expected"),
                ("Debug.breakline('program.s', 3)", "No code for breakpoint"),
                ("Debug.breakexpr('count == count')", "Constant required for rhs"),
                ("Debug.breakexpr('count', false, 1, true, 'Sniff')", 'unknown trigger "Sniff" (there is '),
                ("Debug.assert(1 > 2, 'order')", "assertion failed: order"),
                ("Debug.set('1 + 1', 2)", "cannot assign to 1 + 1"),
                ("Debug.set('count', 2.5)", "2.5 is no integer"),
                ("Debug.dump('table', 100000)", "100000 bytes are more than are shown at once"),
                ("Debug.enablebreak(9, true)", "no breakpoint 9"),
                ("Debug.enableexception('None', true)", 'unknown exception "None"'),
                ("Debug.setmode('colour')", 'unknown mode "colour"'),
                ("Debug.setprintradix(5)", "unknown radix 5"),
                ("Debug.setnext('program.s', 3)", "no code at program.s:3"),
                ("Debug.locateregisters([1])", "words are needed")):
            with self.subTest(script):
                result = self.debug("Debug.wait(10000);" + script, "-break", "main")
                self.assertEqual(result.status, 1, result)
                self.assertIn(message, result.err)
        result = self.debug("Debug.echo(Debug.wait(0)); Debug.exit(42)")
        self.expect(result, 42, out="0\n", err="")

    def test_short_words_and_tab_at_the_prompt(self):
        terminal = Terminal(self, *self.arguments, "-break", "main")
        terminal.read_until("PUSH")
        for typed, shown in (("p/d table[3]\r", "table[3]=4"), ("b program.s:%d\r" % line("CMP"), ""), ("c\r", "CMP"),
                             ("\r", "CMP"), ("info locals\r", "index=0x00000002"), ("p ta\t\r", "table=[0x00000001"),
                             ("Debug.print('orig\t')\r", "origin={x=0x0003"),
                             ("bt\r", "start()"), ("x/4 table\r", "01 00 00 00"),
                             ("x/2 twice\r", "09 99"), ("f 9 9\r", "usage: f [NUMBER]"),
                             ("var n = 3\r", ""), ("n\r", ""), ("Debug.echo('n is ' + n)\r", "n is 3"),
                             ("p nowhere\r", "nowhere symbol not found"), ("help\r", "Debug.breakexpr(")):
            terminal.type(typed)
            if shown:
                terminal.read_until(shown)
        terminal.type("q\r")
        self.assertEqual(terminal.finish(), (0, ""))


if __name__ == "__main__":
    main()
