"""vboard for session tests: a board that runs beside the test, and is examined when it has ended."""
import signal
import subprocess

from harness import BIN, Result, SessionTest

LIBRARY = BIN.parent / "lib" / "libvusb.so"


def usb_environment(environment, *boards):
    """What programs need to find the boards on their USB."""
    options = environment.get("ASAN_OPTIONS", "")
    return {**environment, "LD_PRELOAD": str(LIBRARY), "VBOARD_USB": ",".join(str(b.socket) for b in boards),
            "ASAN_OPTIONS": options + (":" if options else "") + "verify_asan_link_order=0"}


class Board:
    """A running vboard, whose files are in `folder`. --usb is given without its socket. `port` is the line
    that the board printed: a pseudo-terminal or the USB socket."""

    def __init__(self, folder, arguments, environment, socket=None):
        self.code_file = folder / "code.bin"
        self.socket = socket or folder / "usb"
        self.command = [str(BIN / "vboard"), "--save-code", str(self.code_file), *map(str, arguments)]
        if "--usb" in self.command:
            self.command.insert(self.command.index("--usb") + 1, str(self.socket))
        self.process = subprocess.Popen(self.command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=folder,
                                        env=environment)
        self.port = self.process.stdout.readline().decode().rstrip("\n")

    def wait(self, timeout=60):
        """The result of a board that ends by itself."""
        out, err = self.process.communicate(timeout=timeout)
        return Result(self.process.returncode, out.decode(), err.decode(errors="replace"))

    def stop(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        return self.wait()

    def code(self, address=0, length=None):
        """The code memory as it was at the end."""
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
        folder = self.folder / f"board{len(self.boards)}"
        folder.mkdir()
        board = Board(folder, arguments, self.environment, socket)
        self.commands.append(board.command)
        self.boards.append(board)
        self.addCleanup(board.clean_up)
        return board
