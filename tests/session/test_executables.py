"""Executables of the assembler: assembled, dumped, downloaded and verified; and files that are none."""
from harness import BIN, EXAMPLES, SOURCE, SessionTest, main


class Executables(SessionTest):
    def test_every_example_downloads(self):
        for name in ("hello", "echo", "files", "calc", "crc"):
            result = self.qburn("-target", "sim", "-solution", EXAMPLES / name / f"{name}.kvp", "-project", name,
                                "-config", "Debug", "-verbose")
            self.expect(result, 0, err="", out=["Programming 0.", " of code addresses 00000000 -- ",
                                                "Verifying 0.", "Verifying completed in "])

    def test_assemble_dump_download(self):
        self.write("a.s", "        .CODE\nstart:  MOVE    A[0], #0x12345\n        JUMP    start\n        .PUBLIC start\n")
        self.expect(self.run_program("kvas", "-o", "a.kvx", "a.s"), 0, out="", err="")
        self.expect(self.run_program("kvas", "--dump", "a.kvx"), 0, err="", out=["A[0], #0x12345", "start"])
        result = self.qburn("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first",
                            "-config", "Debug", "a.kvx")
        self.expect(result, 0, err="")

    def test_assembler_names_each_place_and_leaves_no_file(self):
        self.write("bad.s", "        .CODE\n        MOVE    A[77], #1\n        NOP\n        JUMP    nowhere\n")
        result = self.run_program("kvas", "-o", "bad.kvx", "bad.s")
        self.assertEqual(result.status, 1, result)
        self.assertRegex(result.err, r"(?m)^bad\.s:2:\d+: error: ")
        self.assertFalse((self.folder / "bad.kvx").exists())

    def test_bytes_beyond_all_memory_are_refused_by_the_target(self):
        def lit(value):
            size = (value.bit_length() + 7) // 8
            return bytes([value]) if value < 8 else bytes([8, size]) + value.to_bytes(size, "big")

        strings = b".text\x55"
        section = lit(0) + lit(5) + b"\x23\x28\x27" + lit(0x80001) + b"\x60"  # named, made, entered, its flags
        byte = lit(0x80000000) + b"\x37" + lit(0x55) + lit(1) + b"\x2c" + lit(5) + lit(1) + b"\x23\x38"
        self.write("high.kvx", lit(len(strings)) + b"\x26" + strings + b"\x0a\x09\x4a\x4f" + section + byte)
        result = self.qburn("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first",
                            "-config", "Debug", "high.kvx")
        self.expect(result, 1, out="", err=["error: "])
        self.assertNotIn("without an address", result.err)

    def test_files_that_are_no_executables(self):
        whole = (BIN.parent / "examples" / "hello" / "hello.kvx").read_bytes()
        cases = {"cut.kvx": whole[:len(whole) // 2], "noise.kvx": bytes(range(256)) * 8, "tag.kvx": b"\xff"}
        for name, content in cases.items():
            self.write(name, content)
            result = self.qburn("-target", "sim", "-solution", EXAMPLES / "first" / "first.kvp", "-project", "first",
                                "-config", "Debug", name)
            self.assertEqual((result.status, result.out), (1, ""), result)
            self.assertRegex(result.err, r"^error: (bad object file: |premature end of ZOFF file|operand type error)")
        # An empty one holds nothing, and a name with .kvx in it is taken for one.
        self.write("empty.kvx", b"")
        result = self.qburn("-target", "sim", "empty.kvx", "-nodownload")
        self.assertIn(result.status, (0, 1), result)
        self.write("text.kvx.hex", ":00000001FF\n")
        self.expect(self.qburn("-target", "sim", "text.kvx.hex"), 1, err=["error: "])


if __name__ == "__main__":
    main()
