"""A debug session as its user drives it: a script, lines from a pipe, and the keys of the prompt."""
import signal

from harness import EXAMPLES, SessionTest, main
from terminal import Terminal

ENDLESS = """        .CODE
        .PUBLIC start
start:  MOVE    A[0], #1
loop:   JUMP    loop
"""


class Debug(SessionTest):
    def setUp(self):
        super().setUp()
        self.write("endless.s", ENDLESS)
        self.expect(self.run_program("kvas", "-o", "endless.kvx", "endless.s"), 0, err="")
        # The symbol that is not there makes the program stop at its first instruction.
        self.running = ("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first",
                        "-config", "Debug", "-quiet", "-entry", "start", "-debug", "endless.kvx")
        self.stopped = (*self.running, "-break", "nowhere")

    def prompt(self, *arguments):
        terminal = Terminal(self, *arguments)
        terminal.read_until(">")
        terminal.wait_raw()
        return terminal

    # --- Without a keyboard

    def test_lines_from_a_pipe_run_in_order_and_outlive_an_error(self):
        result = self.qburn(*self.stopped, stdin=b"var x = 20\nConsole.WriteLine(x + 1)\nx(\n\nnosuch()\n"
                                                 b"Console.WriteLine('last')")
        self.assertEqual(result.status, 0, result)
        lines = result.out.splitlines()
        self.assertRegex(lines[0], r"- stopping at entry point$")
        self.assertEqual((lines[1], lines[2], lines[5]), ("3:\tstart:  MOVE    A[0], #1", "21", "last"), result)
        self.assertIn("expected an expression", lines[3])
        self.assertIn("not a function", lines[4])
        self.assertEqual(len(lines), 6, result)
        self.assertNotIn(">", result.out)

    def test_a_script_comes_before_the_lines_and_its_failure_ends_the_session(self):
        self.write("good.js", "var who = 'script'\nConsole.WriteLine(who)")
        result = self.qburn(*self.stopped, "-script", "good.js", stdin=b"Console.WriteLine(who + '!')\n")
        self.assertEqual((result.status, result.out.splitlines()[-2:]), (0, ["script", "script!"]), result)
        self.write("bad.js", "Console.WriteLine('before')\nnosuch()")
        result = self.qburn(*self.stopped, "-script", "bad.js", stdin=b"Console.WriteLine('never')\n")
        self.assertEqual((result.status, result.out.splitlines()[-1]), (1, "before"), result)
        self.assertRegex(result.err, r"(?m)^error: .*not a function")
        self.expect(self.qburn(*self.stopped, "-script", "none.js"), 1, err=['cannot open script file "'])
        # Without -debug neither has a meaning.
        result = self.qburn(*[a for a in self.stopped if a != "-debug"], "-nodownload", "-noverify",
                            "-setprop", "Peripheral Simulation=No", "-script", "none.js", "-listprops")
        self.assertNotIn("cannot open", result.err)

    def test_a_program_that_ends_gives_the_status(self):
        hello = ("-target", "sim", "-solution", EXAMPLES / "hello" / "hello.kvp", "-project", "hello", "-config",
                 "Debug", "-quiet", "-debug")
        self.expect(self.qburn(*hello), 1, err="", out="Hello, world.\nargument 0: \n")

    def test_a_signal_ends_a_session_without_a_keyboard(self):
        terminal = Terminal(self, *self.running)
        terminal.read_until(">")
        terminal.process.send_signal(signal.SIGTERM)
        status, err = terminal.finish()
        self.assertEqual((status, err), (130, "interrupted\n"))
        self.assertFalse(terminal.raw())

    # --- The prompt

    def test_typing_editing_and_history(self):
        terminal = self.prompt(*self.stopped)
        terminal.type("Console.WriteLine(6*8)\x1b[D\x08" + "7\r")
        terminal.read_until("42\r\n")
        terminal.read_until(">")
        terminal.type("\x1b[A\r")  # the line again
        terminal.read_until("42\r\n")
        terminal.type("no such\r")
        terminal.read_until("\n>")
        terminal.type("Console.WriteLine('z\u00f6')\r")
        terminal.read_until("z\u00f6\r\n")
        terminal.type("\x1b[A\x1b[A\x1b[B\x1b[B\x04")  # back to the empty line
        self.assertEqual(terminal.finish()[0], 0)

    def test_ctrl_d_ends_the_session_only_on_an_empty_line(self):
        terminal = self.prompt(*self.stopped)
        terminal.type("Console.WriteLine(1+1\x04)\r")
        terminal.read_until("2\r\n")
        terminal.type("\x04")
        self.assertEqual(terminal.finish()[0], 0)
        self.assertFalse(terminal.raw())

    def test_ctrl_c_drops_the_line(self):
        terminal = self.prompt(*self.stopped)
        terminal.type("Console.WriteLine('never")
        terminal.read_until("never")
        terminal.type("\x03")
        terminal.read_until("^C\r\n>")
        terminal.type("Console.WriteLine(10+1)\r")
        terminal.read_until("11\r\n")
        terminal.type("\x04")
        self.assertEqual(terminal.finish()[0], 0)

    def test_ctrl_c_stops_the_program_and_comes_back_to_the_prompt(self):
        terminal = self.prompt(*self.running)
        terminal.type("\x03")
        terminal.read_until("^C\r\n>")
        terminal.type("Console.WriteLine(10+1)\r")
        terminal.read_until("11\r\n")
        terminal.type("\x04")
        self.assertEqual(terminal.finish()[0], 0)

    def test_ctrl_c_stops_a_command(self):
        terminal = self.prompt(*self.stopped)
        terminal.type("Console.WriteLine('begun'); while (true);\r")
        terminal.read_until("begun\r\n")
        terminal.type("\x03")
        terminal.read_until("^C\r\n")
        terminal.type("Console.WriteLine(10+1)\r")
        terminal.read_until("11\r\n")
        terminal.type("\x04")
        self.assertEqual(terminal.finish()[0], 0)

    def test_ctrl_c_twice_within_a_second_ends_the_run(self):
        terminal = self.prompt(*self.stopped)
        terminal.type("\x03")
        terminal.read_until("^C")
        terminal.type("\x03")
        self.assertEqual(terminal.finish()[0], 130)
        self.assertFalse(terminal.raw())


if __name__ == "__main__":
    main()
