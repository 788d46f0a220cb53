"""A program on a pseudo-terminal, for tests of keys and of what stands on the screen."""
import contextlib
import os
import pty
import select
import signal
import subprocess
import sys
import termios
import time

from harness import BIN

WAIT = 60  # seconds for anything that must come; a test never waits for a fixed time

# A shell with one job in the foreground; SIGUSR1 is its "fg".
SHELL = """
import os, signal, sys, termios
signal.signal(signal.SIGTTOU, signal.SIG_IGN)
signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGUSR1])
job = os.fork()
if job == 0:
    os.setpgid(0, 0)
    os.tcsetpgrp(0, os.getpid())
    signal.signal(signal.SIGTTOU, signal.SIG_DFL)
    signal.pthread_sigmask(signal.SIG_UNBLOCK, [signal.SIGUSR1])
    os.execv(sys.argv[1], sys.argv[1:])
while True:
    status = os.waitpid(job, os.WUNTRACED)[1]
    os.tcsetpgrp(0, os.getpid())
    if not os.WIFSTOPPED(status):
        sys.exit(os.WEXITSTATUS(status))
    cooked = termios.tcgetattr(0)[3] & termios.ICANON
    os.write(1, b"[stopped, cooked]" if cooked else b"[stopped, raw]")
    signal.sigwait([signal.SIGUSR1])
    os.tcsetpgrp(0, job)
    os.killpg(job, signal.SIGCONT)
"""


class Terminal:
    """A program on a pseudo-terminal of its own, the leader of its session."""

    def __init__(self, test, *arguments, shell=False, cwd=None):
        self.leader, self.follower = pty.openpty()
        test.addCleanup(os.close, self.leader)
        test.addCleanup(os.close, self.follower)
        self.before = termios.tcgetattr(self.follower)
        self.seen = b""
        command = [str(BIN / "qburn"), *map(str, arguments)]
        test.commands.append(command)
        if shell:
            command = [sys.executable, "-c", SHELL, *command]
        self.process = subprocess.Popen(command, cwd=cwd or test.folder, env=test.environment, stdin=self.follower,
                                        stdout=self.follower, stderr=subprocess.PIPE, start_new_session=True,
                                        preexec_fn=self.take)
        test.addCleanup(self.end)

    def take(self):
        import fcntl
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)

    def end(self):
        with contextlib.suppress(ProcessLookupError):
            os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()
        self.process.stderr.close()

    def type(self, text):
        os.write(self.leader, text if isinstance(text, bytes) else text.encode())

    def read_until(self, text):
        """Reads until the text stands behind all that an earlier call took; answers what came, with it."""
        text = text if isinstance(text, bytes) else text.encode()
        end = time.monotonic() + WAIT
        while text not in self.seen:
            if not self.read_some(max(0, end - time.monotonic())):
                raise AssertionError(f"{text!r} did not come, but {self.seen!r}")
        at = self.seen.index(text) + len(text)
        came, self.seen = self.seen[:at], self.seen[at:]
        return came

    def read_some(self, seconds):
        """Waits for that long at most for something to be written; adds it to what was seen. False when nothing came."""
        ready, _, _ = select.select([self.leader], [], [], seconds)
        if ready:
            self.seen += os.read(self.leader, 65536)
        return bool(ready)

    def raw(self):
        return not termios.tcgetattr(self.follower)[3] & termios.ICANON

    def wait_raw(self, wanted=True):
        end = time.monotonic() + WAIT
        while self.raw() != wanted:
            if time.monotonic() > end:
                raise AssertionError(f"the terminal did not become {'raw' if wanted else 'cooked'}")
            time.sleep(0.005)

    def finish(self):
        status = self.process.wait(WAIT)
        return status, self.process.stderr.read().decode()
