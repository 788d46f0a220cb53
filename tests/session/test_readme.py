"""The sessions that README shows, run as they stand there: what stays on the screen is what the page says."""
import re
import shlex
import subprocess
import time

from harness import SOURCE, main
from terminal import Terminal, WAIT
from virtualboard import BoardTest


def screen(text):
    """The lines that stay on a terminal, without the blanks at their ends."""
    lines = [""]
    column = 0
    for character in text:
        if character == "\n":
            lines.append("")
            column = 0
        elif character == "\r":
            column = 0
        elif character == "\b":
            column = max(column - 1, 0)
        elif character >= " " or character == "\t":
            lines[-1] = lines[-1][:column].ljust(column) + character + lines[-1][column + 1:]
            column += 1
    return "\n".join(line.rstrip() for line in lines).strip("\n")


def normalised(text):
    """A text without what differs from run to run: times, rates, names of pseudo-terminals
    and the project's folder."""
    text = re.sub(r"in [\d.]+ (milliseconds|seconds)", "in N ms", text)
    text = re.sub(r"\([\d.]+ bytes/sec\)", "(N bytes/sec)", text)
    text = text.replace(str(SOURCE), "/home/me/qburn")
    return re.sub(r"/dev/pts/\d+", "/dev/pts/N", text)


def sessions(page):
    """The indented blocks of a page that begin with a command: for each, its commands with what they print."""
    for block in re.findall(r"(?:^    .*\n|^\n(?=    ))+", page, re.M):
        lines = [line[4:] for line in block.strip("\n").split("\n")]
        if not lines[0].startswith("$ "):
            continue
        commands = []
        for line in lines:
            if line.startswith("$ "):
                commands.append([line[2:], []])
            elif commands[-1][0].endswith("\\"):
                commands[-1][0] = commands[-1][0][:-1] + line.strip()
            else:
                commands[-1][1].append(line)
        yield [(command, "\n".join(shown).strip("\n")) for command, shown in commands]


class Readme(BoardTest):
    def shown_by(self, command, wanted):
        """What a command leaves on the screen. One that ends with & goes on, and is taken by its first line."""
        words = shlex.split(command)
        if words[-1] == "&":
            self.assertEqual(words[0], "vboard")
            self.boards_port = self.board(*words[1:-1]).port
            return self.boards_port
        words = [re.sub(r"/dev/pts/\d+", self.boards_port, word) for word in words]
        if "-debug" in words and "-script" not in words:
            return self.type_in(words[1:], wanted)
        for _ in range(10): # a busy machine may keep the adapter's prompt for too long
            result = self.run_program(words[0], *words[1:], cwd=SOURCE, stderr=subprocess.STDOUT)
            if "no echo response" not in result.out:
                break
        return screen(result.out)

    def type_in(self, words, wanted):
        """A session at the prompt: each line that the page shows behind a > is typed when all in front of it is
        there. Returns what is on the screen in the end, which is all that is wanted or what came instead."""
        terminal = Terminal(self, *words, cwd=SOURCE)
        lines = wanted.split("\n")
        for place, line in enumerate(lines):
            if not line.startswith(">"):
                continue
            before = screen("\n".join(lines[:place] + [">"]))
            end = time.monotonic() + WAIT
            while normalised(screen(terminal.seen.decode())) != normalised(before):
                if not terminal.read_some(end - time.monotonic()):
                    return screen(terminal.seen.decode())
            terminal.type(line[1:] + "\r")
        terminal.process.wait(WAIT)
        while terminal.read_some(0):
            pass
        return screen(terminal.seen.decode()).removesuffix("\n>")

    def test_each_session_shows_what_the_page_says(self):
        self.boards_port = ""
        count = 0
        for session in sessions((SOURCE / "README.md").read_text()):
            for command, wanted in session:
                count += 1
                with self.subTest(command):
                    shown = self.shown_by(command, wanted)
                    self.assertEqual(normalised(shown), normalised(wanted))
        self.assertGreaterEqual(count, 6)


if __name__ == "__main__":
    main()
