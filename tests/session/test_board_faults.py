"""Whole sessions between the tool and the board, and the same sessions with a fault at one position after
the other. However a session is hurt, it ends by itself: with status 1 and one message, or with status 0
and the right bytes in the device."""
import concurrent.futures
import re
import subprocess
import unittest

from harness import BIN, SessionTest, main
from virtualboard import Board, usb_environment

# Sessions wait for time-outs most of their time, so many run side by side.
WORKERS = 24
TIME_OUT = 90  # a session that takes so long hangs
PROMPT_MS = 400  # an answer that comes late, but within the serial link's time-out
TOO_LATE_MS = 1400

SOLUTION = """<!DOCTYPE Anvil_Project_File>
<solution Name="small" version="2">
  <configuration Name="Common" Platform="MAXQ30"
                 target_erase_script="TargetInterface.loaderMasterEraseCommand()" />
  <configuration Name="Debug" inherited_configurations="Common" />
  <project Name="small">
    <configuration Name="Common" project_type="Externally Built Executable"
                   external_build_file_name="small.bin" />
  </project>
</solution>
"""
# Whole pages of the bootloader, so that every byte that is sent is one that is verified. It begins with
# a loop, for the processor to stay in.
IMAGE = bytes([0xFF, 0x0C]) + bytes((7 * i + 3) & 0xFF for i in range(2, 256))


def has_targets():
    done = subprocess.run([BIN / "qburn", "-target", "sim", "-listtargets"], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=True)
    return b"serial_jtag" in done.stdout and b"usb_th" in done.stdout


@unittest.skipUnless(has_targets(), "this tool has no JTAG targets")
class FaultsTest(SessionTest):
    def setUp(self):
        super().setUp()
        self.boards = []
        self.solution = self.write("small.kvp", SOLUTION)
        self.write("small.bin", IMAGE)
        # What the device holds before: nothing of it may show afterwards.
        self.old = self.write("old.bin", bytes(1024))

    def session(self, name, usb, *arguments):
        """One download to a fresh board: the tool's result and the board, which has ended."""
        folder = self.folder / name
        folder.mkdir()
        board = Board(folder, ["--once", "--code-size", "1K", "--data-size", "1K", "--image", self.old,
                               *(["--usb"] if usb else []), *arguments], self.environment)
        try:
            target = ["usb_th"] if usb else ["serial_jtag", "-setprop", f"Port Name={board.port}"]
            command = [BIN / "qburn", "-target", *target, "-solution", self.solution, "-project", "small",
                       "-config", "Debug", "-loadaddress", "0", "-quiet"]
            environment = usb_environment(self.environment, board) if usb else self.environment
            done = subprocess.run(command, cwd=folder, env={**environment, "HOME": str(self.home)},
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  timeout=TIME_OUT)
            # A session that failed before it opened the port leaves a board that still waits for one.
            try:
                board.result = board.wait(timeout=5)
            except subprocess.TimeoutExpired:
                board.result = board.stop()
            return done, board
        finally:
            board.clean_up()

    def whole_session(self, name, usb, *arguments):
        """The same; once more where a busy machine has kept the adapter's prompt for too long."""
        for attempt in range(10):
            done, board = self.session(f"{name}-{attempt}", usb, *arguments)
            if b"no echo response" not in done.stderr:
                break
        return done, board

    def verdict(self, usb, number, fault):
        """What is wrong with how a session with this fault ended, or None; and whether it succeeded."""
        try:
            done, board = self.session(f"{'usb' if usb else 'serial'}{number}", usb, "--fault", fault)
        except subprocess.TimeoutExpired:
            return f"{fault}: the session hangs", False
        text = done.stderr.decode(errors="replace").strip()
        if board.result.status not in (0, 1):
            return f"{fault}: board {board.result}", False
        if done.returncode == 0:
            good = board.code() == IMAGE + bytes([0xFF] * 768)
            return (None if good else f"{fault}: status 0 with wrong bytes in the device"), True
        lines = [line for line in text.splitlines() if line.strip() and not line.startswith("warning: ")]
        text = "\n".join(lines)
        if done.returncode != 1 or not 1 <= len(lines) <= 4 or text.count("error") > 1:
            return f"{fault}: status {done.returncode}, {text!r}", False
        return None, False

    def lengths(self, usb):
        """The bytes of a whole session in both directions."""
        log = self.folder / f"log{usb}"
        done, board = self.whole_session(f"reference{usb}", usb, "--log", log)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertEqual((board.result.status, board.result.err), (0, ""))
        self.assertEqual(board.code(), IMAGE + bytes([0xFF] * 768))
        lengths = {"host": 0, "board": 0}
        for direction, position, data in re.findall(r"^(host|board) +(\d+):((?: [0-9a-f]{2})+)$",
                                                    log.read_text(), re.M):
            lengths[direction] = int(position) + len(data.split())
        return {"in": lengths["host"], "out": lengths["board"]}

    def run_grid(self, usb, grid):
        """`grid` maps the form of a fault to the number of its positions in each direction."""
        lengths = self.lengths(usb)
        faults = []
        for form, count in grid.items():
            for direction, length in lengths.items():
                self.assertGreater(length, count)
                faults += [form.format(f"{direction}:{(2 * i + 1) * length // (2 * count)}")
                           for i in range(count)]
        with concurrent.futures.ThreadPoolExecutor(WORKERS) as pool:
            outcomes = list(pool.map(lambda pair: self.verdict(usb, *pair), enumerate(faults)))
        wrong = [text for text, _ in outcomes if text]
        self.assertEqual(wrong, [], f"{len(wrong)} of {len(faults)} sessions")
        return {fault: succeeded for fault, (_, succeeded) in zip(faults, outcomes)}

    def test_serial(self):
        succeeded = self.run_grid(False, {"cut={}": 100, "drop={}": 100, "change={}": 100,
                                          f"late={{}}:{PROMPT_MS}": 50, f"late={{}}:{TOO_LATE_MS}": 50})
        # The faults are real: a cut cable is never survived, a short delay often is.
        self.assertFalse(any(ok for fault, ok in succeeded.items() if fault.startswith("cut")))
        self.assertTrue(all(ok for fault, ok in succeeded.items() if fault.endswith(f":{PROMPT_MS}")
                            and int(fault.split(":")[1]) > 40))

    def test_usb(self):
        # A byte that is lost costs the ten seconds of the time-out.
        succeeded = self.run_grid(True, {"cut={}": 100, "change={}": 100, "drop={}": 100, "late={}:400": 100})
        self.assertFalse(any(ok for fault, ok in succeeded.items() if fault.startswith("cut")))
        self.assertTrue(all(ok for fault, ok in succeeded.items() if fault.startswith("late")))

    def test_boards_of_all_kinds(self):
        expected = IMAGE + bytes([0xFF] * 768)
        cases = [(["--families", "variable"], 0, ""), (["--families", "fixed"], 0, ""),
                 (["--families", "fixed", "--fixed-code", "48"], 0, ""),
                 (["--families", "none"], 1, "fixed or variable length load not supported"),
                 (["--fault", "unpowered"], 1, "The JTAG interface is not responding"),
                 (["--fault", "unpowered=1"], 1, "The JTAG interface is not responding"),
                 (["--fault", "no-bootloader"], 1, "Bootloader has not started"),
                 (["--fault", "dead=0x81"], 1, "Verification of small.bin has failed"),
                 (["--load-scans", "30", "--families", "variable"], 1, "Verification of small.bin has failed"),
                 (["--erase-time", "700"], 0, "")]
        for usb in (False, True):
            for number, (arguments, status, message) in enumerate(cases):
                with self.subTest(usb=usb, arguments=arguments):
                    done, board = self.whole_session(f"kind{usb}{number}", usb, *arguments)
                    self.assertEqual(done.returncode, status, done.stderr)
                    self.assertIn(message, done.stderr.decode())
                    self.assertEqual(board.result.err, "")
                    if status == 0:
                        self.assertEqual(board.code(), expected)


if __name__ == "__main__":
    main()
