#!/usr/bin/python3
"""What a person at a terminal sees. Usage: terminal_test.py PROGRAM"""

import fcntl
import os
import pty
import re
import struct
import subprocess
import sys
import tempfile
import termios
import unittest
from pathlib import Path

PROGRAM = ""
MAIL = "From ann@example.org Mon Jan  5 10:00:00 2026\nFrom: Ann <ann@example.org>\nDate: Mon, 5 Jan 2026 10:00:00 +0000\n" \
       "Subject: %s\n\nfirst\n\n"


def on_terminal(width, *arguments, **environment):
    """What the program prints on a terminal of this width."""
    master, slave = pty.openpty()
    fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, width, 0, 0))
    settings = {k: v for k, v in os.environ.items() if k not in ("COLUMNS", "NO_COLOR")}
    settings |= {"LC_ALL": "C.UTF-8", "TZ": "UTC", "TERM": "xterm"} | environment
    process = subprocess.Popen([PROGRAM, *arguments], stdin=slave, stdout=slave, stderr=slave, env=settings)
    os.close(slave)
    printed = b""
    while True:
        try:
            piece = os.read(master, 65536)
        except OSError:  # the other end is closed
            break
        if not piece:
            break
        printed += piece
    os.close(master)
    process.wait()
    return printed.decode().replace("\r\n", "\n")


class Terminal(unittest.TestCase):
    def setUp(self):
        work = tempfile.TemporaryDirectory()
        self.addCleanup(work.cleanup)
        self.box = str(Path(work.name) / "box")

    def mail(self, *subjects):
        Path(self.box).write_text("".join(MAIL % subject for subject in subjects), encoding="utf-8")

    def test_a_line_fits_the_terminal(self):
        self.mail("a subject that is far too long for the eighty columns of an ordinary terminal")
        lines = on_terminal(80, "list", self.box, NO_COLOR="1").splitlines()
        size = Path(self.box).stat().st_size
        self.assertEqual(lines, [" INDEX       SIZE  DATE              FROM               SUBJECT",
                                 f"     0        {size}  2026-01-05 10:00  Ann <ann@example…  a subject that is far t…"])

    def test_wide_characters_count_twice(self):
        self.mail("=?utf-8?B?" + "5pel5pys6Kqe5pel5pys6Kqe5pel5pys6Kqe5pel5pys6Kqe5pel5pys6Kqe5pel5pys6Kqe?=")
        line = on_terminal(80, "list", self.box, NO_COLOR="1").splitlines()[1]
        self.assertTrue(line.endswith(" 日本語日本語日本語日本…"), line)

    def test_columns_says_how_wide_the_terminal_is(self):
        self.mail("x" * 300)
        for width in (60, 120):
            line = on_terminal(80, "list", self.box, COLUMNS=str(width), NO_COLOR="1").splitlines()[1]
            self.assertEqual(len(line), width)

    def test_colour_comes_on_a_terminal_only_and_not_where_it_is_not_wanted(self):
        self.mail("x")
        self.assertIn("\033[1m INDEX", on_terminal(80, "list", self.box))
        self.assertNotIn("\033", on_terminal(80, "list", self.box, NO_COLOR="1"))
        self.assertNotIn("\033", on_terminal(80, "list", self.box, TERM="dumb"))
        self.assertIn("\033[31mvellobar:\033[0m cannot open", on_terminal(80, "list", self.box + "x"))
        done = subprocess.run([PROGRAM, "list", self.box], capture_output=True)
        self.assertNotIn(b"\033", done.stdout)

    def test_json_is_never_cut_nor_coloured(self):
        self.mail("x" * 300)
        printed = on_terminal(80, "list", self.box, "--json")
        self.assertIn("x" * 300, re.sub("\n", "", printed))
        self.assertNotIn("\033", printed)

    def test_mail_cannot_move_the_cursor(self):
        self.mail("a\033[2Jb")
        self.assertNotIn("\033", on_terminal(80, "list", self.box, NO_COLOR="1"))


if __name__ == "__main__":
    PROGRAM = str(Path(sys.argv.pop(1)).resolve())
    unittest.main()
