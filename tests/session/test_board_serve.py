"""Programs that run on the virtual board, behind both adapters, with their requests served here."""
import os
import re
import signal
import subprocess
import time

from harness import BIN, EXAMPLES, main
from virtualboard import BoardTest, usb_environment


class ServeOnBoard(BoardTest):
    def words(self, board, name, usb, *more):
        target = ["usb_th"] if usb else ["serial_jtag", "-setprop", f"Port Name={board.port}"]
        return ["-target", *target, "-solution", EXAMPLES / name / f"{name}.kvp", "-project", name, "-config", "Debug",
                "-quiet", *more]

    def serve(self, board, name, *more, usb=False, **options):
        """A session; once more where a busy machine has kept the adapter's prompt for too long."""
        if usb:
            self.environment = usb_environment(self.environment, board)
        for _ in range(10):
            result = self.qburn(*self.words(board, name, usb, *more), **options)
            if "no echo response" not in result.err:
                break
        return result

    def test_console_arguments_and_status(self):
        for usb in (False, True):
            for families in ("variable", "fixed"):
                with self.subTest(usb=usb, families=families):
                    board = self.board("--families", families, *(["--usb"] if usb else []))
                    result = self.serve(board, "hello", "-serve", "one", "two words", usb=usb)
                    self.expect(result, 3, err="",
                                out="Hello, world.\nargument 0: \nargument 1: one\nargument 2: two words\n")
                    self.assertEqual(board.stop().status, 0)

    def test_files_and_input(self):
        board = self.board()
        self.expect(self.serve(board, "files", "-serve"), 0, err="", out=["all steps passed\n"])
        self.expect(self.serve(board, "echo", "-serve", stdin=b"first\nsecond\n\n"), 2, err="",
                    out="1: first\n2: second\n")
        self.assertEqual(board.stop().status, 0)

    def test_a_program_that_was_only_started_runs_on(self):
        board = self.board()
        self.expect(self.serve(board, "crc"), 0, out="", err="")
        self.assertEqual(board.stop().status, 0)

    def start(self, board, *more):
        command = [str(BIN / "qburn"), *map(str, self.words(board, "echo", False, *more))]
        self.commands.append(command)
        return subprocess.Popen(command, cwd=self.folder, env=self.environment, stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def started(self, board):
        """A session in which the program has answered its first line."""
        for _ in range(10):
            child = self.start(board, "-serve")
            child.stdin.write(b"line\n")
            child.stdin.flush()
            if os.read(child.stdout.fileno(), 100) == b"1: line\n":
                return child
            self.assertIn(b"no echo response", child.communicate(timeout=60)[1])
        self.fail("the adapter never showed its prompt in time")

    def test_ctrl_c_stops_the_program_and_frees_the_port(self):
        board = self.board()
        child = self.started(board)
        child.send_signal(signal.SIGINT)
        out, err = child.communicate(timeout=60)
        self.assertEqual((child.returncode, out, err), (130, b"", b"interrupted\n"))
        self.expect(self.serve(board, "hello", "-serve"), 1, err="", out=["Hello, world.\n"])
        self.assertEqual(board.stop().status, 0)

    def test_a_pulled_cable_is_told_once_and_ctrl_c_ends(self):
        board = self.board()
        child = self.started(board)
        board.stop()
        warning = b""
        while not warning.endswith(b"\n"):
            warning += os.read(child.stderr.fileno(), 1000)
        time.sleep(0.2)  # many polls, none of which says it again
        child.send_signal(signal.SIGINT)
        _, err = child.communicate(timeout=60)
        self.assertEqual(child.returncode, 130, err)
        self.assertRegex((warning + err).decode(), re.compile(r"\Awarning: [^\n]+\ninterrupted\n\Z"))


if __name__ == "__main__":
    main()
