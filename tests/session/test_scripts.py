"""Target scripts and peripherals written as scripts."""
import os
import signal
import subprocess

from harness import BIN, EXAMPLES, SessionTest, main
from test_download import BOARD, COUNTER, ihex, solution


class Scripts(SessionTest):
    def setUp(self):
        super().setUp()
        self.write("board.xml", BOARD)
        self.write("a.hex", ihex(0x10, b"abcd"))

    def session(self, script, files='<file file_name="t.js"><configuration Name="Common" file_type="Target Script" />'
                "</file>", words=("-verbose",)):
        self.write("s.kvp", solution(projects=f"""<project Name="p">
            <configuration Name="Common" target_reset_script="{script}" />
            <file file_name="board.xml"><configuration Name="Common" file_type="Memory Map" /></file>{files}
            </project>"""))
        # Stopped at the first reset, so that the reset at the end starts nothing that never ends.
        return self.qburn("-target", "sim", "-solution", "s.kvp", "-project", "p", "-config", "Debug", *words, "a.hex")

    def test_reset_script_pokes_and_reports(self):
        self.write("t.js", "function f(a, v) {\n  TargetInterface.pokeByte(a, v);\n"
                           "  TargetInterface.message('now ' + TargetInterface.peekByte(a));\n"
                           "  TargetInterface.error('enough'); }\n")
        result = self.session("f(32, 0x1FF)")
        self.expect(result, 1, err="error: enough\n\n",
                    out=["Executing reset script f(32, 0x1FF)\n", "Loading target script file t.js\n", "now 255\n",
                         "error: enough\n"])

    def test_older_type_of_script_file(self):
        self.write("t.js", "function f() { TargetInterface.error('from the reset script file'); }")
        files = '<file file_name="t.js"><configuration Name="Common" file_type="Reset Script" /></file>'
        self.expect(self.session("f()", files), 1, err="error: from the reset script file\n\n")

    def test_failures_and_warnings(self):
        self.write("t.js", "var a = 1;\ntry { a = 2; } catch (e) { a = 3; }\nfunction f() {}\n")
        result = self.session("nothing()", words=())
        self.assertIn("warning: t.js:2: 'try' blocks do not run\n", result.err)
        self.assertEqual(result.err.count("warning:"), 1)
        self.assertEqual(result.status, 1)
        self.expect(self.session("1 +", words=()), 1, err=["error: "])
        self.expect(self.session("Console.WriteLine('line'); WScript.Echo('no newline'); undefinedFunction()",
                                 words=("-quiet",)), 1, out="line\nno newline")

    def run_until(self, text, *words):
        command = [str(BIN / "qburn"), *map(str, words)]
        self.commands.append(command)
        child = subprocess.Popen(command, cwd=self.folder, env=self.environment, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE)
        seen = b""
        while text not in seen:
            piece = os.read(child.stdout.fileno(), 65536)
            if not piece:
                self.fail(child.stderr.read())
            seen += piece
        child.send_signal(signal.SIGINT)
        rest, err = child.communicate(timeout=60)
        self.assertEqual((child.returncode, err), (130, b"interrupted\n"))
        return seen + rest

    def test_uart_and_timer(self):
        out = self.run_until(b"go\nttt", "-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project",
                             "first", "-config", "Debug", "-quiet", "-setprop", "Enable Peripheral File=Yes",
                             "-setprop", f"Peripheral File={EXAMPLES / 'peripherals' / 'board.js'}",
                             EXAMPLES / "peripherals" / "ticks.hex")
        self.assertTrue(out.startswith(b"go\nttt"))

    def test_uart_on_a_full_disk_ends_the_run(self):
        with open("/dev/full", "wb") as full:
            result = self.qburn("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first",
                                "-config", "Debug", "-quiet", "-setprop", "Enable Peripheral File=Yes", "-setprop",
                                f"Peripheral File={EXAMPLES / 'peripherals' / 'board.js'}",
                                EXAMPLES / "peripherals" / "ticks.hex", stdout=full)
        self.expect(result, 1, err=["error: cannot write to standard output: "])

    def test_runaway_script_ends_with_ctrl_c(self):
        self.write("t.js", "")
        self.session("undefinedFunction()")  # writes the solution
        self.write("s.kvp", (self.folder / "s.kvp").read_text().replace(
            "undefinedFunction()", "Console.WriteLine('on'); while (true);"))
        self.run_until(b"on\n", "-target", "sim", "-solution", "s.kvp", "-project", "p", "-config", "Debug", "a.hex")

    def test_peripheral_script_that_fails(self):
        self.write("p.js", "try { } finally { }\nfunction reset() { eval('try { } finally { }'); return bad.x; }")
        self.write("s.kvp", solution())
        result = self.qburn("-target", "sim", "-solution", "s.kvp", "-project", "p", "-config", "Debug", "-setprop",
                            "Enable Peripheral File=1", "-setprop", "Peripheral File=p.js", "a.hex")
        self.expect(result, 1, out="", err=["warning: p.js:1: 'try' blocks do not run\n", "error: "])
        self.assertEqual(result.err.count("warning:"), 1)


if __name__ == "__main__":
    main()
