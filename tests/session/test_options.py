"""Options, indirect files, listings and the texts of everything that stops a session before a target
is touched."""
import contextlib
import os
import pathlib
import pty
import subprocess

from harness import BIN, SessionTest, main

USAGE_HEAD = ("Forgeline for MAXQ30 Loader - Release 2.0.0.2009012302.4051\n")


class Options(SessionTest):
    def error(self, text):
        return "error: " + text + "\n\n"

    def name(self):
        return self.commands[-1][0]

    def test_usage(self):
        result = self.qburn()
        self.expect(result, 0, out="", err=[USAGE_HEAD, "Usage: qburn [options] [files...]\n\n       qburn",
                                            "  -benchdir 'directory'   Set $(BenchDir)",
                                            "    qburn -target serial_jtag MyApp.hex\n\n"])
        self.assertNotIn("-nodifferential", result.err)
        # -help wins over everything that parses; a bad option prints its line first.
        result = self.qburn("-target", "nonsense", "-help", "-bogus")
        self.expect(result, 0, out="")
        self.assertTrue(result.err.startswith(self.name() + ": error: unrecognised option -bogus\n" + USAGE_HEAD))

    def test_listings_print_in_place_and_the_session_goes_on(self):
        result = self.qburn("-listtargets")
        self.expect(result, 1, out="Target Interfaces:\n\n"
                    "  serial_jtag           MAXQ Serial to JTAG\n"
                    "  usb_th                Tether Pro\n"
                    "  sim                   MAXQ30 Core Simulator\n\n",
                    err=self.error("no target interface specified (use -target)"))
        result = self.qburn("-target", "sim", "-listfiletypes")
        self.expect(result, 0, out="File Types:\n\n"
                    "  kvx                   Forgeline Executable File\n"
                    "  bin                   Binary File\n"
                    "  ihex                  Intel Hex File\n"
                    "  hex                   Hex File\n"
                    "  tihex                 TI Hex File\n"
                    "  srec                  Motorola S-Record File\n\n", err="")

    def test_properties_of_the_simulator(self):
        listing = ('"%s" Properties:\n\n'
                   "  Name:        Trace Buffer Size\n"
                   "  Description: Set the number of trace entries that are recorded.\n"
                   "  Value      : %s\n\n")
        self.expect(self.qburn("-target", "sim", "-listprops"), 0, out=listing % ("sim", "256"), err="")
        result = self.qburn("-listprops", "-target", "MAXQ30Simulator", "-setprop", "Trace Buffer Size=8",
                            "-setprop", "Trace Buffer Size=9")
        self.expect(result, 0, out=listing % ("MAXQ30Simulator", "9"), err="")
        for word in ("A=", "=B", "A"):
            self.expect(self.qburn("-target", "sim", "-setprop", word), 1,
                        err=self.error('format for option should be "-setprop PROPERTY=VALUE"'))
        self.expect(self.qburn("-target", "sim", "-setprop", "A=B=C"), 1, err=self.error("unknown property: A"))
        # By its label, not by its key.
        self.expect(self.qburn("-target", "sim", "-setprop", "traceBufferSize=1"), 1,
                    err=self.error("unknown property: traceBufferSize"))

    def test_what_stops_a_session(self):
        unknown = ('unknown target "SIM"\n\nTarget interfaces:\n\n'
                   "  serial_jtag           MAXQ Serial to JTAG\n"
                   "  usb_th                Tether Pro\n"
                   "  sim                   MAXQ30 Core Simulator\n")
        hexfile = self.write("sub/a.hex", ":00000001FF\n")
        binary = self.write("b.bin", "abc")
        second = self.write("c.bin", "abc")
        odd = self.write("a.Hex", "")
        self.write("bad.hex", ":00000001FE\n")
        cases = [
            (["-target", "SIM"], unknown),
            (["-target", "sim", "-filetype", "elf", hexfile], 'unknown file type "elf"'),
            (["-target", "sim", binary], "no load address specified (-loadaddress option)"),
            (["-target", "sim", "-loadaddress", "0x10", binary, second],
             "only one load file without address information can be specified"),
            (["-target", "sim", "-loadaddress", "0xFFFFFFFE", binary, "-solution", "no.kvp"], None),
            (["-target", "sim", "bad.hex"], "invalid checksum : line 1"),
            (["-target", "sim", "-filetype", "SREC", hexfile], "no leading 'S' character : line 1"),
        ]
        for words, text in cases:
            result = self.qburn(*words)
            self.expect(result, 1, out="")
            if text is not None:
                self.assertEqual(result.err, self.error(text), words)
        # What a user can make of it stands on a line behind.
        none = self.folder / "x" / "none.hex"
        self.expect(self.qburn("-target", "sim", none), 1,
                    err=self.error('The file "none.hex" does not exist') + f"looked for {none}\n")
        self.expect(self.qburn("-target", "sim", odd), 1,
                    err=self.error('Cannot determine type of file "a.Hex"') +
                    "name its type with -filetype; known by the name's end: .kvx .bin .rom .hex .ihx .ihex .lst "
                    ".txt .srec .s19 .s28 .s37 .mot\n")
        self.expect(self.qburn("-target", "sim"), 0, out="", err="")  # nothing to load
        self.expect(self.qburn("-target", "sim", "-project", "x", "-config", "y"), 0, out="", err="")

    def test_unreadable_load_files_tell_the_reason(self):
        folder = self.folder / "folder.hex"
        folder.mkdir()
        result = self.qburn("-target", "sim", folder)
        self.expect(result, 1, err=f"error: cannot read {folder}\n\nIs a directory\n")

    def test_parse_errors_do_not_stop_the_session(self):
        result = self.qburn("-bogus", "-target", "sim", "-loadaddress", "12xy", "-setprop")
        name = self.name()
        self.expect(result, 0, err=f"{name}: error: unrecognised option -bogus\n"
                    f"{name}: error: invalid load address 12xy\n"
                    f"{name}: error: expected argument for option -setprop\n")

    def test_indirect_files(self):
        self.write("args", '# a comment\n-target sim\n\n"-listprops"-setprop "Trace Buffer Size=7"\n')
        result = self.qburn("@args")
        self.expect(result, 0, out=['"sim" Properties', "Value      : 7\n"], err="")
        self.write("bad", '-target "sim\n-target sim\t\n')
        result = self.qburn("@bad")
        self.expect(result, 1, err=[f"{self.name()}: error: unterminated string in indirect file bad(1)\n",
                                    'unknown target "sim\t"'])  # a tab belongs to a word
        self.expect(self.qburn("@none", "-target", "sim"), 0,
                    err=f"{self.name()}: error: can't open indirect file none: No such file or directory\n")
        self.expect(self.qburn("@home", "-target", "sim"), 0,
                    err=f"{self.name()}: error: can't open indirect file home: Is a directory\n")
        self.write("many", " ".join(["a"] * 257) + "\n")
        self.expect(self.qburn("@many", "-target", "sim"), 0, err=["too many words in indirect file many(1)"])
        # A missing argument ends the line that it stands on, not the session.
        self.write("short", "-quiet -target\n-target sim\n")
        self.expect(self.qburn("@short"), 0, err=[f"expected argument for option -target\n"])

    def test_indirect_files_that_name_themselves_end(self):
        self.write("loop", "@loop\n-verbose\n")
        result = self.qburn("@loop", "-target", "sim")
        self.expect(result, 0, err=f"{self.name()}: error: too many indirect files\n")
        # Twice on each line would be 2^100 files.
        self.write("twice", "@twice @twice\n")
        result = self.qburn("@twice", "-target", "sim")
        self.expect(result, 0, err=["too many indirect files"])

    def test_home_that_cannot_be_written(self):
        self.environment["HOME"] = "/proc/nowhere"
        result = self.qburn("-target", "sim", "-listfiletypes")
        self.expect(result, 0, out=["File Types"])
        self.assertRegex(result.err, r"^warning: cannot create /proc/nowhere/\.[^\n]*\n$")
        # A directory that was named must do.
        result = self.qburn("-target", "sim", "-packagesdir", "/proc/nowhere")
        self.expect(result, 1, err=self.error("cannot create /proc/nowhere/targets/frequencies.xml"))
        del self.environment["HOME"]
        result = self.qburn("-target", "sim")
        self.assertRegex(result.err, r"^warning: cannot create [^\n]*\n$")
        self.assertEqual(result.status, 0)
        self.assertFalse(pathlib.Path("/.forgeline").exists())

    def test_a_typo_is_told_with_what_was_meant(self):
        for typo, meant in (("-nodownlaod", "-nodownload"), ("-NoVerify", "-noverify"), ("--target", "-target"),
                            ("-quite", "-quiet")):
            result = self.qburn(typo, "-target", "sim")
            self.expect(result, 0, err=f"{self.name()}: error: unrecognised option {typo}\ndid you mean {meant}?\n")
        result = self.qburn("-" + "x" * 100000, "-target", "sim")
        self.assertNotIn("did you mean", result.err)
        # With -strict, wherever it stands, nothing is touched.
        for words in (["-bogus", "-strict"], ["-strict", "-loadaddress", "x"], ["-strict", "-setprop"]):
            result = self.qburn("-target", "nonsense", "-listfiletypes", *words)
            self.assertEqual(result.status, 2, result)
            self.assertEqual(result.err.count(": error: "), 1, result)
            self.assertNotIn("nonsense", result.err)
        self.expect(self.qburn("-strict", "-target", "sim"), 0, err="")

    def test_a_terminal_is_asked_before_a_board_is_touched(self):
        def session(answer, *words):
            leader, follower = pty.openpty()
            command = [BIN / "qburn", "-target", "serial_jtag", "-setprop", "Port Name=/dev/null", "a.hex", *words]
            process = subprocess.Popen(command, cwd=self.folder, env=self.environment, stdin=follower,
                                       stdout=subprocess.DEVNULL, stderr=follower)
            os.close(follower)
            seen = b""
            with contextlib.suppress(OSError):  # the end of a pseudo-terminal
                while True:
                    seen += os.read(leader, 4096)
                    if answer and seen.endswith(b"[y/N] "):
                        os.write(leader, answer)
                        answer = None
            os.close(leader)
            return process.wait(), seen.decode()

        self.write("a.hex", ":0100000001FE\n:00000001FF\n")
        status, seen = session(b"n\n", "-nodownlod")
        self.assertEqual(status, 2, seen)
        self.assertIn("did you mean -nodownload?\r\ngo on all the same? [y/N] ", seen)
        for answer, words in ((b"y\n", ["-nodownlod"]), (None, [])):
            status, seen = session(answer, *words)
            self.assertEqual((status, "go on" in seen), (1, answer is not None), seen)
            self.assertIn("\nerror: " if answer else "error: ", seen)

    def test_help_version_and_the_list_for_other_programs(self):
        usage = self.qburn("-help").err
        for word in ("-h", "--help"):
            self.expect(self.qburn(word), 0, out="", err=usage)
        fixed, further = usage.split("Further options:\n\n")
        self.assertNotIn("-entry", fixed)
        self.assertIn("  -entry 'address'         ", further)
        self.expect(self.qburn("--version"), 0, out=USAGE_HEAD, err="")
        listed = self.qburn("-listoptions", "-target", "sim")
        rows = [row.split("\t") for row in listed.out.splitlines()]
        self.assertTrue(all(len(row) == 4 and row[0][0] == "-" and row[2] and row[3] for row in rows), listed)
        self.assertEqual(sorted(row[0] for row in rows), sorted(set(row[0] for row in rows)))
        for text, argument, _, _ in rows:
            self.assertIn(f"  {text} {argument}".rstrip() + " ", usage)

    def test_a_dry_run_touches_nothing(self):
        self.write("a.hex", ":020010000102EB\n:00000001FF\n")
        self.write("b.bin", b"12345")
        words = ("-target", "serial_jtag", "-setprop", "Port Name=/no/such/port", "-dryrun")
        self.expect(self.qburn(*words, "-loadaddress", "0x100", "b.bin", "a.hex"), 0, err="", out=(
            "would connect to serial_jtag\n"
            "would erase all memory\nwould program a.hex: 2 bytes at 0x00000010\nwould verify a.hex\n"
            "would program b.bin: 5 bytes at 0x00000100\nwould verify b.bin\n"
            "would reset the target\nwould disconnect\n"))
        self.expect(self.qburn(*words, "-erase", "-reset"), 0, err="", out=(
            "would connect to serial_jtag\nwould erase all memory\nwould reset the target\nwould disconnect\n"))
        self.expect(self.qburn(*words, "-loadaddress", "0x10", "b.bin", "a.hex"), 1,
                    err=self.error("cannot download multiple load files because they overlap"))

    def test_closed_and_full_output(self):
        with open("/dev/full", "wb") as full:
            result = self.qburn("-target", "sim", "-listprops", stdout=full)
        self.expect(result, 1, err=self.error("cannot write to standard output: No space left on device"))


if __name__ == "__main__":
    main()
