"""Whole sessions on the simulator: from files or a solution to a verified download."""
import os
import signal
import subprocess
import time

from harness import BIN, EXAMPLES, SessionTest, main

FIRST = EXAMPLES / "first"
ON_FIRST = ["-target", "sim", "-solution", FIRST / "first.kvp", "-project", "first", "-config", "Debug"]


def solution(settings="", board="board.xml", configurations='<configuration Name="Debug" />', projects=None):
    return f"""<!DOCTYPE Anvil_Project_File>
<solution Name="s" version="2">
  <configuration Name="Common" Platform="MAXQ30" simulator_DLL_FileName="$(BenchDir)/lib/libmaxq30sim.so"
    simulator_DLL_Parameter="code=64K data=8K" simulator_DLL_RomFileName="$(BenchDir)/lib/maxq30rom.hex" {settings} />
  {configurations}
  {projects or f'<project Name="p"><file file_name="{board}"><configuration Name="Common" file_type="Memory Map" /></file></project>'}
</solution>
"""


BOARD = """<Root>
<MemorySegment name="FLASH" addressSpace="CODE" start="0x0" size="0x8000" />
<MemorySegment name="RAM" addressSpace="DATA" start="0x0" size="0x2000" />
</Root>"""


def ihex(address, data, entry=None):
    def record(offset, kind, data):
        body = bytes([len(data)]) + offset.to_bytes(2, "big") + bytes([kind]) + data
        return ":" + body.hex() + f"{-sum(body) & 255:02x}\n"
    text = "".join(record(address + i, 0, data[i:i + 32]) for i in range(0, len(data), 32))
    if entry is not None:
        text += record(0, 5, entry.to_bytes(4, "big"))
    return text + ":00000001FF\n"


# 0: A[0] = 0; 2: ADD #1; 4: JUMP 2. It never ends by itself.
COUNTER = bytes.fromhex("0009014afe0c")


class Downloads(SessionTest):
    def setUp(self):
        super().setUp()
        self.write("s.kvp", solution())
        self.write("board.xml", BOARD)

    def on_p(self, *words, **options):
        return self.qburn("-target", "sim", "-solution", "s.kvp", "-project", "p", "-config", "Debug", *words,
                          **options)

    def test_project_output_and_additional_files(self):
        result = self.qburn(*ON_FIRST, "-verbose")
        self.expect(result, 0, err="", out=["Programming 0.0 kB of addresses 00000000 -- 00000005\n",
                                            "Programming 0.5 kB of addresses 00001000 -- 000011ff\n",
                                            "Programming 0.0 kB of addresses 00002000 -- 00002035\n",
                                            "Verifying 0.5 kB of addresses 00001000 -- 000011ff\n",
                                            "\rProgramming [****", "] 100% \r", "Verifying completed in "])

    def test_every_text_format_and_quiet(self):
        files = [FIRST / name for name in ("greeting.bin", "counter.hex", "squares.s19", "primes.txt")]
        self.expect(self.qburn(*ON_FIRST, "-quiet", "-verbose", "-loadaddress", "0x3000", *files), 0, out="", err="")
        result = self.qburn(*ON_FIRST, "-loadaddress", "0x3000", *files)
        self.expect(result, 0, err="")
        self.assertEqual(result.out.count("Programming completed in "), 4)
        self.assertEqual(result.out.count("Verifying completed in "), 4)
        # Files with addresses may follow one without, not the other way round.
        self.expect(self.qburn(*ON_FIRST, "-loadaddress", "0", files[1], files[0]), 1,
                    err="error: only one load file without address information can be specified\n\n")

    def test_a_bar_fills_no_log(self):
        self.write("big.hex", ihex(0, bytes(range(256)) * 128))
        result = self.on_p("big.hex")
        self.expect(result, 0, err="")
        self.assertLess(result.out.count("\r"), 500)

    def test_files_that_cannot_go_together_or_do_not_fit(self):
        self.write("a.hex", ihex(0, bytes(16)))
        self.write("b.hex", ihex(15, bytes(16)))
        self.expect(self.on_p("a.hex", "b.hex"), 1, out="",
                    err="error: cannot download multiple load files because they overlap\n\n"
                        "a.hex and b.hex both have 0x0000000F - 0x0000000F\n")
        self.write("c.hex", ihex(0x7FF8, bytes(16)))
        self.expect(self.on_p("a.hex", "c.hex"), 1, out="", err="error: The 0x00007FF8 - 0x00008007 load section "
                    "does not fit the target description.\n\n"
                    "the segments of the project's memory map say what memory the target has\n")

    def test_verification_tells_file_and_place(self):
        # Without a download the memory holds what it holds at power-on.
        self.write("sub/a.hex", ihex(0x10, b"\xff\xff\x5a"))
        self.expect(self.on_p("-nodownload", "sub/a.hex"), 1,
                    err="error: Verification of a.hex has failed\n\n"
                        "The first difference is at 0x00000012: 0x5A expected, 0xFF found\n")
        self.expect(self.on_p("-nodownload", "-noverify", "sub/a.hex"), 0, out="", err="")

    def test_solution_texts(self):
        self.write("two.kvp", solution(
            configurations='<configuration Name="Debug" /><configuration Name="Release" />'
            '<configuration Name="Secret" hidden="Yes" /><configuration Name="Other" Platform="ARM" />',
            projects='<project Name="b  lamp" /><project Name="a" />'))
        projects = '\n\nProjects in "two.kvp":\n\n  a\n  b  lamp\n\n'
        configurations = '\n\nBuild configurations for "%s":\n\n  Debug\n  Release\n\n'
        base = ["-target", "sim", "-solution", "two.kvp"]
        self.expect(self.qburn(*base), 1, err="error: no project specified (use -project)" + projects)
        self.expect(self.qburn(*base, "-project", "c"), 1, err='error: invalid project "c"' + projects)
        self.expect(self.qburn(*base, "-project", "b lamp"), 1,
                    err="error: no build configuration specified (use -config)" + configurations % "b  lamp")
        self.expect(self.qburn(*base, "-project", "a", "-config", "Secret"), 1,
                    err='error: invalid build configuration "Secret"' + configurations % "a")

    def test_solutions_that_do_not_load(self):
        self.write("bad.kvp", "<!DOCTYPE Anvil_Project_File>\n<solution>\n</project>\n")
        self.write("other.kvp", "<!DOCTYPE Something>\n<solution />\n")
        self.write("deep.kvp", "<!DOCTYPE Anvil_Project_File>\n" + "<project>" * 1000000)
        self.write("loop.kvp", '<!DOCTYPE Anvil_Project_File>\n<solution version="2"><import file_name="loop.kvp" />'
                   "</solution>")
        base = ["-target", "sim", "-project", "p", "-config", "Debug", "-solution"]
        self.expect(self.qburn(*base, "bad.kvp"), 1,
                    err="load error: bad XML file - bad.kvp\n\nbad.kvp:3: tagName mismatch\n")
        self.expect(self.qburn(*base, "other.kvp"), 1, err="load error: other.kvp not a solution file\n\n")
        self.expect(self.qburn(*base, "none.kvp"), 1, err=["load error: ", "none.kvp does not exist\n\n"])
        self.expect(self.qburn(*base, "deep.kvp"), 1, err=["load error: bad XML file - deep.kvp\n\ndeep.kvp:2: "])
        self.expect(self.qburn(*base, "loop.kvp"), 1, err=["load error: loop.kvp solution already loaded\n\n"])
        self.expect(self.qburn(*base, self.folder), 1, err=["load error: "])

    def test_what_the_simulator_needs(self):
        self.write("a.hex", ihex(0, b"abcd"))
        self.expect(self.qburn("-target", "sim", "a.hex"), 1, err=["error: cannot load memory map file: "])
        cases = {
            'simulator_DLL_FileName=""': "simulation filename project property not set",
            'simulator_DLL_FileName="/none.so"': "Cannot load /none.so",
            'simulator_DLL_RomFileName=""': "simulation filename project property not set",
            'simulator_DLL_RomFileName="/none.hex"': "Cannot open utility ROM hex file /none.hex",
            'simulator_DLL_RomFileName="/"': "Cannot open utility ROM hex file /",
        }
        for setting, text in cases.items():
            self.write("s.kvp", solution(configurations=f'<configuration Name="Debug" {setting} />'))
            self.expect(self.on_p("a.hex"), 1, out="", err=[f"error: {text}\n"])

    def test_unserved_program_runs_until_ctrl_c(self):
        self.write("run.hex", ihex(0, COUNTER, entry=0))
        self.write("rest.hex", ihex(2, COUNTER, entry=2))
        for name in ("run.hex", "rest.hex"):
            command = [str(BIN / "qburn"), "-target", "sim", "-solution", "s.kvp", "-project", "p", "-config",
                       "Debug", name]
            self.commands.append(command)
            child = subprocess.Popen(command, cwd=self.folder, env=self.environment, stdout=subprocess.PIPE,
                                     stderr=subprocess.PIPE)
            seen = b""
            while b"Verifying completed" not in seen:
                piece = os.read(child.stdout.fileno(), 65536)
                if not piece:
                    self.fail(child.stderr.read())
                seen += piece
            self.assertIsNone(child.poll())
            child.send_signal(signal.SIGINT)
            _, err = child.communicate(timeout=60)
            self.assertEqual((child.returncode, err), (130, b"interrupted\n"))

    def test_closed_pipe_ends_with_a_message(self):
        self.write("big.hex", ihex(0, bytes(0x7000)))
        read, write = os.pipe()
        os.close(read)
        with os.fdopen(write, "wb") as closed:
            result = self.on_p("big.hex", stdout=closed)
        self.expect(result, 1, err="error: cannot write to standard output: Broken pipe\n\n")


if __name__ == "__main__":
    main()
