"""The walks through examples/debug: the same text on every target, and the text that is kept beside the script."""
from harness import EXAMPLES, SOURCE, main
from virtualboard import BoardTest, usb_environment

SESSION = ["-solution", EXAMPLES / "debug" / "debug.kvp", "-project", "debug", "-config", "Debug", "-quiet", "-debug",
           "-break", "main"]


class DebugExample(BoardTest):
    def walk(self, script, *target):
        """What a script prints, with the paths of the sources written from the project's folder."""
        for _ in range(10): # a busy machine may keep the adapter's prompt for too long
            result = self.qburn("-target", *target, *SESSION, "-script", EXAMPLES / "debug" / script)
            if "no echo response" not in result.err:
                break
        self.expect(result, 12, err="")
        return result.out.replace(f"{SOURCE}/", "")

    def kept(self, name):
        return (EXAMPLES / "debug" / name).read_text()

    def test_the_simulator_shows_what_is_kept(self):
        for script in ("debug", "watch"):
            with self.subTest(script):
                self.assertEqual(self.walk(f"{script}.js", "sim"), self.kept(f"{script}.txt"))


if __name__ == "__main__":
    main()
