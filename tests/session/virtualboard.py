"""vboard for session tests: a board that runs beside the test, and is examined when it has ended."""
import signal
import subprocess

from harness import BIN, Result, SessionTest

LIBRARY = BIN.parent / "lib" / "libvusb.so"


class Board:
    """A running vboard. `port` is the line that it printed: a pseudo-terminal or the USB socket."""

    def __init__(self, test, arguments, environment, socket):
        self.test = test
        self.code_file = test.folder / f"code{len(test.boards)}.bin"
        self.socket = socket or test.folder / f"usb{len(test.boards)}"
        command = [str(BIN / "vboard"), "--save-code", str(self.code_file), *map(str, arguments)]
        if "--usb" in command:
            command.insert(command.index("--usb") + 1, str(self.socket))
        test.commands.append(command)
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                        cwd=test.folder, env=environment)
        self.port = self.process.stdout.readline().decode().rstrip("\n")

    def wait(self, timeout=60):
        """The result of a board that ends by itself."""
        out, err = self.process.communicate(timeout=timeout)
        return Result(self.process.returncode, out.decode(), err.decode(errors="replace"))

    def stop(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        return self.wait()

    def code(self, address=0, length=None):
        data = self.code_file.read_bytes()
        return data[address:] if length is None else data[address:address + length]

    def clean_up(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.communicate()


class BoardTest(SessionTest):
    def setUp(self):
        super().setUp()
        self.boards = []

    def board(self, *arguments, socket=None):
        """Starts a board; --usb is given without its socket."""
        board = Board(self, arguments, self.environment, socket)
        self.boards.append(board)
        self.addCleanup(board.clean_up)
        return board

    def usb_environment(self, *boards):
        """What programs need to find the boards on their USB."""
        options = self.environment.get("ASAN_OPTIONS", "")
        return {**self.environment, "LD_PRELOAD": str(LIBRARY),
                "ASAN_OPTIONS": options + (":" if options else "") + "verify_asan_link_order=0",
                "VBOARD_USB": ",".join(str(board.socket) for board in boards)}
