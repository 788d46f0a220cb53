"""Programs that are served: their console on pipes and on a terminal, and every way out of a run."""
import signal
import subprocess
import termios

from harness import BIN, EXAMPLES, SOURCE, SessionTest, main
from terminal import WAIT, Terminal


def example(name):
    return ("-target", "sim", "-solution", EXAMPLES / name / f"{name}.kvp", "-project", name, "-config", "Debug",
            "-quiet")


class Serve(SessionTest):
    def assemble(self, name, text):
        self.write(name + ".s", text)
        self.expect(self.run_program("kvas", "--lib", EXAMPLES / "lib", "-o", name + ".kvx",
                                     EXAMPLES / "lib" / "crt.s", name + ".s"), 0, err="")
        return (*example("hello"), name + ".kvx")

    def test_arguments_output_and_status(self):
        result = self.qburn(*example("hello"), "-serve", "one", "two words")
        self.expect(result, 3, err="", out="Hello, world.\nargument 0: \nargument 1: one\nargument 2: two words\n")

    def test_entry_point(self):
        # A symbol, a number, and one that is not there; without any, nothing runs.
        plain = ("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first", "-config",
                 "Debug", "-quiet", BIN.parent / "examples" / "hello" / "hello.kvx")
        for entry in ("start", "0x0", "0", "00"):
            self.expect(self.qburn(*plain, "-entry", entry, "-serve"), 1, err="",
                        out=["Hello, world.\n", "argument 0"])
        self.expect(self.qburn(*plain, "-entry", "nowhere", "-serve"), 1, out=["Hello, world.\n"],
                    err="warning: entry point symbol nowhere not found\n")
        self.expect(self.qburn(*plain, "-serve"), 0, out="", err=["no entry point (use -entry)"])
        self.expect(self.qburn(*plain, "-entry", "12x", "-serve"), 0, out="", err=["invalid entry point 12x"])

    def test_lines_from_a_pipe(self):
        result = self.qburn(*example("echo"), "-serve", stdin="first\r\nzwölf\n\nnever\n".encode())
        self.expect(result, 2, out="1: first\n2: zwölf\n", err="")
        # The last line needs no newline; a long one is not torn.
        long = "x" * 900
        result = self.qburn(*example("calc"), "-serve", stdin=b"2 * 3\nend")
        self.expect(result, 1, err="", out=["= 6 0x00000006 06\n"])
        result = self.qburn(*example("echo"), "-serve", stdin=(long + "\n").encode() * 2000 + b"\n")
        self.expect(result, 2000 % 256, err="")
        self.assertEqual(result.out.splitlines()[-1], "2000: " + long)

    def test_files_and_formats(self):
        self.expect(self.qburn(*example("files"), "-serve"), 0, err="", out=["all steps passed\n"])
        self.assertEqual([p.name for p in self.folder.iterdir()], ["home"])

    def test_every_format(self):
        lines = ("-255", "377", "beef", "4000000000", "0x8000", "-2", "5", "-1234567890123", "@", "word", "50%",
                 "3.25", "-1e-3", "0.1", "-2.5e10", "line éa")
        result = self.qburn(*example("calc"), "-serve", "formats", stdin="\n".join(lines).encode())
        # What a C library prints for the same.
        self.expect(result, 16, err="", out="""\
-255 -255 4294967041 ffffff01 FFFFFF01 37777777401
0377 0xff 000000ff 255   | +255
beef  48879 48,879 0000BEEF      48879|
4000000000 4000000000 -294967296 4000000000
0x8000
-2 65534 -2 254
<    5> <5    >
-1234567890123 18446742839141661493 fffffee08e04fb35
<@> <  @> <@  >
<word> <wo> <    word> <word    >
50 50 50 32 32 62
3.250000 3.250000e+00 3.25
-0.001 -1.000000E-03 -0.001
0.100000 1.000000e-01 0.1
-24999999488.000 -2.500000E+10 -2.5E+10
<éa> <é> <     éa> <éa     >
éa%
3 printed, 8 read
""")

    def test_single_keys(self):
        result = self.qburn(*example("echo"), "-serve", "keys", stdin="aé\n q".encode())
        self.expect(result, 5, err="", out="<97><195><169><10><32>")
        terminal = Terminal(self, *example("echo"), "-serve", "keys")
        terminal.wait_raw()
        for key in "ab c":
            terminal.type(key)
            terminal.read_until(f"<{ord(key)}>")
        terminal.type("q")
        self.assertEqual(terminal.finish(), (4, ""))

    def test_hostile_program(self):
        """Each request gets an answer, and the program lives on to the end of its list."""
        names = {"NOWHERE": 0x7FFFFFF0, "HUGE": 0xFFFFFFFF, "END": 0xFFFC}
        requests = [(operation, handle, "text", "text", "text")
                    for operation in (7, 8, 17, 36, 37, 38, 39, 40, 41, 74, 75) for handle in (-1, 200, "HUGE", 199)]
        requests += [(operation, "NOWHERE", "HUGE", "HUGE", 3) for operation in range(1, 46) if operation != 42]
        requests += [(operation, "NOWHERE", "HUGE", "HUGE", 3) for operation in range(47, 121) if operation != 83]
        requests += [(operation, 0, 0, 0, 0) for operation in (121, 300, 0x7FFF, 0x8000)]
        requests += [(33, "text", "HUGE", "HUGE", 0), (34, "text", "HUGE", "HUGE", 1), (18, "END", "HUGE", 0, 0),
                     (6, "text", "text", 0, 0), (84, "END", "HUGE", 0, 0), (82, "text", "END", 4, 0),
                     (48, 0, 0, 0, 0), (20, "unended", 1, 0, 0), (24, "unended", 0, 0, 0)]
        requests += [(10, name, "NOWHERE", "NOWHERE", "HUGE") for name in ("wide", "exact", "ended", "count", "string")]
        requests += [(14, name, "NOWHERE", "NOWHERE", "HUGE") for name in ("string", "count")]
        rows = "\n".join("        DL " + ", ".join(str(field) for field in row) for row in requests)
        arguments = self.assemble("hostile", "".join(f"{n} = {v}\n" for n, v in names.items()) + f"""
        .LIBRARY console
        .PUBLIC main
        .CODE
        .FUNC main
        MOVE    A[4], #rows
.next:  MOVE    DP[0], A[4]
        MOVE    A[1], @DP[0].L++
        MOVE    A[0], A[1]
        JUMP    Z, .files
        MOVE    A[5], DP[0]
        MOVE    A[0], A[5]
        ADD     #16
        MOVE    A[4], A[0]
        MOVE    A[6], A[1]
        MOVE    A[0], A[5]              ; the row as a block, and its first field as an argument
        CALL    hostCall
        MOVE    DP[0], A[5]
        MOVE    A[0], @DP[0].L
        MOVE    A[1], A[6]
        CALL    hostCall
        JUMP    .next
.files: MOVE    A[4], #250              ; more files than there are
.open:  MOVE    A[1], #80
        CALL    hostCall
        MOVE    A[0], A[4]
        SUB     #1
        MOVE    A[4], A[0]
        JUMP    NZ, .open
        MOVE    A[0], #alive
        CALL    puts
        MOVE    A[0], #11
        RET
        .ENDFUNC
        .DATA
alive:  .ASCIZ  "alive"
text:   .ASCIZ  "text"
wide:   .ASCIZ  "%999999999d%-999999999s%0999999999x"
exact:  .ASCIZ  "%.999999999f%.2147483647d%.99999999999s"
ended:  .ASCIZ  "%"
count:  .ASCIZ  "%n%lln%hhn%s%n"
string: .ASCIZ  "%s%s%s"
        .ALIGN  4
rows:
{rows}
        DL      0
unended:
        .FILL   5000, 120
""")
        result = self.qburn(*arguments, "-serve", stdin=b"one\ntwo\n1\n" * 200)
        self.assertEqual(result.status, 11, result)
        self.assertTrue(result.out.endswith("alive\n"), result)
        self.assertLess(len(result.err.splitlines()), 150)
        self.assertNotIn("error: ", result.err)

    def test_reader_that_goes_away(self):
        arguments = self.assemble("endless", """
        .LIBRARY console
        .PUBLIC main
        .CODE
        .FUNC main
.next:  MOVE    A[0], #line
        CALL    puts
        JUMP    .next
        .ENDFUNC
        .DATA
line:   .ASCIZ "again and again"
""")
        process = subprocess.Popen([BIN / "qburn", *arguments, "-serve"], cwd=self.folder, env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual(process.stdout.readline(), b"again and again\n")
        process.stdout.close()
        self.assertEqual((process.wait(WAIT), process.stderr.read()), (141, b""))
        process.stderr.close()
        with open("/dev/full", "w") as full:
            result = self.qburn(*arguments, "-serve", stdout=full)
        self.expect(result, 1, err=["error: cannot write to standard output: "])

    def test_line_editor(self):
        terminal = Terminal(self, *example("echo"), "-serve")
        terminal.wait_raw()
        keys = {
            "wold\x1b[D\x1b[Dr\n": "world",             # left, insert
            "ab\x1b[H0\x1b[F9\n": "0ab9",               # home, end
            "\x1bOA\x1b[A\n": "world",                  # up twice
            "xyz\x1b[D\x1b[D\x1b[3~\n": "xz",           # delete
            "grüß\x7f\x7fn\n": "grn",                   # backspace takes a whole character
            "ne\x1b[Dai\u00e9\x1b[D\x1b[D\x1b[C\u20ac\n": "nai€ée",
            "gone\x15kept\n": "kept",                   # the terminal's kill key
            "p" * 800 + "\x1b[200~" + "q" * 200 + "\x1b[201~\x08\n": "p" * 800 + "q" * 199,
            "\x04on\n": "on",                           # no end of input for a program
        }
        for number, (typed, line) in enumerate(keys.items(), 1):
            terminal.type(typed)
            terminal.read_until(f"{number}: {line}\r\n")
        self.assertTrue(terminal.raw())
        terminal.type("\n")
        self.assertEqual(terminal.finish(), (len(keys), ""))
        self.assertEqual(termios.tcgetattr(terminal.follower), terminal.before)

    def test_every_way_out_restores_the_terminal(self):
        cases = {
            "Ctrl-C": (lambda t: t.type("\x03"), 130, "interrupted\n"),
            "SIGTERM": (lambda t: t.process.terminate(), 130, "interrupted\n"),
            "SIGHUP": (lambda t: t.process.send_signal(signal.SIGHUP), 130, "interrupted\n"),
            "SIGQUIT": (lambda t: t.type("\x1c"), -signal.SIGQUIT, ""),
        }
        for name, (leave, status, told) in cases.items():
            with self.subTest(name):
                terminal = Terminal(self, *example("echo"), "-serve")
                terminal.type("one\n")
                terminal.read_until("1: one")
                terminal.wait_raw()
                leave(terminal)
                self.assertEqual(terminal.finish(), (status, told))
                self.assertEqual(termios.tcgetattr(terminal.follower), terminal.before)

    def test_stop_and_continue(self):
        terminal = Terminal(self, *example("echo"), "-serve", shell=True)
        terminal.type("one\n")
        terminal.read_until("1: one")
        terminal.wait_raw()
        terminal.type("\x1a")
        terminal.read_until("[stopped, cooked]")
        self.assertFalse(terminal.raw())
        terminal.process.send_signal(signal.SIGUSR1)  # fg
        terminal.wait_raw()
        terminal.type("two\n\n")
        terminal.read_until("2: two")
        self.assertEqual(terminal.finish(), (2, ""))
        self.assertEqual(termios.tcgetattr(terminal.follower), terminal.before)

    def test_interrupt_ends_a_program_that_computes(self):
        process = subprocess.Popen([BIN / "qburn", *self.assemble("busy", """
        .LIBRARY console
        .PUBLIC main
        .CODE
        .FUNC main
        MOVE    A[0], #line
        CALL    puts
.loop:  JUMP    .loop
        .ENDFUNC
        .DATA
line:   .ASCIZ "busy"
"""), "-serve"], cwd=self.folder, env=self.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        self.assertEqual(process.stdout.readline(), b"busy\n")
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(WAIT), 130)
        self.assertEqual(process.communicate()[1], b"interrupted\n")


if __name__ == "__main__":
    main()
