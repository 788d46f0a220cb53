"""esrun, the bare script runner: what it prints and answers, and how it ends when things go wrong."""
import os
import signal
import subprocess

from harness import BIN, SessionTest, main


class Esrun(SessionTest):
    def esrun(self, *words, **options):
        return self.run_program("esrun", *words, **options)

    def test_results_and_arguments(self):
        self.write("a.js", "WScript.Echo('no newline'); var sum = 0;\n"
                           "for (var i = 0; i < WScript.Arguments.length; i++) sum += +WScript.Arguments[i];\nsum")
        self.expect(self.esrun("-p", "a.js", "1", "20"), 0, out="no newline21\n", err="")
        for text, printed in (("1 + 1", "2"), ("'ü' + '€'.length", "ü1"), ("var a", "undefined"), ("[1, [2, 3]]", "1,2,3"),
                              ("1 / 3", "0.333333"), ("-1 >>> 0", "4294967295")):
            with self.subTest(text):
                self.expect(self.esrun("-p", "-e", text), 0, out=printed + "\n", err="")
        self.expect(self.esrun("-p", "-", stdin="'from standard input: ' + 2 * 3".encode()), 0,
                    out="from standard input: 6\n", err="")
        for words in ((), ("-p",), ("-e",), ("-x", "a.js")):
            self.expect(self.esrun(*words), 1, out="", err=["usage: esrun"])

    def test_failures_are_one_line_and_status_1(self):
        self.write("late.js", "WScript.Echo('before'); nothing.at.all")
        self.expect(self.esrun("late.js"), 1, out="before", err=["error: "])
        sources = {
            "throw": "new Array(-1)",
            "syntax": "var = 3",
            "unterminated text": "'abc",
            "nul and high bytes": b"\0\xff\xfe\x80 var",
            "nested parentheses": "(" * 100_000,
            "nested functions": "function f(){" * 5_000,
            "nested blocks": "{" * 100_000,
            "endless recursion": "function f() { return f(); } f()",
            "endless conversion": "var a = []; a[0] = a; '' + a",
            "code beyond its jumps": "if (x) {" + "a = b + c * d;" * 20_000 + "}",
            "text without end": "var s = 'x'; while (true) s += s;",
            "array without end": "var a = []; for (var i = 0; i < 4e9; i += 1e8) a[i] = i; a.join()",
        }
        for name, source in sources.items():
            with self.subTest(name):
                self.write("bad.js", source)
                result = self.esrun("bad.js", timeout=100)
                self.assertEqual(result.status, 1, repr(result))
                self.assertRegex(result.err, r"\Aerror: [^\n]*\n\Z")
        self.expect(self.esrun("missing.js"), 1, out="", err='error: cannot open script file "missing.js"\n')
        self.expect(self.esrun("."), 1, out="", err='error: cannot open script file "."\n')

    def test_warning_for_blocks_that_do_not_run(self):
        self.write("t.js", "var a = 1;\ntry { a = 2; } catch (e) { a = 3; }\na")
        self.expect(self.esrun("-p", "t.js"), 0, out="1\n", err="warning: t.js:2: 'try' blocks do not run\n")

    def start(self, *words, **options):
        command = [str(BIN / "esrun"), *words]
        self.commands.append(command)
        return subprocess.Popen(command, cwd=self.folder, env=self.environment, stderr=subprocess.PIPE, **options)

    def test_ctrl_c_ends_a_runaway_script(self):
        for text in ("while (true);", "function f() { f.apply; } for (;;) f()", "var a = [1, 2, 3]; for (;;) a.sort()",
                     "x = {toString: function() { for (;;); }}"):
            with self.subTest(text):
                child = self.start("-p", "-e", f"WScript.Echo('on'); {text}", stdout=subprocess.PIPE)
                self.assertEqual(os.read(child.stdout.fileno(), 2), b"on")
                child.send_signal(signal.SIGINT)
                out, err = child.communicate(timeout=60)
                self.assertEqual((child.returncode, out, err), (130, b"", b"interrupted\n"))

    def test_closed_pipe_ends_it_quietly(self):
        read, write = os.pipe()
        child = self.start("-e", "for (;;) WScript.Echo('a line of output\\n')", stdout=write)
        os.close(write)
        os.read(read, 100)
        os.close(read)
        _, err = child.communicate(timeout=60)
        self.assertEqual((child.returncode, err), (-signal.SIGPIPE, b""))

    def test_full_disk_is_told(self):
        with open("/dev/full", "wb") as full:
            self.expect(self.esrun("-p", "-e", "1", stdout=full), 1, err="error: cannot write to standard output\n")
            self.expect(self.esrun("-e", "for (;;) WScript.Echo('a')", stdout=full), 1,
                        err=["error: cannot write to standard output: "])


if __name__ == "__main__":
    main()
