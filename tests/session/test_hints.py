"""What a session adds behind an error, what it shows while it works, and the short ways to erase and reset."""
import re

from harness import EXAMPLES, main
from virtualboard import BoardTest

IMAGE = bytes(range(256)) * 4
PROJECT = ("-solution", EXAMPLES / "board" / "board.kvp", "-project", "board", "-config", "Debug")


class Hints(BoardTest):
    def setUp(self):
        super().setUp()
        self.write("small.bin", IMAGE)

    def on_board(self, board, *words):
        """A session; once more where a busy machine has kept the adapter's prompt for too long."""
        for _ in range(10):
            result = self.qburn("-target", "serial_jtag", "-setprop", f"Port Name={board.port}", *PROJECT, *words)
            if "no echo response" not in result.err:
                break
        return result

    def hint(self, *words):
        result = self.qburn(*words)
        self.assertEqual(result.status, 1, result)
        match = re.fullmatch(r"error: (?:.*\n)+?\n((?:.+\n)+)", result.err)
        self.assertTrue(match, result)
        return match[1]

    def test_an_error_says_what_to_try(self):
        self.write("a.hex", ":0100100001EE\n:00000001FF\n")
        self.write("b.hex", ":02000F000102EC\n:00000001FF\n")
        first = ("-solution", EXAMPLES / "first" / "first.kvp", "-project", "first", "-config", "Debug")
        cases = [
            (("-listtargets",), "-listtargets"),
            (("-target", "sim", "-setprop", "Trace Bufer Size=1"), 'did you mean "Trace Buffer Size"?'),
            (("-target", "sim", "small.bin"), "-loadaddress 0x0"),
            (("-target", "sim", "-filetype", "elf", "a.hex"), "-listfiletypes"),
            (("-target", "sim", "a.hex"), "linker_memory_map_file"),
            (("-target", "sim", *first, "a.hex", "b.hex"), "b.hex and a.hex both have 0x00000010 - 0x00000010"),
            (("-target", "serial_jtag", "-setprop", "Port Name=/dev/null", "a.hex"), "dialout"),
        ]
        for words, wanted in cases:
            self.assertIn(wanted, self.hint(*words), words)

    def test_a_failed_download_says_how_the_device_was_left(self):
        board = self.board("--fault", "cut=in:1000")
        result = self.on_board(board, "-quiet", "-loadaddress", "0", "small.bin")
        self.assertEqual(result.status, 1, result)
        self.assertIn("check the cable", result.err)
        self.assertRegex(result.err, r"the device was left .*erased")

    def test_erase_and_reset_do_just_that(self):
        board = self.board("--code-size", "4K")
        self.expect(self.on_board(board, "-quiet", "-loadaddress", "0", "small.bin"), 0, err="")
        self.expect(self.on_board(board, "-quiet", "-reset"), 0, err="", out="")
        self.expect(self.on_board(board, "-quiet", "-nodownload", "-loadaddress", "0", "small.bin"), 0, err="")
        self.expect(self.on_board(board, "-quiet", "-erase"), 0, err="", out="")
        self.expect(board.stop(), 0)
        self.assertEqual(board.code(0, len(IMAGE)), bytes([0xFF] * len(IMAGE)))

    def test_progress_as_lines_and_not_at_all(self):
        first = ("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first", "-config",
                 "Debug", "-loadaddress", "0", "small.bin")
        lines = self.qburn(*first, "-progress", "lines")
        self.expect(lines, 0, err="")
        self.assertNotIn("\r", lines.out)
        told = lines.out.splitlines()
        self.assertRegex(told[-1], r"^OK: 1 file, 1 kB, verified, \d+\.\d\d s$")
        self.assertTrue(all(" completed in " in line for line in told[:-1]) and len(told) > 2, lines)
        self.expect(self.qburn(*first, "-progress", "none"), 0, out="", err="")
        self.expect(self.qburn(*first, "-progress", "lines", "-quiet"), 0, out="", err="")
        self.assertIn("invalid progress dots", self.qburn(*first, "-progress", "dots", "-quiet").err)


if __name__ == "__main__":
    main()
