"""A bootloader that refuses what it is told, on both adapters: the user hears of it, and the session goes on."""
from harness import EXAMPLES, main
from virtualboard import BoardTest, usb_environment

IMAGE = bytes(range(256))


class RefusalTest(BoardTest):
    def setUp(self):
        super().setUp()
        self.write("small.bin", IMAGE)

    def download(self, *faults, usb=False, address="0", options=()):
        """A session with a board that has these faults; what the device holds at the end is in the board."""
        board = self.board("--once", "--code-size", "4K", *(["--usb"] if usb else []), *faults)
        target = ["usb_th"] if usb else ["serial_jtag", "-setprop", f"Port Name={board.port}"]
        environment = self.environment
        if usb:
            self.environment = usb_environment(environment, board)
        try:
            result = self.qburn("-target", *target, "-solution", EXAMPLES / "board" / "board.kvp", "-project",
                                "board", "-config", "Debug", "-loadaddress", address, "-quiet", *options,
                                "small.bin")
        finally:
            self.environment = environment
        self.expect(board.wait(), 0)
        return result, board

    def test_a_locked_device_says_so_once_for_each_kind(self):
        for usb in (False, True):
            with self.subTest(usb=usb):
                result, board = self.download("--fault", "locked", usb=usb, options=["-noverify"])
                self.expect(result, 0, err="warning: the bootloader refuses an erase: no password match\n"
                                           "warning: the bootloader refuses a load: no password match\n")
                self.assertEqual(board.code(0, 256), bytes([0xFF] * 256))

    def test_a_load_beyond_the_memory_fails_its_verification_all_the_same(self):
        for usb in (False, True):
            with self.subTest(usb=usb):
                result, _ = self.download(usb=usb, address="0x0f80")
                self.expect(result, 1, err=["warning: the bootloader refuses a load: bad parameter\n",
                                            "error: Verification of small.bin has failed\n"])
                self.assertEqual(result.err.count("warning"), 1, result)

    def test_a_bootloader_that_falls_asleep_has_no_error_to_tell(self):
        for usb in (False, True):
            with self.subTest(usb=usb):
                result, _ = self.download("--load-scans", "40", usb=usb, options=["-noverify"])
                self.expect(result, 0, err="warning: the bootloader refuses a load: it takes no more bytes\n")

    def test_nothing_is_said_of_loads_that_are_taken(self):
        for usb in (False, True):
            with self.subTest(usb=usb):
                result, board = self.download(usb=usb)
                self.expect(result, 0, err="")
                self.assertEqual(board.code(0, 256), IMAGE)


if __name__ == "__main__":
    main()
