"""What the session tests share: a temporary directory with HOME in it, and programs run in it.

A failing test keeps its directory and prints the command lines that it ran."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

BIN = pathlib.Path(os.environ["QBURN_BIN"])
SOURCE = pathlib.Path(os.environ["QBURN_SOURCE"])
EXAMPLES = SOURCE / "examples"


class Result:
    def __init__(self, status, out, err):
        self.status, self.out, self.err = status, out, err

    def __repr__(self):
        return f"status {self.status}\n--- out\n{self.out}\n--- err\n{self.err}"


class SessionTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="qburn-session-"))
        self.home = self.folder / "home"
        self.home.mkdir()
        self.commands = []
        self.environment = {"HOME": str(self.home), "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"}
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in os.environ:
                self.environment[name] = os.environ[name]
        self.addCleanup(self.finish)

    def finish(self):
        outcome = self._outcome
        failed = any(error for _, error in getattr(outcome, "errors", []) if error) or (
            getattr(outcome, "result", None) is not None
            and any(test is self for test, _ in outcome.result.failures + outcome.result.errors))
        if failed:
            print(f"\nkept: {self.folder}")
            for command in self.commands:
                print("  " + " ".join(map(str, command)))
        else:
            for path in self.folder.rglob("*"):
                if path.is_dir() and not path.is_symlink():
                    path.chmod(0o755)
            shutil.rmtree(self.folder, ignore_errors=True)

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        if isinstance(content, bytes):
            path.write_bytes(content)
        else:
            path.write_text(content)
        return path

    def run_program(self, program, *arguments, stdin=None, timeout=120, **options):
        command = [str(BIN / program), *map(str, arguments)]
        self.commands.append(command)
        done = subprocess.run(command, cwd=options.pop("cwd", self.folder), env=self.environment,
                              input=stdin if stdin is not None else b"", timeout=timeout,
                              stdout=options.pop("stdout", subprocess.PIPE),
                              stderr=options.pop("stderr", subprocess.PIPE), **options)
        return Result(done.returncode, (done.stdout or b"").decode(errors="replace"),
                      (done.stderr or b"").decode(errors="replace"))

    def qburn(self, *arguments, **options):
        return self.run_program("qburn", *arguments, **options)

    def expect(self, result, status, out=None, err=None):
        """Checks a result; `out` and `err` are whole texts, or a list of parts that must appear."""
        self.assertEqual(result.status, status, repr(result))
        for name, wanted, found in (("out", out, result.out), ("err", err, result.err)):
            if isinstance(wanted, str):
                self.assertEqual(found, wanted, name + "\n" + repr(result))
            elif wanted is not None:
                for part in wanted:
                    self.assertIn(part, found, name + "\n" + repr(result))


def main():
    unittest.main(verbosity=1)
