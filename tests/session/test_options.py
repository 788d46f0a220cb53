"""Options, indirect files, listings and the texts of everything that stops a session before a target
is touched."""
from harness import SessionTest, main

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
            (["-target", "sim", self.folder / "x" / "none.hex"], 'The file "none.hex" does not exist'),
            (["-target", "sim", odd], 'Cannot determine type of file "a.Hex"'),
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
        result = self.qburn("-target", "sim", "-listtargets")
        self.expect(result, 1, err=["error: cannot create /proc/nowhere/."])

    def test_closed_and_full_output(self):
        with open("/dev/full", "wb") as full:
            result = self.qburn("-target", "sim", "-listprops", stdout=full)
        self.expect(result, 1, err=self.error("cannot write to standard output: No space left on device"))


if __name__ == "__main__":
    main()
